#include "ffa/memorylimit.h"

#include <QFile>
#include <limits>

namespace Ffa {

qint64 availableMemory()
{
    QFile file(QStringLiteral("/proc/meminfo"));
    if (file.open(QIODevice::ReadOnly)) {
        // "MemAvailable:   23456 kB"
        for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
            if (!line.startsWith("MemAvailable:"))
                continue;
            bool ok = false;
            const qint64 kib =
                line.mid(line.indexOf(':') + 1).trimmed().split(' ').first().toLongLong(&ok);
            if (ok)
                return kib * 1024;
        }
    }
    return std::numeric_limits<qint64>::max();
}

} // namespace Ffa
