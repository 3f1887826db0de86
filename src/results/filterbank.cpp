#include "results/filterbank.h"

#include "base/bytetext.h"
#include "data/samplingstep.h"

#include <QDateTime>
#include <QIODevice>
#include <QSet>
#include <QtEndian>
#include <cmath>
#include <cstring>

namespace Results {

namespace {

constexpr qint64 julianDayOfZero = 2400001; // Julian day number of modified Julian date 0
constexpr double msPerDay = 86400000;
constexpr int longestKey = 80; // bytes, as the programs that read these files allow
constexpr int mostChannels = 65536;
constexpr int mostKeys = 200;

void appendInt(QByteArray &bytes, int value)
{
    const qint32 little = qToLittleEndian(qint32(value));
    bytes.append(reinterpret_cast<const char *>(&little), sizeof little);
}

void appendText(QByteArray &bytes, const QByteArray &text)
{
    appendInt(bytes, text.size());
    bytes += text;
}

void appendKey(QByteArray &bytes, const char *key, int value)
{
    appendText(bytes, key);
    appendInt(bytes, value);
}

void appendKey(QByteArray &bytes, const char *key, double value)
{
    appendText(bytes, key);
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    bits = qToLittleEndian(bits);
    bytes.append(reinterpret_cast<const char *>(&bits), sizeof bits);
}

bool readInt(QIODevice &device, int &value)
{
    qint32 little = 0;
    if (device.read(reinterpret_cast<char *>(&little), sizeof little) != sizeof little)
        return false;
    value = qFromLittleEndian(little);
    return true;
}

bool readDouble(QIODevice &device, double &value)
{
    quint64 bits = 0;
    if (device.read(reinterpret_cast<char *>(&bits), sizeof bits) != sizeof bits)
        return false;
    bits = qFromLittleEndian(bits);
    std::memcpy(&value, &bits, sizeof value);
    return true;
}

bool readText(QIODevice &device, QByteArray &text)
{
    int length = 0;
    if (!readInt(device, length) || length < 1 || length > longestKey)
        return false;
    text = device.read(length);
    return text.size() == length;
}

} // namespace

QString filterbankProblem(const FilterbankHeader &header)
{
    if (header.channels < 1 || header.channels > mostChannels)
        return QString("it has %1 channels").arg(header.channels);
    if (header.bits != 8 && header.bits != 16 && header.bits != 32)
        return QString("its values have %1 bits; 8, 16 and 32 can be imported").arg(header.bits);
    if (!isStep(header.step))
        return QString("its sampling interval is %1 s (allowed: %2)")
            .arg(header.step)
            .arg(stepRangeText("s", 1));
    const double last = header.firstBand + (header.channels - 1) * header.bandStep;
    if (!(header.firstBand > 0) || !(last > 0) || std::isinf(header.firstBand) || std::isinf(last))
        return QString("its channels reach from %1 to %2 MHz").arg(header.firstBand).arg(last);
    return {};
}

QByteArray filterbankBytes(const FilterbankHeader &header)
{
    QByteArray bytes;
    appendText(bytes, "HEADER_START");
    appendText(bytes, "source_name");
    appendText(bytes, header.source.isEmpty() ? QByteArray("unknown")
                                              : bytesOfText(header.source).left(longestKey));
    if (!header.rawDataFile.isEmpty()) {
        appendText(bytes, "rawdatafile");
        appendText(bytes, bytesOfText(header.rawDataFile).left(longestKey));
    }
    appendKey(bytes, "machine_id", 0);
    appendKey(bytes, "telescope_id", 0);
    appendKey(bytes, "data_type", 1);
    appendKey(bytes, "fch1", header.firstBand);
    appendKey(bytes, "foff", header.bandStep);
    appendKey(bytes, "nchans", header.channels);
    appendKey(bytes, "nbits", header.bits);
    appendKey(bytes, "tstart", header.begin);
    appendKey(bytes, "tsamp", header.step);
    appendKey(bytes, "nifs", 1);
    appendText(bytes, "HEADER_END");
    return bytes;
}

QString readFilterbank(QIODevice &device, FilterbankHeader &header)
{
    static const QSet<QByteArray> doubles = {"az_start", "za_start", "src_raj", "src_dej",
                                             "tstart",   "tsamp",    "fch1",    "foff",
                                             "refdm",    "period"};
    static const QSet<QByteArray> texts = {"rawdatafile", "source_name"};
    QByteArray key;
    if (!readText(device, key) || key != "HEADER_START")
        return "it does not begin as a SIGPROC filterbank";
    int interfaces = 1;
    for (int i = 0; i < mostKeys; ++i) {
        if (!readText(device, key))
            break;
        if (key == "HEADER_END")
            return interfaces == 1
                       ? filterbankProblem(header)
                       : QString("it holds %1 polarisations; one can be imported").arg(interfaces);
        QByteArray text;
        double number = 0;
        int whole = 0;
        if (texts.contains(key)) {
            if (!readText(device, text))
                break;
            if (key == "source_name")
                header.source = textOfBytes(text);
            else
                header.rawDataFile = textOfBytes(text);
        } else if (key == "signed") {
            if (device.read(1).size() != 1)
                break;
        } else if (doubles.contains(key)) {
            if (!readDouble(device, number))
                break;
            if (key == "tstart")
                header.begin = number;
            else if (key == "tsamp")
                header.step = number;
            else if (key == "fch1")
                header.firstBand = number;
            else if (key == "foff")
                header.bandStep = number;
        } else {
            // All other known keys have whole numbers; FREQUENCY_START begins a list of bands.
            if (key == "FREQUENCY_START")
                return "its bands are not equally spaced";
            if (!readInt(device, whole))
                break;
            if (key == "nchans")
                header.channels = whole;
            else if (key == "nbits")
                header.bits = whole;
            else if (key == "nifs")
                interfaces = whole;
            else if (key == "data_type" && whole != 1)
                return "it holds other data than a filterbank (data_type)";
        }
    }
    return "its header ends early";
}

QDateTime dateOfModifiedJulian(double days)
{
    // Years 0 to 9999; what lies beyond is no date of a recording.
    if (!(days > -679000 && days < 2973000))
        return {};
    const qint64 day = qint64(std::floor(days));
    const QDateTime midnight(QDate::fromJulianDay(day + julianDayOfZero), QTime(0, 0), Qt::UTC);
    return midnight.addMSecs(qint64(std::round((days - double(day)) * msPerDay)));
}

} // namespace Results
