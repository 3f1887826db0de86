#include "data/textarrays.h"

#include "base/debugline.h"

#include <QFile>
#include <QSaveFile>

namespace Tools {

namespace {

// The binary blocks of a result file may hold no line end for gigabytes.
constexpr qint64 longestPiece = 4096; // bytes

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
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        debugLine("ERROR! Tools::writeArrToFile(): Can't open file ", path, "\n");
        return false;
    }
    for (const double value : values)
        file.write(QByteArray::number(value, 'f', 3) + "\n");
    if (!file.commit()) {
        debugLine("ERROR! Tools::writeArrToFile(): Can't write file ", path, "\n");
        return false;
    }
    return true;
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
