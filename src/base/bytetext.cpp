#include "base/bytetext.h"

namespace {

constexpr ushort loneBytes = 0xDC00; // the code unit of a lone byte is this and the byte
constexpr ushort firstLoneByte = loneBytes + 0x80;
constexpr ushort lastLoneByte = loneBytes + 0xFF;

// Bytes of the character beyond ASCII that begins with `lead`; 0 where none does.
int lengthOfCharacter(uchar lead)
{
    return lead >= 0xC2 && lead <= 0xDF   ? 2
           : lead >= 0xE0 && lead <= 0xEF ? 3
           : lead >= 0xF0 && lead <= 0xF4 ? 4
                                          : 0;
}

// Up to the size, not to the first byte 0 as Qt's own function for byte arrays.
QString fromUtf8(const QByteArray &bytes)
{
    return QString::fromUtf8(bytes.constData(), bytes.size());
}

// The character at the begin of the bytes; empty where there is none.
QString firstCharacter(const QByteArray &bytes)
{
    const int length = lengthOfCharacter(uchar(bytes[0]));
    const QByteArray character = bytes.left(length);
    if (character == "\xEF\xBB\xBF") // the decoder drops it
        return QChar(QChar::ByteOrderMark);
    const QString text = fromUtf8(character);
    return length > 0 && text.toUtf8() == character ? text : QString();
}

} // namespace

QString textOfBytes(const QByteArray &bytes)
{
    const QString whole = fromUtf8(bytes);
    if (whole.toUtf8() == bytes)
        return whole;
    QString text;
    for (int i = 0; i < bytes.size();) {
        int end = i; // of the ASCII that comes first
        while (end < bytes.size() && uchar(bytes[end]) < 0x80)
            ++end;
        if (end > i) {
            text += QLatin1String(bytes.constData() + i, end - i);
            i = end;
            continue;
        }
        const QString character = firstCharacter(bytes.mid(i, 4));
        text += character.isEmpty() ? QString(QChar(loneBytes + uchar(bytes[i]))) : character;
        i += character.isEmpty() ? 1 : lengthOfCharacter(uchar(bytes[i]));
    }
    return text;
}

bool isLoneByte(const QString &text, int index)
{
    const ushort unit = text[index].unicode();
    return unit >= firstLoneByte && unit <= lastLoneByte &&
           !(index > 0 && text[index - 1].isHighSurrogate());
}

QByteArray bytesOfText(const QString &text)
{
    QByteArray bytes;
    int begin = 0; // of what was not converted yet
    for (int i = 0; i < text.size(); ++i) {
        if (!isLoneByte(text, i))
            continue;
        bytes += text.mid(begin, i - begin).toUtf8() + char(text[i].unicode() - loneBytes);
        begin = i + 1;
    }
    return begin == 0 ? text.toUtf8() : bytes + text.mid(begin).toUtf8();
}
