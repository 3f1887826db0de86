#include "forms/transient/periodsmodel.h"

#include "results/reporttext.h"

void PeriodsModel::setSearch(std::shared_ptr<const Timing::PeriodSearch> found)
{
    beginResetModel();
    search = std::move(found);
    endResetModel();
}

TableModel::Column PeriodsModel::column(int index) const
{
    static const std::vector<Column> all = {
        {"Period, s", "The longest of its family, with its error of 68 %", true},
        {"rms / P", "Residuals over the period", true},
        {"Chance", "Probability that random times of the same spread have one as good", true},
        {"Rank", "-log10 of how many as good are expected by chance", true},
        {"H", "Of the phases within the day with the most times, at this one period", true},
        {"Submultiples, s", "Halves, thirds and so on that fit as well"}};
    return all[std::size_t(index)];
}

QString PeriodsModel::text(int row, int column) const
{
    const Timing::PeriodFamily &family = search->families[std::size_t(row)];
    QStringList submultiples;
    switch (column) {
    case 0:
        return ReportText::withError(family.period, family.error);
    case 1:
        return QString::number(family.rmsOverPeriod, 'f', 4);
    case 2:
        return QString::number(family.chance, 'g', 3);
    case 3:
        return QString::number(family.rank(), 'f', 2);
    case 4:
        return QString::number(family.h, 'f', 1);
    default:
        for (const double period : family.submultiples)
            submultiples << QString::number(period, 'g', 6);
        return submultiples.join(", ");
    }
}
