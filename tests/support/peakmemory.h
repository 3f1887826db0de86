#pragma once

#include <QByteArrayList>
#include <QFile>
#include <malloc.h>

namespace TestSupport {

/// The largest memory that this process has between the begin of its life and a question, beyond
/// what it had at the begin.
class PeakMemory {
public:
    PeakMemory()
    {
        malloc_trim(0); // what was freed would be taken again without being counted
        QFile file("/proc/self/clear_refs");
        // "5" makes the system forget the peak until now.
        known = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write("5") == 1;
        begin = bytesOf("VmRSS:");
    }

    /// Whether this system tells; sanitizers keep what is freed.
    bool isKnown() const
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        return false;
#else
        return known && begin > 0;
#endif
    }

    qint64 bytes() const
    {
        return bytesOf("VmHWM:") - begin;
    }

private:
    static qint64 bytesOf(const QByteArray &key)
    {
        QFile file("/proc/self/status");
        if (!file.open(QIODevice::ReadOnly))
            return 0;
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (line.startsWith(key))
                return line.mid(key.size()).simplified().split(' ').first().toLongLong() * 1024;
        }
        return 0;
    }

    bool known = false;
    qint64 begin = 0;
};

} // namespace TestSupport
