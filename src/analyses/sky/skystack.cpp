#include "analyses/sky/skystack.h"

#include "base/targetclones.h"

#include <QFile>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Sky {

namespace {

constexpr double ratioUnit = 0x1p-40;
constexpr double largestSum = 0x1p62;

// Values become whole numbers once; the sums of two layers take them.
ZRT_TARGET_CLONES int addValues(const float *values, int count, float clip, std::int32_t *sums,
                                std::int32_t *clipped)
{
    constexpr float perUnit = float(1 / valueUnit);
    constexpr float most = float(mostValue);
    int above = 0;
    for (int i = 0; i < count; ++i) {
        const float value = values[i] == values[i] ? values[i] : 0; // NaN counts as none
        above += value > most;
        sums[i] += std::int32_t(std::floor(std::clamp(value, -most, most) * perUnit + 0.5F));
        clipped[i] += std::int32_t(std::floor(std::clamp(value, -most, clip) * perUnit + 0.5F));
    }
    return above;
}

void addAll(const std::int32_t *from, std::size_t count, std::vector<double> &sums)
{
    for (std::size_t i = 0; i < count; ++i)
        sums[i] += from[i] * valueUnit;
}

template <typename Number>
void addEach(const std::vector<Number> &from, std::vector<Number> &to)
{
    for (std::size_t i = 0; i < to.size(); ++i)
        to[i] += from[i];
}

template <typename Number>
quint64 checkOf(const std::vector<Number> &numbers)
{
    return std::accumulate(numbers.begin(), numbers.end(), quint64(0),
                           [](quint64 sum, Number number) { return sum * 31 + quint64(number); });
}

QByteArray unitsText(const std::vector<bool> &units)
{
    if (units.empty())
        return "all";
    QByteArray text;
    for (const bool is : units)
        text += is ? '1' : '0';
    return text;
}

} // namespace

qint64 StackShape::bytes() const
{
    const double exact =
        double(rays) * dispersions * starts * positions * layers * double(sizeof(std::int32_t));
    return exact > largestSum ? -1 : qint64(exact);
}

SkyStack::SkyStack(const QByteArray &request, const StackShape &shape)
    : asked(request), form(shape), sums(std::size_t(shape.bytes()) / sizeof(std::int32_t)),
      counts(std::size_t(sunQuarters) * std::size_t(shape.rays) * std::size_t(shape.starts)),
      ratios(counts.size() / sunQuarters)
{}

std::size_t SkyStack::index(int layer, int ray, int dispersion, int start) const
{
    const std::size_t cell = ((std::size_t(layer) * std::size_t(form.rays) + std::size_t(ray)) *
                                  std::size_t(form.dispersions) +
                              std::size_t(dispersion)) *
                                 std::size_t(form.starts) +
                             std::size_t(start);
    return cell * std::size_t(form.positions);
}

std::size_t SkyStack::rayStart(int ray, int start) const
{
    return std::size_t(ray) * std::size_t(form.starts) + std::size_t(start);
}

std::size_t SkyStack::countIndex(int quarter, int ray, int start) const
{
    return std::size_t(quarter) * ratios.size() + rayStart(ray, start);
}

int SkyStack::add(int ray, int dispersion, int start, int quarter, const std::vector<float> &values,
                  double clip)
{
    return addValues(values.data(), form.positions, float(clip),
                     sums.data() + index(quarter, ray, dispersion, start),
                     sums.data() + index(sunQuarters, ray, dispersion, start));
}

void SkyStack::count(int ray, int start, int quarter, double ratio)
{
    ++counts[countIndex(quarter, ray, start)];
    if (std::isfinite(ratio))
        ratios[rayStart(ray, start)] += std::int64_t(std::llround(ratio / ratioUnit));
}

int SkyStack::days(int ray, int start) const
{
    int sum = 0;
    for (int quarter = 0; quarter < sunQuarters; ++quarter)
        sum += counts[countIndex(quarter, ray, start)];
    return sum;
}

