#include "data/resulttotext.h"

#include "base/debugline.h"
#include "base/wholefile.h"
#include "data/recordingfile.h"
#include "data/truenumbers.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>

namespace Tools {

namespace {

constexpr qint64 longestHeader = 1 << 20; // bytes
constexpr int textBlock = 1 << 20;        // bytes collected before they are written
constexpr qint64 valueBlock = 1 << 16;    // values read at once
constexpr qint64 valuesOfLook = 4096;     // values that a size is guessed from
constexpr int leastDigits = 6;            // what QString::number shows
const char cancelledText[] = "Cancelled.";
const char cannotRead[] = "ERROR!\nНе могу открыть файл для чтения\n";

// Six digits as everywhere; more where it takes more to bring back the same float.
void appendNumber(QByteArray &text, float value)
{
    char buffer[64];
    char *const end = std::end(buffer);
    if (std::isnan(value)) {
        text += "nan";
        return;
    }
    const auto shortest = std::to_chars(buffer, end, value, std::chars_format::scientific);
    const auto digits = std::count_if(buffer, std::find(buffer, shortest.ptr, 'e'),
                                      [](char c) { return c >= '0' && c <= '9'; });
    const auto number = std::to_chars(buffer, end, value, std::chars_format::general,
                                      std::max(leastDigits, int(digits)));
    text.append(buffer, int(number.ptr - buffer));
}

TextEnd endOf(const WriteFailure &failure)
{
    if (!failure)
        return {};
    return {failure.kind == WriteFailure::Kind::CannotCreate ? TextEnd::Kind::CannotCreate
                                                             : TextEnd::Kind::CannotWrite,
            failure.text()};
}

// Collects text and writes it in large pieces, and tells of the progress.
class TextWriter {
public:
    TextWriter(WholeFile &wholeFile, const TextProgress &textProgress,
               const TextCancelled &textCancelled)
        : file(wholeFile), progress(textProgress), cancelled(textCancelled)
    {
        text.reserve(textBlock + textBlock / 8);
    }

    // Called after each small step; Done: the work goes on.
    TextEnd step(qint64 done, qint64 all)
    {
        const int percent = int(double(done) / double(all) * 100);
        if (progress && percent != lastPercent)
            progress(lastPercent = percent);
        if (cancelled && cancelled())
            return {TextEnd::Kind::Cancelled, cancelledText};
        return text.size() < textBlock ? TextEnd() : flush();
    }

    // Puts the file in place.
    TextEnd finish(const QDateTime &modified)
    {
        TextEnd end = flush();
        return end.kind == TextEnd::Kind::Done ? endOf(file.commit(modified)) : end;
    }

    QByteArray text;

private:
    TextEnd flush()
    {
        const WriteFailure failure = file.write(text);
        text.resize(0); // keeps the memory
        return endOf(failure);
    }

