#include "forms/sky/skycandidatesmodel.h"

#include "results/reporttext.h"

#include <cmath>
#include <numbers>

namespace {

constexpr double degree = std::numbers::pi / 180;
constexpr double secondsPerRadian = 12 * 3600 / std::numbers::pi; // of right ascension
constexpr int digits = 8;

QString measuredText(const Sky::Measured &value)
{
    if (!std::isfinite(value.value))
        return "-";
    return std::isfinite(value.error) && value.error > 0
               ? ReportText::withError(value.value, value.error)
               : QString::number(value.value, 'g', digits);
}

QString frequencyText(double frequency)
{
    return std::isfinite(frequency) ? QString::number(frequency, 'g', digits) : "-";
}

// "05:34:31.2 +- 42 s"
QString alfaText(const Sky::Measured &alfa)
{
    QString text = Tools::rightAscensionText(alfa.value);
    if (std::isfinite(alfa.error))
        text += QString(" +- %1 s").arg(alfa.error * secondsPerRadian, 0, 'g', 2);
    return text;
}

QString deltaText(const Sky::Measured &delta)
{
    QString text = Tools::declinationText(delta.value);
    if (std::isfinite(delta.error))
        text += QString(" +- %1 deg").arg(delta.error / degree, 0, 'g', 2);
    return text;
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

TableModel::Column SkyCandidatesModel::column(int index) const
{
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
    return columns[std::size_t(index)];
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
    const bool isCut = column == Marks || column == Note; // where the column is narrow
    if (role == Qt::EditRole || (role == Qt::ToolTipRole && isCut))
        return text(row, column);
    return {};
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