CellStack SkyStack::quarterOf(int ray, int dispersion, int start, int quarter) const
{
    CellStack cell;
    cell.days = counts[countIndex(quarter, ray, start)];
    cell.sums.assign(std::size_t(form.positions), 0);
    addAll(sums.data() + index(quarter, ray, dispersion, start), cell.sums.size(), cell.sums);
    return cell;
}

CellStack SkyStack::cell(int ray, int dispersion, int start) const
{
    CellStack cell;
    cell.days = days(ray, start);
    cell.sums.assign(std::size_t(form.positions), 0);
    cell.clipped = cell.sums;
    for (int quarter = 0; quarter < sunQuarters; ++quarter)
        addAll(sums.data() + index(quarter, ray, dispersion, start), cell.sums.size(), cell.sums);
    addAll(sums.data() + index(sunQuarters, ray, dispersion, start), cell.clipped.size(),
           cell.clipped);
    cell.ratio = ratio(ray, start);
    return cell;
}

double SkyStack::ratio(int ray, int start) const
{
    const std::int64_t sum = ratios[rayStart(ray, start)];
    const int count = days(ray, start);
    return count > 0 && sum != 0 ? double(sum) * ratioUnit / count
                                 : std::numeric_limits<double>::quiet_NaN();
}

bool SkyStack::merge(const SkyStack &other)
{
    if (other.asked != asked || !(other.form == form))
        return false;
    const auto isHere = [this](const auto &entry) { return added.count(entry.first) > 0; };
    if (std::any_of(other.added.begin(), other.added.end(), isHere))
        return false;
    addEach(other.sums, sums);
    addEach(other.counts, counts);
    addEach(other.ratios, ratios);
    added.insert(other.added.begin(), other.added.end());
    hum.insert(other.hum.begin(), other.hum.end());
    cutOff += other.cutOff;
    return true;
}

namespace {

constexpr char formLine[] = "stack: sums over days of cells of the sky, form 3\n";
constexpr int longestLine = 1 << 20;

QByteArray shapeText(const StackShape &shape)
{
    return QStringList{QString::number(shape.rays), QString::number(shape.dispersions),
                       QString::number(shape.starts), QString::number(shape.positions)}
        .join(' ')
        .toLatin1();
}

template <typename Number>
WriteFailure writeNumbers(WholeFile &file, const std::vector<Number> &numbers)
{
    constexpr std::size_t piece = std::size_t(1) << 22;
    for (std::size_t begin = 0; begin < numbers.size(); begin += piece) {
        const std::size_t count = std::min(piece, numbers.size() - begin);
        if (WriteFailure failure =
                file.write(reinterpret_cast<const char *>(numbers.data() + begin),
                           qint64(count * sizeof(Number))))
            return failure;
    }
    return {};
}

template <typename Number>
bool readNumbers(QFile &file, std::vector<Number> &numbers)
{
    const auto bytes = qint64(numbers.size() * sizeof(Number));
    return file.read(reinterpret_cast<char *>(numbers.data()), bytes) == bytes;
}

} // namespace

WriteFailure SkyStack::write(const QString &path) const
{
    QByteArray header = formLine;
    header += "request: " + asked + "\nshape: " + shapeText(form) +
              "\ncut_off: " + QByteArray::number(cutOff) +
              "\ncheck: " + QByteArray::number(checkOf(sums) + checkOf(counts) + checkOf(ratios)) +
              "\n";
    for (const auto &[from, to] : hum)
        header += "hum: " + QByteArray::number(from) + ' ' + QByteArray::number(to) + '\n';
    for (const auto &[name, one] : added)
        header += "day: " + name.toUtf8() + ' ' + one.state + ' ' + unitsText(one.units) + '\n';
    header += "sums:\n";
    WholeFile file;
    if (WriteFailure failure = file.open(path))
        return failure;
    if (WriteFailure failure = file.write(header))
        return failure;
    if (WriteFailure failure = writeNumbers(file, counts))
        return failure;
    if (WriteFailure failure = writeNumbers(file, ratios))
        return failure;
    if (WriteFailure failure = writeNumbers(file, sums))
        return failure;
    if (WriteFailure failure = file.flush())
        return failure;
    return file.commit();
}

