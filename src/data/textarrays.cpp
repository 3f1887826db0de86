#include "data/textarrays.h"

#include "base/debugline.h"
#include "base/wholefile.h"

#include <QFile>

namespace Tools {

namespace {

// The binary blocks of a result file may hold no line end for gigabytes.
constexpr qint64 longestPiece = 4096; // bytes
constexpr int textBlock = 1 << 20;    // bytes collected before they are written

// What follows `key` at the start of the first line that has it.
QByteArray valueOfKey(QFile &file, const QByteArray &key)
{
    bool isLineStart = true;
    while (true) {
        const QByteArray piece = file.readLine(longestPiece);
        if (piece.isEmpty())
            return {};
        if (isLineStart && piece.startsWith(key))
            return piece.mid(key.size()).trimmed();
        isLineStart = piece.endsWith('\n');
    }
}

} // namespace

bool writeArrToFile(const std::vector<double> &values, const QString &path)
{
    WholeFile file;
    WriteFailure failure = file.open(path);
    QByteArray text;
    for (std::size_t i = 0; i < values.size() && !failure; ++i) {
        text += QByteArray::number(values[i], 'f', 3) + "\n";
        if (text.size() < textBlock)
            continue;
        failure = file.write(text);
        text.resize(0);
    }
    if (!failure)
        failure = file.write(text);
    if (!failure)
        failure = file.commit();
    if (failure)
        debugLine("ERROR! Tools::writeArrToFile(): Can't ",
                  failure.kind == WriteFailure::Kind::CannotCreate ? "open" : "write", " file ",
                  path, "\n");
    return !failure;
}

bool addArrToFile(const std::vector<float> &values, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::Append | QIODevice::Text)) {
        debugLine("ERROR! Tools:addArrToFile(): Can't open file ", path, "\n");
        return false;
    }
    QByteArray row;
    for (const float value : values)
        row += QByteArray::number(double(value), 'f', 6) + " ";
    row += "\n";

    const qint64 before = file.size();
    if (file.write(row) != row.size() || !file.flush()) {
        file.resize(before);
        debugLine("ERROR! Tools:addArrToFile(): Can't write file ", path, "\n");
        return false;
    }
    return true;
}

int findDispInFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        debugLine("Tools::findDispInFile(): Error! Can't open file ", path);
        return 0;
    }
    return valueOfKey(file, "disp:").toInt();
}

int findPointsInFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        debugLine("Error of open file ", path);
        return 0;
    }
    return valueOfKey(file, "points:").toInt();
}

} // namespace Tools