    WholeFile &file;
    const TextProgress &progress;
    const TextCancelled &cancelled;
    int lastPercent = -1;
};

qint64 blockBytes(const ResultHeader &header)
{
    return header.points * qint64(sizeof(float));
}

QString refusedHeader(const ResultHeader &header, const QString &path)
{
    if (header.points < 1)
        return "ERROR!\nНеверный формат файла,\nнет points в паспорте\n" + path;
    if (header.blocks < 0)
        return "Error! No days in " + path;
    if (!header.isFloat)
        return "Error! The type of the values is not float in " + path;
    return {};
}

QString refusedSize(const ResultHeader &header, qint64 available, const QString &path)
{
    const QString text = shortBlockText(header, available, path);
    return text.isEmpty() ? QString() : "Error! " + text;
}

// What stands against turning a file into text; it is at its first block.
QString refused(const ResultHeader &header, const QFile &in)
{
    const QString text = refusedHeader(header, in.fileName());
    return text.isEmpty() ? refusedSize(header, in.size() - in.pos(), in.fileName()) : text;
}

// The values come as bytes, little-endian.
void appendValues(QByteArray &text, const QByteArray &bytes)
{
    for (int i = 0; i + int(sizeof(float)) <= bytes.size(); i += int(sizeof(float))) {
        appendNumber(text, qFromLittleEndian<float>(bytes.constData() + i));
        text += '\n';
    }
}

void appendPoint(QByteArray &text, const ObservationData &data, int point)
{
    text += "i=" + QByteArray::number(point) + "\n";
    for (int module = 0; module < data.modules; ++module) {
        for (int ray = 0; ray < data.rays; ++ray) {
            text += "module " + QByteArray::number(moduleNumber(data, module)) + " ray " +
                    QByteArray::number(rayNumber(data, ray)) + ":";
            for (int channel = 0; channel < data.channels; ++channel) {
                text += ' ';
                appendNumber(text, data.samples[module][channel][ray][point]);
            }
            text += '\n';
        }
    }
}

bool hasSamples(const ObservationData &data)
{
    return data.samples && data.npoints > 0 && data.modules > 0 && data.rays > 0 &&
           data.channels > 0;
}

} // namespace

ResultHeader readResultHeader(QIODevice &device)
{
    static const QRegularExpression days("days: (\\d*)\n$");
    ResultHeader header;
    while (header.text.size() < longestHeader) {
        const QByteArray line = device.readLine(longestHeader);
        if (line.isEmpty())
            break;
        header.text += line;
        if (line.startsWith("points:"))
            header.points = line.mid(7).trimmed().toInt();
        if (line.startsWith("type:"))
            header.isFloat = line.startsWith("type: float");
        if (line.startsWith("first_point:"))
            header.firstPoint = QString::fromUtf8(line.mid(12).trimmed());
        if (line.startsWith("days:")) {
            const QRegularExpressionMatch match = days.match(QString::fromUtf8(line));
            bool isCount = false;
            const qint64 count = match.captured(1).toLongLong(&isCount);
            if (match.hasMatch() && match.capturedLength(1) == 0)
                header.blocks = 0;
            else if (match.hasMatch()) // more than 63 bits: more than any file has
                header.blocks = isCount ? count : std::numeric_limits<qint64>::max();
            break;
        }
    }
    return header;
}

QString shortBlockText(const ResultHeader &header, qint64 available, const QString &path)
{
    const qint64 whole = available / blockBytes(header);
    if (header.blocks <= whole)
        return {};
    return QString("Block %1 of %2 in ").arg(whole + 1).arg(header.blocks) + path +
           QString(" is short: it needs %1 bytes, the file has %2")
               .arg(blockBytes(header))
               .arg(available - whole * blockBytes(header));
}

TextEnd resultToText(const QString &inPath, const QString &outPath, const TextProgress &progress,
                     const TextCancelled &cancelled, const QDateTime &modified)
{
    using Kind = TextEnd::Kind;
    if (inPath.isEmpty())
        return {Kind::CannotRead, "ERROR!\nНет файла для чтения!"};
    QFile in(inPath);
    if (!in.open(QIODevice::ReadOnly))
        return {Kind::CannotRead, cannotRead};
    if (outPath.isEmpty())
        return {Kind::CannotCreate, "ERROR!\nНет файла для записи!"};
    if (QFileInfo(inPath) == QFileInfo(outPath))
        return {Kind::CannotCreate,
                "Error! The text would take the place of the file it is made of: " + inPath};
    WholeFile out;
    if (const TextEnd end = endOf(out.open(outPath)); end.kind == Kind::CannotWrite)
        return end;
    else if (end.kind == Kind::CannotCreate)
        return {Kind::CannotCreate, "ERROR!\nНе могу открыть файл для записи\n"};

    const ResultHeader header = readResultHeader(in);
    if (const QString text = refused(header, in); !text.isEmpty())
        return {Kind::BadInput, text};

    TextWriter writer(out, progress, cancelled);
    writer.text += header.text;
    const qint64 all = header.blocks * blockBytes(header);
    for (qint64 done = 0; done < all;) {
        const qint64 wanted = std::min(all - done, valueBlock * qint64(sizeof(float)));
        const QByteArray bytes = in.read(wanted);
        if (bytes.size() != wanted && in.error() != QFileDevice::NoError)
            return {Kind::CannotRead, inPath + " cannot be read: " + in.errorString() + "."};
        if (bytes.size() != wanted) // it became shorter meanwhile
            return {Kind::BadInput, refusedSize(header, done + bytes.size(), inPath)};
        appendValues(writer.text, bytes);
        done += wanted;
        if (TextEnd end = writer.step(done, all); end.kind != Kind::Done)
            return end;
    }
    return writer.finish(modified);
}

bool isResultFile(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const ResultHeader header = readResultHeader(file);
    if (header.points > 0 || header.blocks >= 0)
        return true;
    // No recording's passport has these lines: the header was cut off, or lacks its counts.
    return header.text.startsWith("program: ") || ("\n" + header.text).contains("\ntype: float");
}

QString resultProblem(const QString &inPath)
{
    QFile in(inPath);
    if (!in.open(QIODevice::ReadOnly))
        return cannotRead;
    const ResultHeader header = readResultHeader(in);
    return refused(header, in);
}

qint64 resultTextBytes(const QString &inPath)
{
    QFile in(inPath);
    if (!in.open(QIODevice::ReadOnly))
        return 0;
    const ResultHeader header = readResultHeader(in);
    if (!refused(header, in).isEmpty())
        return 0;
    const QByteArray look = in.read(valuesOfLook * qint64(sizeof(float)));
    const qint64 values = look.size() / qint64(sizeof(float));
    if (values == 0)
        return header.text.size();
    QByteArray text;
    appendValues(text, look);
    const double all = double(header.blocks) * header.points;
    return header.text.size() + qint64(double(text.size()) / double(values) * all);
}

TextEnd observationToText(const ObservationData &data, const QString &path,
                          const TextProgress &progress, const TextCancelled &cancelled,
                          const QDateTime &modified)
{
    if (!hasSamples(data))
        return {TextEnd::Kind::BadInput, "Error! The recording has no samples."};
    WholeFile file;
    if (TextEnd end = endOf(file.open(path)); end.kind != TextEnd::Kind::Done) {
        debugLine("can't open file ", path, " for writing");
        return end;
    }
    TextWriter writer(file, progress, cancelled);
    for (int point = 0; point < data.npoints; ++point) {
        appendPoint(writer.text, data, point);
        if (TextEnd end = writer.step(point + 1, data.npoints); end.kind != TextEnd::Kind::Done)
            return end;
    }
    return writer.finish(modified);
}

qint64 observationTextBytes(const ObservationData &data)
{
    if (!hasSamples(data))
        return 0;
    const qint64 perPoint = qint64(data.modules) * data.rays * data.channels;
    const int points = int(std::clamp<qint64>(valuesOfLook / perPoint, 1, data.npoints));
    QByteArray text;
    for (int point = 0; point < points; ++point)
        appendPoint(text, data, point);
    return qint64(double(text.size()) / points * data.npoints);
}

qint64 recordingTextBytes(const QString &inPath)
{
    RecordingFile file;
    if (!file.open(inPath) || file.completePoints() < 1 || file.pointBytes() < 1)
        return 0;
    const qint64 perPoint = file.pointBytes() / qint64(sizeof(float));
    Stretch look;
    look.count = int(std::clamp<qint64>(valuesOfLook / perPoint, 1, file.completePoints()));
    const StretchReading reading = file.read(look);
    if (!reading.whole())
        return 0;
    return qint64(double(observationTextBytes(*reading.whole())) / look.count *
                  file.completePoints());
}

} // namespace Tools
