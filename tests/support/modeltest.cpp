#include "support/modeltest.h"

void ModelTest::init()
{
    m_model = new StationModel(this);
    m_model->setClock([this] { return m_now; });
    new QAbstractItemModelTester(m_model, m_model);
    m_proxy = new SpotFilterProxyModel(m_model);
    m_proxy->setSourceModel(m_model);
    m_proxy->sort(StationModel::CallsignColumn);
    new QAbstractItemModelTester(m_proxy, m_proxy);
}

void ModelTest::cleanup()
{
    delete m_model;
    m_now = k_startMs;
}

QDateTime ModelTest::ago(qint64 secs) const
{
    return QDateTime::fromMSecsSinceEpoch(m_now - secs * 1000, Qt::UTC);
}

StationSpot ModelTest::spot(QAnyStringView text) const
{
    const QStringList f = text.toString().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    StationSpot s;
    const QStringList head = f.value(0).split(QLatin1Char('#')); // SOURCE or SOURCE#activation
    for (int source = 0; source < StationSpot::k_sourceCount; ++source) {
        if (StationSpot::sourceName(source) == head.value(0))
            s.source = StationSpot::Source(source);
    }
    s.activationId = head.value(1);
    s.callsign = f.value(1);
    s.reference = f.value(2) == QLatin1String("-") ? QString() : f.value(2);
    s.frequencyKhz = f.value(3).toDouble();
    const QString age = f.value(4, QStringLiteral("60"));
    s.spotTime = age == QLatin1String("none") ? QDateTime() : ago(age.toLongLong());
    s.mode = f.value(5) == QLatin1String("-") ? QString() : f.value(5, QStringLiteral("CW"));
    s.comments = f.mid(6).join(QLatin1Char(' '));
    return s;
}

QList<StationSpot> ModelTest::spots(QAnyStringView text) const
{
    QList<StationSpot> list;
    for (const QString &part : text.toString().split(QLatin1Char(','))) {
        if (!part.trimmed().isEmpty())
            list.append(spot(part));
    }
    return list;
}

void ModelTest::mergeSteps(QAnyStringView batches)
{
    for (const QString &batch : batches.toString().split(QLatin1Char(';')))
        m_model->mergeSpots(spots(batch));
}

QString ModelTest::keysOf(const QList<StationSpot> &spots)
{
    QStringList keys;
    for (const StationSpot &s : spots)
        keys.append(s.key());
    return keys.join(QLatin1Char(' '));
}

QString ModelTest::shown() const
{
    QStringList calls;
    for (int row = 0; row < m_proxy->rowCount(); ++row)
        calls.append(m_proxy->index(row, StationModel::CallsignColumn).data().toString());
    return calls.join(QLatin1Char(' '));
}
