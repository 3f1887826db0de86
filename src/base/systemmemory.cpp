#include "base/systemmemory.h"

#include <QFile>
#include <QLocale>
#include <algorithm>
#include <limits>
#include <unistd.h>

namespace {

constexpr qint64 noLimit = std::numeric_limits<qint64>::max();

// The number behind a key at the beginning of a line; -1 when there is none.
qint64 numberIn(const QString &path, const QByteArray &key)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
        if (!line.startsWith(key))
            continue;
        bool isNumber = false;
        const QByteArray value = line.mid(key.size()).replace("kB", "").trimmed();
        const qint64 number = value.toLongLong(&isNumber);
        return isNumber ? number : -1;
    }
    return -1;
}

qint64 ofMachine()
{
    const qint64 kibibytes = numberIn("/proc/meminfo", "MemAvailable:");
    if (kibibytes >= 0)
        return kibibytes * 1024;
#ifdef _SC_AVPHYS_PAGES
    const qint64 pages = sysconf(_SC_AVPHYS_PAGES);
#else
    const qint64 pages = sysconf(_SC_PHYS_PAGES);
#endif
    return qMax(qint64(0), pages * sysconf(_SC_PAGESIZE));
}

// What the limits of a control group and of those around it leave. The file cache counts as
// used there, though it makes room when asked.
qint64 ofGroup(const QString &root, QString group, const char *limitName, const char *usageName,
               const char *cacheKey)
{
    qint64 left = noLimit;
    for (bool isTop = false; !isTop; group = group.section('/', 0, -2)) {
        const QString folder = root + group + '/';
        const qint64 limit = numberIn(folder + limitName, "");
        const qint64 used = numberIn(folder + usageName, "");
        const qint64 cache = std::max<qint64>(0, numberIn(folder + "memory.stat", cacheKey));
        if (limit >= 0 && used >= 0)
            left = std::min(left, std::max<qint64>(0, limit - used + std::min(cache, used)));
        isTop = group.isEmpty();
    }
    return left;
}

} // namespace

qint64 groupMemoryLeft(const QString &groups, const QString &mount)
{
    qint64 left = noLimit;
    QFile file(groups);
    if (!file.open(QIODevice::ReadOnly))
        return left;
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
        const QString text = QString::fromLocal8Bit(line).trimmed();
        QString group = text.section(':', 2);
        if (group == "/")
            group.clear();
        if (text.startsWith("0::"))
            left = std::min(
                left, ofGroup(mount, group, "memory.max", "memory.current", "inactive_file "));
        else if (text.section(':', 1, 1).split(',').contains("memory"))
            left = std::min(left, ofGroup(mount + "/memory", group, "memory.limit_in_bytes",
                                          "memory.usage_in_bytes", "total_inactive_file "));
    }
    return left;
}

qint64 availableMemory()
{
    return std::min(ofMachine(), groupMemoryLeft());
}

QString sizeText(qint64 bytes)
{
    return bytes < 0 ? QString("more than 8 EiB") : QLocale::c().formattedDataSize(bytes);
}

bool hasMemoryFor(double bytes)
{
    constexpr double few = 32 << 20;
    return bytes <= few || bytes <= double(availableMemory());
}
