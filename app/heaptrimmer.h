#pragma once

#include <QObject>

class QTimer;

// The window builds multi-megabyte buffers again and again (the API's spot
// table for each client, the services' replies, their parsed forms). glibc's
// malloc raises its mapping threshold after the first such buffer is freed
// and from then on carves them out of the heap, and freed heap pages stay
// resident: a long session would hold tens of megabytes it no longer uses.
// This keeps large buffers in mappings of their own, returned when freed, and
// every few seconds hands the free pages inside the heap back to the system.
// Does nothing outside glibc.
class HeapTrimmer final : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HeapTrimmer)

public:
    static constexpr int k_intervalMs = 2000;
    static constexpr int k_mapAtBytes = 256 * 1024;

    explicit HeapTrimmer(QObject *parent = nullptr);

    static void trim();

private:
    QTimer *m_timer;
};
