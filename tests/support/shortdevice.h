#pragma once

#include <QByteArray>
#include <QIODevice>
#include <algorithm>
#include <cstring>
#include <functional>

namespace TestSupport {

/// A device that delivers its content and then ends, or fails where that is asked for. It can
/// hand out its bytes in small portions and tells when it is read.
class ShortDevice : public QIODevice {
public:
    explicit ShortDevice(const QByteArray &content) : bytes(content)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    bool isSequential() const override { return true; }

    bool failsAtEnd = false;
    qint64 portion = qint64(1) << 40; ///< most bytes that one read delivers
    std::function<void()> onRead;     ///< called before each read

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        if (onRead)
            onRead();
        if (position == bytes.size() && failsAtEnd) {
            setErrorString("the disk has gone");
            return -1;
        }
        const qint64 count = std::min({maxSize, bytes.size() - position, portion});
        std::memcpy(data, bytes.constData() + position, std::size_t(count));
        position += count;
        return count;
    }

    qint64 writeData(const char *, qint64) override { return -1; }

private:
    const QByteArray bytes;
    qint64 position = 0;
};

} // namespace TestSupport
