#include "forms/days/linesmodel.h"

#include <cmath>

namespace {

constexpr int digits = 7; // significant, of frequencies and periods

QString number(double value)
{
    return QString::number(value, 'g', digits);
}

QString sigmaText(double sigma)
{
    return std::isfinite(sigma) ? QString::number(sigma, 'f', 1) : QString("none");
}

} // namespace

void LinesModel::setLines(std::vector<Days::FourierLine> newLines)
{
    beginResetModel();
    all = std::move(newLines);
    endResetModel();
}

int LinesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(all.size());
}

int LinesModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LinesModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Days::FourierLine &line = all[std::size_t(index.row())];
    if (role == Qt::TextAlignmentRole && index.column() != Marks)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role == Qt::ToolTipRole)
        return line.marks().isEmpty() ? QVariant() : QVariant(line.marks().join("\n"));
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case Sigma:
        return sigmaText(line.sigma);
    case Frequency:
        return number(DayTexts::shownFrequency(line));
    case Period:
        return number(line.period());
    case Harmonics:
        return line.harmonics;
    default:
        return line.marks().join("; ");
    }
}

QVariant LinesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section >= ColumnCount)
        return {};
    const char *const names[ColumnCount] = {"Sigma", "Hz", "Period, s", "H", "Marks"};
    const char *const tips[ColumnCount] = {
        "Significance of the harmonic sum after all trials",
        "Frequency at the barycentre, or at the telescope where the direction is unknown",
        "Period of that frequency", "Harmonics that are summed",
        "What speaks against a pulsar, and known pulsars of this period"};
    if (role == Qt::DisplayRole)
        return names[section];
    return role == Qt::ToolTipRole ? QVariant(tips[section]) : QVariant();
}

namespace DayTexts {

double shownFrequency(const Days::FourierLine &line)
{
    return std::isfinite(line.barycentric) ? line.barycentric : line.telescope;
}

QString lineText(const Days::FourierLine &line, const Days::FourierStack &stack)
{
    QStringList lines;
    if (std::isfinite(line.barycentric))
        lines << QString("%1 Hz at the barycentre").arg(number(line.barycentric));
    lines << QString("%1 Hz at the telescope").arg(number(line.telescope))
          << QString(line.harmonics == 1 ? "Period %1 s, %2 harmonic, mean power %3"
                                         : "Period %1 s, %2 harmonics, mean power %3")
                 .arg(number(line.period()))
                 .arg(line.harmonics)
                 .arg(line.power, 0, 'f', 2)
          << QString("Sigma %1 of %2 days, of all %3")
                 .arg(sigmaText(line.sigma))
                 .arg(stack.days)
                 .arg(sigmaText(line.sigmaAll));
    if (stack.days > 1)
        lines << QString("Halves %1 and %2; without the strongest %3")
                     .arg(sigmaText(line.firstHalf), sigmaText(line.secondHalf),
                          sigmaText(line.withoutStrongest));
    lines += line.marks();
    return lines.join('\n');
}

} // namespace DayTexts
