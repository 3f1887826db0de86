#include "data/passport.h"

#include "base/bytetext.h"
#include "base/debugline.h"
#include "data/recordingtime.h"
#include "data/samplingstep.h"

#include <QFileInfo>
#include <QIODevice>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr qint64 firstRead = 4096;
constexpr qint64 localTimeOffset = 3 * 3600; // s; clock times without "UTC" are UTC+3

// Takes the line that begins at `position`, without its end, and moves to the next one.
// Returns false where the bytes end before the line does; the line is then their rest.
bool takeLine(const QByteArray &bytes, qint64 &position, QByteArray &line)
{
    const int begin = int(position);
    const int end = bytes.indexOf('\n', begin);
    position = end < 0 ? bytes.size() : end + 1;
    line = bytes.mid(begin, end < 0 ? -1 : end - begin);
    if (line.endsWith('\r'))
        line.chop(1);
    return end >= 0;
}

// Splits before decoding: a broken character can then never swallow the blank after a key.
void addEntry(QByteArray line, QMap<QString, QString> &entries)
{
    line.replace('\t', ' ');
    const int blank = line.indexOf(' ');
    const int keyEnd = blank < 0 ? line.size() : blank;
    int valueBegin = keyEnd;
    while (valueBegin < line.size() && line[valueBegin] == ' ')
        ++valueBegin;
    entries.insert(textOfBytes(line.left(keyEnd)), textOfBytes(line.mid(valueBegin)));
}

QStringList items(const QString &list)
{
    return list.split(' ', Qt::SkipEmptyParts);
}

// Whole numbers of the passport; remembers the first that is none.
class WholeNumbers {
public:
    explicit WholeNumbers(const Passport &source) : passport(source) {}

    bool has(const QString &key) const { return passport.entries.contains(key); }

    int read(const QString &key)
    {
        bool ok = false;
        const QString text = passport.entries.value(key).trimmed();
        const int number = text.toInt(&ok);
        if (!ok)
            refuse(key, text);
        return number;
    }

    void refuse(const QString &key, const QString &text)
    {
        if (!firstProblem.isEmpty())
            return;
        firstProblem =
            has(key) || !text.isEmpty()
                ? QString("\"%1\" is \"%2\", which is not a usable count").arg(key, text.left(40))
                : QString("the passport has no \"%1\"").arg(key);
    }

    const QString &problem() const { return firstProblem; }

private:
    const Passport &passport;
    QString firstProblem;
};

// Channels are the bands and one more; 0 when the key that counts is unusable.
int channelCount(const Passport &passport, WholeNumbers &numbers)
{
    if (numbers.has("nbands")) {
        const int bands = numbers.read("nbands");
        if (bands == std::numeric_limits<int>::max())
            numbers.refuse("nbands", QString::number(bands));
        return numbers.problem().isEmpty() ? bands + 1 : 0;
    }
    if (numbers.has("fbands"))
        return items(passport.entries["fbands"]).size() + 1;
    return numbers.read("channels");
}

void readModules(const Passport &passport, ObservationData &data)
{
    for (const char *const key : {"modulus", "modules"}) {
        if (passport.entries.contains(key)) {
            const QStringList numbers = items(passport.entries[key]);
            data.modules = numbers.size();
            if (!numbers.isEmpty())
                data.firstModule = numbers.first().toInt();
            for (const QString &number : numbers)
                data.moduleNumbers.push_back(number.toInt());
            break;
        }
    }
    if (passport.entries.contains("module")) {
        data.module = passport.entries["module"].trimmed().toInt();
        data.modules = 1;
        data.firstModule = data.module;
        data.moduleNumbers = {data.module};
    }
}

// Begin by the passport's clock.
struct ClockBegin {
    QDateTime time;      // UTC, whole seconds
    double fraction = 0; // ms beyond them
};

