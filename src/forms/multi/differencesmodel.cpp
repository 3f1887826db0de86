#include "forms/multi/differencesmodel.h"

#include "analyses/compare/comparetables.h"
#include "base/timetext.h"

void DifferencesModel::setComparison(std::shared_ptr<const Compare::CompareProducts> newProducts,
                                     std::shared_ptr<const Compare::Comparison> newComparison)
{
    beginResetModel();
    products = std::move(newProducts);
    comparison = std::move(newComparison);
    endResetModel();
}

const Compare::ListedDifference &DifferencesModel::difference(int row) const
{
    return comparison->list[std::size_t(row)];
}

int DifferencesModel::rows() const
{
    return comparison ? int(comparison->list.size()) : 0;
}

TableModel::Column DifferencesModel::column(int index) const
{
    static const Column told[PlaceCount] = {
        {"Day", "UTC date of the day"},
        {"Sidereal", "Sidereal time at the telescope of the first point"},
        {"S/N",
         "Over the scatter that such boxcars have on most days; below 0 where it lies lower than "
         "the "
         "others",
         true},
        {"Width, s", "Width of the boxcar that shows it best", true},
        {"Rays", "Other rays of the module that have it as well, 4 sigma and more, with their S/N"},
        {"By chance", "Such differences, or stronger ones, that noise has in all days at most",
         true}};
    return told[index];
}

QString DifferencesModel::text(int row, int column) const
{
    const Compare::ListedDifference &one = difference(row);
    switch (column) {
    case Date:
        return textOfTime(products->plan.utcAt(one.day, one.first), "yyyy-MM-dd");
    case Sidereal:
        return Compare::siderealText(products->plan.siderealTimeAt(one.first));
    case Snr:
        return QString::number(one.snr, 'f', 1);
    case Width:
        return QString::number(one.width * products->plan.days.list.tresolution, 'g', 3);
    case Rays:
        return Compare::raysText(one.rays);
    default:
        return QString::number(one.byChance, 'g', 2);
    }
}

QVariant DifferencesModel::sortValue(int row, int column) const
{
    const Compare::ListedDifference &one = difference(row);
    switch (column) {
    case Date:
        return products->plan.utcAt(one.day, one.first).toMSecsSinceEpoch();
    case Snr:
        return one.snr;
    case Width:
        return one.width;
    case Rays:
        return qulonglong(one.rays.size());
    case ByChance:
        return one.byChance;
    default:
        return text(row, column);
    }
}
