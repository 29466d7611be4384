#include "app/heaptrimmer.h"

#include <QTimer>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

HeapTrimmer::HeapTrimmer(QObject *parent)
    : QObject(parent)
    , m_timer(new QTimer(this))
{
#if defined(__GLIBC__)
    mallopt(M_MMAP_THRESHOLD, k_mapAtBytes);
    mallopt(M_TRIM_THRESHOLD, 2 * k_mapAtBytes);
#endif
    m_timer->setObjectName(QStringLiteral("heapTrimTimer"));
    m_timer->setInterval(k_intervalMs);
    connect(m_timer, &QTimer::timeout, this, &HeapTrimmer::trim);
    m_timer->start();
}

void HeapTrimmer::trim()
{
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}
