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

void LinesModel::setFfa(bool isFfa)
{
    beginResetModel();
    areOfFfa = isFfa;
    endResetModel();
}

void LinesModel::setLines(std::vector<Days::FourierLine> newLines)
{
    beginResetModel();
    all = std::move(newLines);
    endResetModel();
}

TableModel::Column LinesModel::column(int index) const
{
    static const Column told[PlaceCount] = {
        {"Sigma", "Significance after all trials", true},
        {"Hz", "Frequency at the barycentre, or at the telescope where the direction is unknown",
         true},
        {"Period, s", "Period of that frequency", true},
        {"H", "Harmonics that are summed", true},
        {"Marks", "What speaks against a pulsar, and known pulsars of this period"}};
    static const Column width = {"W", "Width of the pulse, phase bins", true};
    return index == Harmonics && areOfFfa ? width : told[index];
}

QString LinesModel::text(int row, int column) const
{
    const Days::FourierLine &line = all[std::size_t(row)];
    switch (column) {
    case Sigma:
        return sigmaText(line.sigma);
    case Frequency:
        return number(DayTexts::shownFrequency(line));
    case Period:
        return number(line.period());
    case Harmonics:
        return QString::number(areOfFfa ? line.width : line.harmonics);
    default:
        return line.marks().join("; ");
    }
}

QVariant LinesModel::look(int row, int /*column*/, int role) const
{
    const QStringList marks = all[std::size_t(row)].marks();
    return role == Qt::ToolTipRole && !marks.isEmpty() ? QVariant(marks.join("\n")) : QVariant();
}

namespace DayTexts {

namespace {

QString strengthText(const Days::FourierLine &line)
{
    if (line.width > 0)
        return QString("Period %1 s, width %2 of %3 bins, mean S/N %4")
            .arg(number(line.period()))
            .arg(line.width)
            .arg(line.foldBins)
            .arg(line.power, 0, 'f', 2);
    return QString(line.harmonics == 1 ? "Period %1 s, %2 harmonic, mean power %3"
                                       : "Period %1 s, %2 harmonics, mean power %3")
        .arg(number(line.period()))
        .arg(line.harmonics)
        .arg(line.power, 0, 'f', 2);
}

} // namespace

double shownFrequency(const Days::FourierLine &line)
{
    return std::isfinite(line.barycentric) ? line.barycentric : line.telescope;
}

QString lineText(const Days::FourierLine &line, const Days::FourierStack &stack)
{
    QStringList lines;
    if (std::isfinite(line.barycentric))
        lines << QString("%1 Hz at the barycentre").arg(number(line.barycentric));
    lines << QString("%1 Hz at the telescope").arg(number(line.telescope)) << strengthText(line)
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
