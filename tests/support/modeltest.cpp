#include "support/modeltest.h"

void ModelTest::setUpModel()
{
    m_now = QDateTime::currentMSecsSinceEpoch() / 1000 * 1000;
    m_model = new StationModel(this);
    m_model->setClock([this] { return m_now; });
    m_tester = new QAbstractItemModelTester(m_model, this);
}

void ModelTest::tearDownModel()
{
    delete m_tester;
    m_tester = nullptr;
    delete m_model;
    m_model = nullptr;
}

QDateTime ModelTest::ago(qint64 secs) const
{
    return QDateTime::fromMSecsSinceEpoch(m_now - secs * 1000, Qt::UTC);
}

StationSpot ModelTest::spot(StationSpot::Source source, const QString &call, const QString &ref, double khz,
                            qint64 secsAgo, const QString &mode) const
{
    StationSpot s;
    s.source = source;
    s.callsign = call;
    s.reference = ref;
    s.frequencyKhz = khz;
    s.mode = mode;
    s.spotTime = ago(secsAgo);
    return s;
}
