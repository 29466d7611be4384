#pragma once

#include "model/stationmodel.h"

#include <QAbstractItemModelTester>
#include <QObject>

// Base of the tests of the station model and the filter in front of it: a
// model on a fixed clock (whole seconds, so age boundaries are exact) and
// spots dated relative to it.
class ModelTest : public QObject
{
    Q_OBJECT

protected:
    qint64 m_now = 0;
    StationModel *m_model = nullptr;
    QAbstractItemModelTester *m_tester = nullptr;

    // Makes the model and a tester watching it.
    void setUpModel();
    void tearDownModel();

    QDateTime ago(qint64 secs) const;
    StationSpot spot(StationSpot::Source source, const QString &call, const QString &ref, double khz,
                     qint64 secsAgo = 60, const QString &mode = QStringLiteral("CW")) const;
};
