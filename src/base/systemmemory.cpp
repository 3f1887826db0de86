#include "base/systemmemory.h"

#include <QFile>
#include <unistd.h>

qint64 availableMemory()
{
    QFile meminfo("/proc/meminfo");
    if (meminfo.open(QIODevice::ReadOnly)) {
        const QByteArray key = "MemAvailable:";
        for (QByteArray line = meminfo.readLine(); !line.isEmpty(); line = meminfo.readLine()) {
            if (line.startsWith(key)) // "MemAvailable:   12345678 kB"
                return line.mid(key.size()).replace("kB", "").trimmed().toLongLong() * 1024;
        }
    }
#ifdef _SC_AVPHYS_PAGES
    const qint64 pages = sysconf(_SC_AVPHYS_PAGES);
#else
    const qint64 pages = sysconf(_SC_PHYS_PAGES);
#endif
    return qMax(qint64(0), pages * sysconf(_SC_PAGESIZE));
}
