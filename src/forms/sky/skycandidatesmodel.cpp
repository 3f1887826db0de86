#include "forms/sky/skycandidatesmodel.h"

#include "results/reporttext.h"

#include <cmath>
#include <numbers>

namespace {

constexpr double degree = std::numbers::pi / 180;
constexpr double secondsPerRadian = 12 * 3600 / std::numbers::pi; // of right ascension
constexpr int digits = 8;

constexpr char untold[] = "-";

// " +- 42 s"; the unit is left out with an error that is not told.
QString errorText(double error, const QString &unit)
{
    return QString(" +- %1").arg(std::isfinite(error) ? QString::number(error, 'g', 2) + unit
                                                      : QString(untold));
}

QString measuredText(const Sky::Measured &value)
{
    if (!std::isfinite(value.value))
        return untold;
    return std::isfinite(value.error) && value.error > 0
               ? ReportText::withError(value.value, value.error)
               : QString::number(value.value, 'g', digits) + errorText(value.error, {});
}

QString frequencyText(double frequency)
{
    return std::isfinite(frequency) ? QString::number(frequency, 'g', digits) : untold;
}

// "05:34:31.2 +- 42 s"
QString alfaText(const Sky::Measured &alfa)
{
    return std::isfinite(alfa.value) ? Tools::rightAscensionText(alfa.value) +
                                           errorText(alfa.error * secondsPerRadian, " s")
                                     : untold;
}

QString deltaText(const Sky::Measured &delta)
{
    return std::isfinite(delta.value)
               ? Tools::declinationText(delta.value) + errorText(delta.error / degree, " deg")
               : untold;
}

QString textOf(const Sky::SkyCandidate &candidate, int column)
{
    using Model = SkyCandidatesModel;
    switch (column) {
    case Model::VerdictPlace:
        return candidate.verdict == Sky::Verdict::None ? QString()
                                                       : Sky::verdictName(candidate.verdict);
    case Model::Sigma:
        return QString::number(candidate.sigma, 'f', 1);
    case Model::Period:
        return measuredText(candidate.period);
    case Model::Barycentric:
        return frequencyText(candidate.barycentric);
    case Model::Telescope:
        return frequencyText(candidate.telescope);
    case Model::Dispersion:
        return measuredText(candidate.dispersion);
    case Model::Alfa:
        return alfaText(candidate.alfa);
    case Model::Delta:
        return deltaText(candidate.delta);
    case Model::Harmonics:
        return QString::number(candidate.harmonics);
    case Model::DaysPlace:
        return QString::number(candidate.days);
    case Model::Marks:
        return candidate.marks().join(", ");
    default:
        return candidate.note;
    }
}

} // namespace

SkyCandidatesModel::SkyCandidatesModel(bool isFfa, QObject *parent)
    : TableModel(parent), areOfFfa(isFfa)
{}

TableModel::Column SkyCandidatesModel::column(int index) const
{
    static const Column width = {"Width", "Width of the pulse, phase bins", true};
    static const std::vector<Column> columns = {
        {"Verdict", "accept, reject or unsure: keys A, R and U"},
        {"Sigma", "Significance after all trials of the search", true},
        {"Period, s", "At the barycentre, where the direction of the beam is known", true},
        {"f bary, Hz", "Frequency at the barycentre of the solar system", true},
        {"f tel, Hz", "Frequency at the telescope, mean of the days", true},
        {"DM, pc/cm^3", "Dispersion measure", true},
        {"RA", "Right ascension of 2000", true},
        {"Dec", "Declination of 2000", true},
        {"Harm.", "Harmonics that are summed", true},
        {"Days", "Days in the stack", true},
        {"Marks", "Known pulsars, what it is related to, and what speaks against it"},
        {"Note", "F2 or a double click changes it"}};
    return index == Harmonics && areOfFfa ? width : columns[std::size_t(index)];
}

QString SkyCandidatesModel::text(int row, int column) const
{
    return textOf(shown.candidates[std::size_t(row)], column);
}

QVariant SkyCandidatesModel::sortValue(int row, int column) const
{
    const Sky::SkyCandidate &candidate = shown.candidates[std::size_t(row)];
    switch (column) {
    case VerdictPlace:
        return int(candidate.verdict);
    case Sigma:
        return candidate.sigma;
    case Period:
        return candidate.period.value;
    case Barycentric:
        return candidate.barycentric;
    case Telescope:
        return candidate.telescope;
    case Dispersion:
        return candidate.dispersion.value;
    case Alfa:
        return candidate.alfa.value;
    case Delta:
        return candidate.delta.value;
    default:
        return TableModel::sortValue(row, column);
    }
}

QVariant SkyCandidatesModel::look(int row, int column, int role) const
{
    if (role == Qt::ToolTipRole) {
        const QString reason = reasonOf(shown.candidates[std::size_t(row)], column);
        if (!reason.isEmpty())
            return reason;
    }
    const bool isCut = column == Marks || column == Note; // where the column is narrow
    if (role == Qt::EditRole || (role == Qt::ToolTipRole && isCut))
        return text(row, column);
    return {};
}

// Why a place, or its error, is not told; empty where it is.
QString SkyCandidatesModel::reasonOf(const Sky::SkyCandidate &candidate, int column) const
{
    const bool isPlace = column == Alfa || column == Delta;
    if (!isPlace && column != Dispersion)
        return {};
    const Sky::Measured &value = column == Dispersion ? candidate.dispersion
                                 : column == Alfa     ? candidate.alfa
                                                      : candidate.delta;
    if (isPlace && !std::isfinite(value.value))
        return "Where the beam points is not known: neither the folder nor the names of the "
               "recordings tell the site (N0 to N4)";
    if (std::isfinite(value.error))
        return {};
    if (areOfFfa)
        return "That of the strongest stack. Folds tell no error: where single days show a pulsar, "
               "stacks a little off stand as high";
    return QString("There is one %1 only, or its neighbours are too weak to tell the error")
        .arg(column == Dispersion ? "dispersion"
             : column == Alfa     ? "stretch"
                                  : "ray");
}

void SkyCandidatesModel::setTable(Sky::CandidatesTable newTable)
{
    beginResetModel();
    shown = std::move(newTable);
    endResetModel();
}

void SkyCandidatesModel::decide(int row, Sky::Verdict verdict, const QString &note)
{
    if (row < 0 || row >= rows())
        return;
    Sky::setVerdict(shown, row, verdict, note);
    emit dataChanged(index(row, 0), index(row, PlaceCount - 1));
    emit decided(row);
}

void SkyCandidatesModel::setVerdict(int row, Sky::Verdict verdict)
{
    if (row >= 0 && row < rows())
        decide(row, verdict, shown.candidates[std::size_t(row)].note);
}

void SkyCandidatesModel::setNote(int row, const QString &note)
{
    if (row >= 0 && row < rows())
        decide(row, shown.candidates[std::size_t(row)].verdict, note);
}

bool SkyCandidatesModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !index.isValid() || index.column() != Note ||
        value.toString() == shown.candidates[std::size_t(index.row())].note)
        return false;
    setNote(index.row(), value.toString());
    return true;
}

Qt::ItemFlags SkyCandidatesModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags common = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    return index.isValid() && index.column() == Note ? common | Qt::ItemIsEditable : common;
}