ClockBegin beginOfClock(const Passport &passport)
{
    static const QRegularExpression clock("^\\s*(\\d{1,2}:\\d\\d:\\d\\d)(?!\\d)(?:[.,](\\d+))?");
    const QString dateText = passport.entries.value("date_begin").trimmed().right(10);
    const QString clockText = passport.entries.value("time_begin");
    const QRegularExpressionMatch match = clock.match(clockText);
    const QDate date = QDate::fromString(dateText, "dd.MM.yyyy");
    QTime time = QTime::fromString(clockText.left(8).remove(' '), "h:mm:ss");
    if (!time.isValid()) // an hour of one digit with what follows the seconds
        time = QTime::fromString(match.captured(1), "h:mm:ss");
    if (!date.isValid() || !time.isValid())
        return {};
    const QDateTime begin(date, time, Qt::UTC);
    return {clockText.contains("UTC") ? begin : begin.addSecs(-localTimeOffset),
            ("0." + match.captured(2)).toDouble() * 1000};
}

QString starTime(const QString &text)
{
    static const QRegularExpression pattern("^(\\d{1,2}):(\\d{1,2}):(\\d{1,2})(\\.\\d+)?$");
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return text;
    return QStringList{match.captured(1), match.captured(2), match.captured(3)}.join(':');
}

// When the recording begins, and what of its parent it is.
void readBegin(const Passport &passport, ObservationData &data)
{
    const QMap<QString, QString> &entries = passport.entries;
    const ClockBegin begin = beginOfClock(passport);
    data.beginTime = begin.time;
    data.beginRest = begin.fraction;
    data.starTime = starTime(entries.value("star_time"));
    if (entries.contains("stairs_names"))
        data.beginTime = {};
    if (!entries.value("native_datetime").isEmpty())
        data.nativeName = entries["native_datetime"];
    if (entries.contains("native_datetime") && !entries.value("file_path").isEmpty())
        data.filePath = entries["file_path"];
    data.point = entries.value("point").trimmed().toInt();
    advanceBegin(data);
}

// A passport without a step, or with one of 0, can be read all the same: its times are unknown.
void readStep(const QMap<QString, QString> &entries, RecordingHeader &header)
{
    const QString text = entries.value("tresolution").trimmed();
    if (text.isEmpty())
        return;
    bool isNumber = false;
    const double step = text.toDouble(&isNumber) / 1000.0;
    if (isNumber && (step == 0 || isStep(step)))
        header.data.tresolution = step;
    else if (header.problem.isEmpty())
        header.problem = QString("\"tresolution\" is \"%1\", which is no usable step of time "
                                 "(allowed: %2, or 0 where it is unknown)")
                             .arg(text.left(40), stepRangeText("ms", 1000));
}

// The line of text that bytes begin with, "tresolution 12.5". Samples are never taken for one: no
// power has a name, a blank and only printable characters up to the end of a line.
QString textLine(const QByteArray &bytes)
{
    static const QRegularExpression entry("^[A-Za-z][A-Za-z_]{2,}[ \\t]+[\\x20-\\x7e\\t]{1,4000}$");
    constexpr int shortest = 12; // characters: three samples
    qint64 position = 0;
    QByteArray line;
    if (!takeLine(bytes, position, line) || position < shortest)
        return {};
    const QString text = QString::fromLatin1(line);
    return entry.match(text).hasMatch() ? text : QString();
}

// Whether a line holds what no text does, and samples nearly always do.
bool holdsControlBytes(const QByteArray &line)
{
    return std::any_of(line.begin(), line.end(),
                       [](char c) { return uchar(c) < ' ' && !(c >= '\t' && c <= '\r'); });
}

