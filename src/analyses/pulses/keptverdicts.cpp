#include "analyses/pulses/keptverdicts.h"

#include "results/resulttable.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <cmath>

namespace Pulses {

using namespace Results;

namespace {

bool isSame(const KeptVerdict &known, const Pulse &pulse)
{
    constexpr double errors = 3;
    const double width = std::max({1.0, known.width, double(pulse.width)});
    if (std::abs(known.point - pulse.point.value) > width)
        return false;
    const double apart = std::abs(known.dispersion - pulse.dispersion.value);
    if (!std::isfinite(apart))
        return std::isfinite(known.dispersion) == std::isfinite(pulse.dispersion.value);
    const double error = std::hypot(known.dispersionError, pulse.dispersion.error);
    return apart <= (std::isfinite(error) ? errors * error : 1);
}

} // namespace

const KeptVerdict *KeptVerdicts::find(const Pulse &pulse) const
{
    const auto found = std::find_if(kept.begin(), kept.end(),
                                    [&](const KeptVerdict &known) { return isSame(known, pulse); });
    return found == kept.end() ? nullptr : &*found;
}

void KeptVerdicts::set(const Pulse &pulse, Sky::Verdict verdict, const QString &note)
{
    kept.erase(std::remove_if(kept.begin(), kept.end(),
                              [&](const KeptVerdict &known) { return isSame(known, pulse); }),
               kept.end());
    if (verdict == Sky::Verdict::None && note.isEmpty())
        return;
    kept.push_back({pulse.module, pulse.ray, pulse.point.value, double(pulse.width),
                    pulse.dispersion.value, pulse.dispersion.error, verdict, note});
}

QByteArray KeptVerdicts::toBytes() const
{
    ResultTable table;
    table.request = {{"program", "ZRT-Analytics-2"}, {"command", "verdicts"}};
    const auto add = [&](const QString &name, const QString &unit, const auto &valueOf) {
        std::vector<double> values;
        for (const KeptVerdict &one : kept)
            values.push_back(double(valueOf(one)));
        table.columns.push_back({name, unit, values});
    };
    using K = const KeptVerdict &;
    add("module", "", [](K one) { return one.module; });
    add("ray", "", [](K one) { return one.ray; });
    add("point", "", [](K one) { return one.point; });
    add("width", "points", [](K one) { return one.width; });
    add("dispersion", "pc/cm^3", [](K one) { return one.dispersion; });
    add("dispersion_error", "pc/cm^3", [](K one) { return one.dispersionError; });
    QStringList verdicts;
    QStringList notes;
    for (const KeptVerdict &one : kept) {
        verdicts << Sky::verdictName(one.verdict);
        // Quoted, so that a note of digits or none at all stays a text.
        notes << "\"" + QString(one.note).replace('\n', ' ').replace('\t', ' ') + "\"";
    }
    table.columns.push_back({"verdict", "", verdicts});
    table.columns.push_back({"note", "", notes});
    return table.toBytes(Format::Text);
}

KeptVerdicts KeptVerdicts::fromBytes(const QByteArray &bytes, QString &problem)
{
    KeptVerdicts made;
    const ReadTable read = readTable(bytes);
    problem = read.problem;
    if (!problem.isEmpty())
        return made;
    const char *const names[] = {"module",           "ray",     "point", "width", "dispersion",
                                 "dispersion_error", "verdict", "note"};
    std::vector<const Column *> columns;
    for (const char *const name : names) {
        columns.push_back(columnNamed(read.table.columns, name));
        if (!columns.back()) {
            problem = QString("it has no column \"%1\"").arg(name);
            return made;
        }
    }
    for (int row = 0; row < read.table.rows(); ++row) {
        const auto number = [&](std::size_t column) { return columns[column]->numberAt(row); };
        const QString note = columns[7]->textAt(row);
        made.kept.push_back({int(number(0)), int(number(1)), number(2), number(3), number(4),
                             number(5), Sky::verdictOf(columns[6]->textAt(row)),
                             note.mid(1, note.size() - 2)});
    }
    return made;
}

QString verdictsPath(const QString &recording)
{
    const QFileInfo info(recording);
    const QString name = info.fileName() + ".verdicts.txt";
    const QString beside = info.absolutePath() + "/" + name;
    if (QFileInfo::exists(beside) || QFileInfo(info.absolutePath()).isWritable())
        return beside;
    constexpr int digits = 12;
    const QByteArray hash =
        QCryptographicHash::hash(info.absoluteFilePath().toUtf8(), QCryptographicHash::Sha256);
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           "/zrt/verdicts/" + QString::fromLatin1(hash.toHex().left(digits)) + "-" + name;
}

} // namespace Pulses
