#include "base/process.h"

#include "base/bytetext.h"

#include <QDateTime>
#include <QTextCodec>
#include <clocale>
#include <csignal>
#include <cstring>
#include <langinfo.h>

namespace {

constexpr int privateNumber = -4711; // no registered number belongs to this encoding

// Whole texts only: a character that is cut between two calls counts as bytes.
class ByteTextCodec : public QTextCodec {
public:
    QByteArray name() const override { return "UTF-8 with bytes"; }
    int mibEnum() const override { return privateNumber; }

protected:
    QString convertToUnicode(const char *bytes, int count, ConverterState *) const override
    {
        return textOfBytes(QByteArray(bytes, count));
    }
    QByteArray convertFromUnicode(const QChar *text, int count, ConverterState *) const override
    {
        return bytesOfText(QString(text, count));
    }
};

} // namespace

void setUpProcess()
{
    std::signal(SIGXFSZ, SIG_IGN);
    // Numbers keep their point: only the kind of text is taken from the user's locale.
    std::setlocale(LC_CTYPE, "");
    const char *const text = nl_langinfo(CODESET);
    if (std::strcmp(text, "UTF-8") == 0 || std::strcmp(text, "ANSI_X3.4-1968") == 0)
        QTextCodec::setCodecForLocale(new ByteTextCodec); // Qt deletes it at the end
    setUpDates();
}

void setUpDates()
{
    const QDateTime any(QDate(2000, 1, 1), QTime(12, 0), Qt::UTC);
    QDateTime::fromString(any.toString(Qt::ISODateWithMs), Qt::ISODateWithMs);
    QDate::fromString(any.toString("dd.MM.yyyy"), "dd.MM.yyyy");
}
