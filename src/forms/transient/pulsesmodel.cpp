#include "forms/transient/pulsesmodel.h"

#include "results/reporttext.h"

#include <algorithm>
#include <cmath>

namespace {

using Pulses::Measured;
using Pulses::Pulse;

constexpr char untold[] = "-";

QString measuredText(const Measured &value, int decimals)
{
    if (!std::isfinite(value.value))
        return untold;
    return std::isfinite(value.error) && value.error > 0
               ? ReportText::withError(value.value, value.error)
               : QString::number(value.value, 'f', decimals);
}

QString raysText(const Pulse &pulse)
{
    const QString own = QString("m%1 r%2").arg(pulse.module).arg(pulse.ray);
    const auto others = int(pulse.rays.size()) - 1;
    return others > 0 ? own + QString(" +%1").arg(others) : own;
}

QString allRaysText(const Pulse &pulse)
{
    QStringList texts;
    for (const Pulses::PulseInRay &ray : pulse.rays)
        texts << QString("module %1 ray %2: S/N %3")
                     .arg(ray.module)
                     .arg(ray.ray)
                     .arg(ray.snr, 0, 'f', 1);
    return texts.join('\n');
}

} // namespace

TableModel::Column PulsesModel::column(int index) const
{
    static const std::vector<Column> columns = {
        {"Verdict", "accept, reject or unsure: keys A, R and U"},
        {"UTC", "Of the pulse's centre in the last band"},
        {"Point", "Of the recording, centre of the pulse in the last band", true},
        {"Ray", "The strongest one; +N: so many others have it as well"},
        {"DM, pc/cm^3", "Dispersion measure of the fit of S/N over dispersion", true},
        {"Width", "Boxcar of the best averaging, points", true},
        {"S/N", "Of that boxcar", true},
        {"RA", "Right ascension of 2000 of what stands in the beam", true},
        {"Dec", "Declination of 2000", true},
        {"Source", "Known pulsar in the beam at this dispersion"},
        {"Search", "What the search says: candidate, or what speaks against it"},
        {"Note", "F2 or a double click changes it"}};
    return columns[std::size_t(index)];
}

QString PulsesModel::text(int row, int column) const
{
    const Pulse &pulse = shown[std::size_t(row)];
    switch (column) {
    case VerdictPlace:
        return verdict(row) == Sky::Verdict::None ? QString() : Sky::verdictName(verdict(row));
    case Utc:
        return pulse.utc.isValid() ? pulse.utc.toString("yyyy-MM-dd hh:mm:ss.zzz") : untold;
    case Point:
        return measuredText(pulse.point, 1);
    case Ray:
        return raysText(pulse);
    case Dispersion:
        return measuredText(pulse.dispersion, 2);
    case Width:
        return QString::number(pulse.width);
    case Snr:
        return QString::number(pulse.snr, 'f', 1);
    case Alfa:
        return Tools::rightAscensionText(pulse.position.alfa);
    case Delta:
        return Tools::declinationText(pulse.position.delta);
    case Source:
        return pulse.knownSource;
    case Found:
        return Pulses::nameOf(pulse.verdict.kind);
    default:
        return note(row);
    }
}

QVariant PulsesModel::sortValue(int row, int column) const
{
    const Pulse &pulse = shown[std::size_t(row)];
    switch (column) {
    case VerdictPlace:
        return int(verdict(row));
    case Utc:
        return pulse.utc;
    case Point:
        return pulse.point.value;
    case Ray:
        return 1000 * pulse.module + pulse.ray;
    case Dispersion:
        return pulse.dispersion.value;
    case Snr:
        return pulse.snr;
    case Alfa:
        return pulse.position.alfa;
    case Delta:
        return pulse.position.delta;
    default:
        return TableModel::sortValue(row, column);
    }
}

QVariant PulsesModel::look(int row, int column, int role) const
{
    const Pulse &pulse = shown[std::size_t(row)];
    if (role == Qt::EditRole)
        return text(row, column);
    if (role != Qt::ToolTipRole)
        return {};
    switch (column) {
    case Ray:
        return allRaysText(pulse);
    case Found:
        return pulse.verdict.reason;
    case Alfa:
    case Delta:
        return pulse.position.isNumber()
                   ? QVariant()
                   : QString("Where the beam points is not known: neither the folder nor the name "
                             "of the recording tells the site (N0 to N4)");
    case Note:
        return note(row);
    default:
        return {};
    }
}

