#pragma once

#include "model/spotfilterproxymodel.h"
#include "model/stationmodel.h"

#include <QAbstractItemModelTester>
#include <QAnyStringView>
#include <QObject>

// Base of the model and filter tests: a model on an injected clock and the filter in front of it, both
// under a QAbstractItemModelTester, and spots written as short texts.
class ModelTest : public QObject
{
    Q_OBJECT

protected slots:
    // Run around every test function of a derived test.
    virtual void init();
    virtual void cleanup();

protected:
    static constexpr qint64 k_startMs = 1750000000000; // fixed, so that _data functions can date spots
    qint64 m_now = k_startMs;
    StationModel *m_model = nullptr;
    SpotFilterProxyModel *m_proxy = nullptr; // sorted by call sign

    QDateTime ago(qint64 secs) const;
    // "POTA K1A US-1 7030.5 60 CW a comment": source, call, reference ("-": none), kHz, then optionally
    // seconds ago (default 60, "none": no time), mode (default CW, "-": none) and comment. Spots are
    // separated by ",", batches of them by ";".
    StationSpot spot(QAnyStringView text) const;
    QList<StationSpot> spots(QAnyStringView text) const;
    void mergeSteps(QAnyStringView batches);
    // The spots' keys in order, separated by blanks.
    static QString keysOf(const QList<StationSpot> &spots);
    // The call signs the filter shows, in its order, separated by blanks.
    QString shown() const;
};