namespace {

// What the header of a file says.
struct StackHeader {
    std::map<QString, Added> added;
    std::set<std::pair<int, int>> hum;
    qint64 cutOff = 0;
    quint64 check = 0;
};

bool readDay(const QList<QByteArray> &words, std::size_t units, StackHeader &header)
{
    if (words.size() != 4)
        return false;
    Added one;
    one.state = words[2];
    if (words[3] != "all") {
        if (std::size_t(words[3].size()) != units)
            return false;
        for (const char c : words[3])
            one.units.push_back(c == '1');
    }
    return header.added.emplace(QString::fromUtf8(words[1]), one).second;
}

bool readNumber(const QList<QByteArray> &words, StackHeader &header)
{
    constexpr int mostOfHum = 1'000'000; // thousandths of a Hz
    bool isFirst = false;
    bool isSecond = true;
    if (words[0] == "hum:" && words.size() == 3) {
        const int from = words[1].toInt(&isFirst);
        const int to = words[2].toInt(&isSecond);
        header.hum.emplace(from, to);
        return isFirst && isSecond && from >= 0 && from <= to && to <= mostOfHum;
    }
    if (words[0] == "cut_off:" && words.size() == 2)
        header.cutOff = words[1].toLongLong(&isFirst);
    else if (words[0] == "check:" && words.size() == 2)
        header.check = words[1].toULongLong(&isFirst);
    return isFirst;
}

// Reads a header behind its first line.
bool readHeader(QFile &file, const QByteArray &request, const StackShape &shape,
                StackHeader &header)
{
    if (file.readLine(longestLine) != "request: " + request + '\n' ||
        file.readLine(longestLine) != "shape: " + shapeText(shape) + '\n')
        return false;
    const auto units = std::size_t(shape.rays) * std::size_t(shape.dispersions);
    while (!file.atEnd()) {
        const QByteArray line = file.readLine(longestLine).trimmed();
        const QList<QByteArray> words = line.split(' ');
        if (line == "sums:")
            return true;
        if (words[0] == "day:") {
            if (!readDay(words, units, header))
                return false;
        } else if (!readNumber(words, header)) {
            return false;
        }
    }
    return false;
}

} // namespace

StackReading StackReading::of(const QString &path, const QByteArray &request,
                              const StackShape &shape, bool withSums)
{
    StackReading reading;
    QFile file(path);
    StackHeader header;
    const auto refused = [&](const QString &what) {
        reading.stack = {};
        reading.problem = path + ": " + what;
        return reading;
    };
    if (!file.open(QIODevice::ReadOnly))
        return refused("it cannot be read.");
    if (file.readLine(longestLine) != formLine)
        return refused("it is no stack, or one of another version.");
    if (!readHeader(file, request, shape, header))
        return refused("its header is damaged, or it was made for another request.");
    const qint64 counts = qint64(sunQuarters) * shape.rays * shape.starts;
    const qint64 expected = shape.bytes() + counts * qint64(sizeof(std::int32_t)) +
                            counts / sunQuarters * qint64(sizeof(std::int64_t));
    if (file.size() - file.pos() != expected)
        return refused("it was cut short.");
    if (withSums) {
        SkyStack &stack = reading.stack = SkyStack(request, shape);
        if (!readNumbers(file, stack.counts) || !readNumbers(file, stack.ratios) ||
            !readNumbers(file, stack.sums))
            return refused("it cannot be read.");
        if (checkOf(stack.sums) + checkOf(stack.counts) + checkOf(stack.ratios) != header.check)
            return refused("its numbers are damaged.");
    }
    reading.stack.added = std::move(header.added);
    reading.stack.hum = std::move(header.hum);
    reading.stack.cutOff = header.cutOff;
    return reading;
}

} // namespace Sky