void PulsesModel::setPulses(std::vector<Pulse> found)
{
    beginResetModel();
    shown = std::move(found);
    endResetModel();
}

int PulsesModel::rowOf(const Pulse &pulse) const
{
    const auto found = std::find_if(shown.begin(), shown.end(), [&](const Pulse &other) {
        return std::abs(other.point.value - pulse.point.value) <=
                   std::max(other.width, pulse.width) &&
               std::abs(other.snr - pulse.snr) <= 0.5 * pulse.snr;
    });
    return found == shown.end() ? -1 : int(found - shown.begin());
}

void PulsesModel::setVerdicts(Pulses::KeptVerdicts kept)
{
    beginResetModel();
    decidedOn = std::move(kept);
    endResetModel();
}

Sky::Verdict PulsesModel::verdict(int row) const
{
    const Pulses::KeptVerdict *const kept = decidedOn.find(shown[std::size_t(row)]);
    return kept ? kept->verdict : Sky::Verdict::None;
}

QString PulsesModel::note(int row) const
{
    const Pulses::KeptVerdict *const kept = decidedOn.find(shown[std::size_t(row)]);
    return kept ? kept->note : QString();
}

void PulsesModel::decide(int row, Sky::Verdict verdict, const QString &note)
{
    if (row < 0 || row >= rows())
        return;
    decidedOn.set(shown[std::size_t(row)], verdict, note);
    // A pulse that another row tells of as well has the same verdict.
    emit dataChanged(index(0, 0), index(rows() - 1, PlaceCount - 1));
    emit decided(row);
}

void PulsesModel::setVerdict(int row, Sky::Verdict verdict)
{
    if (row >= 0 && row < rows())
        decide(row, verdict, note(row));
}

void PulsesModel::setNote(int row, const QString &text)
{
    if (row >= 0 && row < rows())
        decide(row, verdict(row), text.simplified());
}

bool PulsesModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !index.isValid() || index.column() != Note ||
        value.toString() == note(index.row()))
        return false;
    setNote(index.row(), value.toString());
    return true;
}

Qt::ItemFlags PulsesModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags common = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    return index.isValid() && index.column() == Note ? common | Qt::ItemIsEditable : common;
}

std::vector<Results::Column> PulsesModel::tableColumns() const
{
    std::vector<Results::Column> made;
    const auto numbers = [&](const QString &name, const QString &unit, const auto &valueOf) {
        std::vector<double> values;
        for (const Pulse &pulse : shown)
            values.push_back(double(valueOf(pulse)));
        made.push_back({name, unit, values});
    };
    const auto texts = [&](const QString &name, const auto &textOf) {
        QStringList values;
        for (int row = 0; row < rows(); ++row) {
            const QString value = textOf(row);
            values << (value.isEmpty() ? QString(untold) : value);
        }
        made.push_back({name, {}, values});
    };
    using P = const Pulse &;
    texts("utc", [this](int row) { return text(row, Utc); });
    numbers("mjd", "UTC", [](P pulse) { return pulse.infiniteMjd; });
    numbers("mjd_error", "s", [](P pulse) { return pulse.infiniteError; });
    numbers("module", "", [](P pulse) { return pulse.module; });
    numbers("ray", "", [](P pulse) { return pulse.ray; });
    numbers("point", "", [](P pulse) { return pulse.point.value; });
    numbers("dm", "pc/cm^3", [](P pulse) { return pulse.dispersion.value; });
    numbers("dm_error", "pc/cm^3", [](P pulse) { return pulse.dispersion.error; });
    numbers("width", "points", [](P pulse) { return pulse.width; });
    numbers("snr", "", [](P pulse) { return pulse.snr; });
    texts("ra", [this](int row) { return text(row, Alfa); });
    texts("dec", [this](int row) { return text(row, Delta); });
    texts("source", [this](int row) { return text(row, Source); });
    texts("search", [this](int row) { return text(row, Found); });
    texts("verdict", [this](int row) { return Sky::verdictName(verdict(row)); });
    texts("note", [this](int row) { return note(row); });
    return made;
}
