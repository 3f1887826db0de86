#include "coords/pulsarcatalogue.h"

#include <QFile>
#include <QHash>
#include <algorithm>
#include <cmath>
#include <limits>

// A resource of a static library is linked and registered only where this is called, and it
// must be called outside of namespaces.
static void registerPulsars()
{
    Q_INIT_RESOURCE(coords);
}

namespace Tools {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double secondsPerDay = 86400;
constexpr qint64 largestText = 1 << 24;

double numberOf(const QString &text)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    return isNumber ? value : notANumber;
}

// The values of one line by the names of their columns.
class Line {
public:
    Line(const QStringList &columnNames, const QString &text)
        : names(columnNames), values(text.split(','))
    {}

    bool isWhole() const { return values.size() == names.size(); }

    QString text(const QString &name) const
    {
        const int column = names.indexOf(name);
        return column < 0 ? QString() : values[column].trimmed();
    }

    double number(const QString &name) const { return numberOf(text(name)); }

private:
    const QStringList &names;
    QStringList values;
};

// Why the line is no pulsar; empty where it is one.
QString readPulsar(const Line &line, KnownPulsar &pulsar)
{
    if (!line.isWhole())
        return "does not have as many values as the first one names columns";
    pulsar.jname = line.text("jname");
    pulsar.name = line.text("name").isEmpty() ? pulsar.jname : line.text("name");
    if (pulsar.jname.isEmpty())
        pulsar.jname = pulsar.name;
    if (pulsar.name.isEmpty())
        return "has no name";
    pulsar.position = {rightAscensionOf(line.text("raj")), declinationOf(line.text("decj"))};
    if (!pulsar.position.isNumber())
        return QString("gives \"%1\", \"%2\" for a place on the sky")
            .arg(line.text("raj"), line.text("decj"));
    pulsar.frequency = line.number("f0_hz");
    pulsar.derivative = line.text("f1_hz_s").isEmpty() ? 0 : line.number("f1_hz_s");
    pulsar.epoch = line.number("pepoch_mjd");
    pulsar.dispersion = line.number("dm_pc_cm3");
    pulsar.flux400 = line.number("s400_mjy");
    pulsar.flux1400 = line.number("s1400_mjy");
    pulsar.binary = line.text("binary_model");
    pulsar.orbit = line.number("pb_d");
    return {};
}

// Names are compared without the letter of their equinox.
QString plainName(const QString &name)
{
    QString plain = name.simplified().toUpper();
    plain.remove(' ');
    plain.replace(QChar(0x2212), '-');
    if (plain.startsWith("PSR"))
        plain = plain.mid(3);
    if (plain.startsWith('J') || plain.startsWith('B'))
        plain = plain.mid(1);
    return plain;
}

bool isOneOf(const KnownPulsar &pulsar, const QString &plain)
{
    return plainName(pulsar.name) == plain || plainName(pulsar.jname) == plain;
}

// Levenshtein's distance: letters to be exchanged, left out or added.
int distance(const QString &one, const QString &other)
{
    std::vector<int> row(std::size_t(other.size()) + 1);
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = int(i);
    for (int i = 0; i < one.size(); ++i) {
        int diagonal = row[0];
        row[0] = i + 1;
        for (int j = 0; j < other.size(); ++j) {
            const std::size_t at = std::size_t(j) + 1;
            const int exchanged = diagonal + (one[i] == other[j] ? 0 : 1);
            diagonal = row[at];
            row[at] = std::min({exchanged, row[at] + 1, row[at - 1] + 1});
        }
    }
    return row.back();
}

int distanceOf(const KnownPulsar &pulsar, const QString &plain)
{
    return std::min(distance(plainName(pulsar.name), plain),
                    distance(plainName(pulsar.jname), plain));
}

// How well a pulsar fits a text: lower is better, negative does not.
int rankOf(const KnownPulsar &pulsar, const QString &typed, const QString &plain)
{
    if (pulsar.name.startsWith(typed) || pulsar.jname.startsWith(typed))
        return 0;
    const QString name = plainName(pulsar.name);
    const QString jname = plainName(pulsar.jname);
    if (name.startsWith(plain) || jname.startsWith(plain))
        return 1;
    return name.contains(plain) || jname.contains(plain) ? 2 : -1;
}

} // namespace

double KnownPulsar::frequencyAt(double mjd) const
{
    const double days = std::isfinite(epoch) ? mjd - epoch : 0;
    return frequency + derivative * days * secondsPerDay;
}

PulsarCatalogue parsePulsars(const QByteArray &text)
{
    PulsarCatalogue catalogue;
    if (text.size() > largestText) {
        catalogue.problem = QString("it is longer than %1 bytes").arg(largestText);
        return catalogue;
    }
    QStringList names;
    int number = 0;
    for (const QByteArray &bytes : text.split('\n')) {
        ++number;
        const QString content = QString::fromUtf8(bytes).trimmed();
        if (content.isEmpty() || content.startsWith('#'))
            continue;
        if (names.isEmpty()) {
            for (const QString &name : content.split(','))
                names << name.trimmed();
            continue;
        }
        KnownPulsar pulsar;
        const QString wrong = readPulsar(Line(names, content), pulsar);
        if (wrong.isEmpty())
            catalogue.pulsars.push_back(pulsar);
        else if (catalogue.problem.isEmpty())
            catalogue.problem = QString("line %1 %2").arg(number).arg(wrong);
    }
    if (catalogue.pulsars.empty() && catalogue.problem.isEmpty())
        catalogue.problem = "it names no pulsar";
    return catalogue;
}

const std::vector<KnownPulsar> &knownPulsars()
{
    static const std::vector<KnownPulsar> pulsars = [] {
        registerPulsars();
        QFile file(":/coords/pulsars.csv");
        return file.open(QIODevice::ReadOnly) ? parsePulsars(file.readAll()).pulsars
                                              : std::vector<KnownPulsar>();
    }();
    return pulsars;
}

const KnownPulsar *findPulsar(const std::vector<KnownPulsar> &pulsars, const QString &name)
{
    const QString plain = plainName(name);
    if (plain.isEmpty())
        return nullptr;
    const KnownPulsar *begun = nullptr;
    int count = 0;
    for (const KnownPulsar &pulsar : pulsars) {
        if (isOneOf(pulsar, plain))
            return &pulsar;
        const int rank = rankOf(pulsar, plain, plain);
        if (rank != 0 && rank != 1)
            continue;
        begun = &pulsar;
        ++count;
    }
    return count == 1 ? begun : nullptr;
}

QStringList suggestPulsars(const std::vector<KnownPulsar> &pulsars, const QString &typed, int most)
{
    const QString plain = plainName(typed);
    std::vector<std::pair<int, QString>> ranked;
    for (const KnownPulsar &pulsar : pulsars) {
        const int rank = rankOf(pulsar, typed.simplified().toUpper(), plain);
        if (rank >= 0)
            ranked.emplace_back(rank, pulsar.name);
    }
    if (ranked.empty()) {
        for (const KnownPulsar &pulsar : pulsars)
            ranked.emplace_back(distanceOf(pulsar, plain), pulsar.name);
    }
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const auto &one, const auto &other) { return one.first < other.first; });
    QStringList names;
    for (std::size_t i = 0; i < ranked.size() && names.size() < most; ++i)
        names << ranked[i].second;
    return names;
}

} // namespace Tools