// Why the number of lines cannot be right; empty where it can.
QString countProblem(const Passport &passport)
{
    QString what;
    if (passport.noText > 0)
        what = QString("line %1 is no text: the samples begin there or before, and would be read "
                       "shifted")
                   .arg(passport.noText);
    else if (!passport.lineBeyond.isEmpty())
        what = QString("the next one, \"%1\", belongs to it too, and the samples would be read "
                       "shifted")
                   .arg(passport.lineBeyond.left(40));
    else
        return {};
    return QString("its first line counts %1 lines of the passport, but %2. In a copy, correct the "
                   "number in line 1")
        .arg(QString::number(passport.lines), what);
}

} // namespace

Passport parsePassport(const QByteArray &bytes)
{
    Passport passport;
    QByteArray line;
    passport.complete = takeLine(bytes, passport.size, line);
    passport.lines = line.mid(line.lastIndexOf(' ') + 1).toLongLong();
    for (qint64 number = 2; number <= passport.lines && passport.complete; ++number) {
        if (passport.size == bytes.size()) {
            passport.complete = false;
            break;
        }
        passport.complete = takeLine(bytes, passport.size, line);
        if (passport.noText == 0 && holdsControlBytes(line))
            passport.noText = number;
        addEntry(line, passport.entries);
    }
    if (passport.complete)
        passport.lineBeyond = textLine(bytes.mid(int(passport.size)));
    return passport;
}

Passport readPassport(QIODevice &device)
{
    QByteArray bytes;
    Passport passport;
    for (qint64 size = firstRead; size <= passportSizeLimit && !passport.complete; size *= 2) {
        const QByteArray more = device.read(size - bytes.size());
        if (more.isEmpty())
            break;
        bytes += more;
        passport = parsePassport(bytes);
    }
    if (passport.complete && bytes.size() < passport.size + firstRead) { // for the line beyond it
        bytes += device.read(passport.size + firstRead - bytes.size());
        passport = parsePassport(bytes);
    }
    device.seek(passport.size);
    return passport;
}

RecordingHeader recordingHeader(const Passport &passport, const QString &path)
{
    RecordingHeader header;
    ObservationData &data = header.data;
    const QMap<QString, QString> &entries = passport.entries;
    WholeNumbers numbers(passport);
    const QString miscounted = countProblem(passport);

    data.filePath = path;
    data.fileName = QFileInfo(path).fileName();
    data.nativeName = data.fileName;

    if (!numbers.has("nbands") && !numbers.has("fbands") && !numbers.has("channels")) {
        debugLine("Error! No channels in file!");
        data.npoints = -1;
        header.problem = !miscounted.isEmpty()
                             ? miscounted
                             : "the passport does not say how many channels there are "
                               "(no \"nbands\", \"fbands\" or \"channels\")";
        return header;
    }
    data.channels = channelCount(passport, numbers);

    readModules(passport, data);
    if (data.modules == -1) {
        debugLine("Error! No modules in file!");
        data.npoints = -1;
        header.problem = !miscounted.isEmpty()
                             ? miscounted
                             : "the passport does not say which modules were recorded "
                               "(no \"modulus\", \"modules\" or \"module\")";
        return header;
    }

    data.npoints = numbers.read("npoints");
    data.rays = 8;
    if (numbers.has("ray")) {
        data.ray = entries["ray"].trimmed().toInt();
        data.rays = 1;
    } else if (numbers.has("rays")) {
        data.rays = numbers.read("rays");
    }
    for (const auto &[key, count] :
         {std::pair("npoints", data.npoints), std::pair("channels", data.channels),
          std::pair("rays", data.rays)}) {
        if (count < 1)
            numbers.refuse(key, QString::number(count));
    }
    header.problem = numbers.problem();
    readStep(entries, header);
    if (!miscounted.isEmpty())
        header.problem = miscounted;
    if (!header.problem.isEmpty())
        data.npoints = 0;

    data.dispersion = entries.value("dispersion").trimmed().toInt();
    for (const QString &frequency : items(entries.value("fbands")))
        data.fbands.push_back(frequency.toDouble());

    readBegin(passport, data);
    return header;
}
