#include "forms/profiles/arrivalsmodel.h"

#include <algorithm>
#include <cmath>

void ArrivalsModel::setOutcome(const Profiles::ProfileOutcome &outcome, const QString &site)
{
    beginResetModel();
    table = Profiles::arrivalColumns(outcome, site);
    days.clear();
    for (const Profiles::Arrival &arrival : outcome.arrivals)
        days.push_back(arrival.day);
    endResetModel();
}

void ArrivalsModel::clear()
{
    beginResetModel();
    table.clear();
    days.clear();
    endResetModel();
}

int ArrivalsModel::dayOf(int row) const
{
    return row >= 0 && row < rows() ? days[std::size_t(row)] : -1;
}

int ArrivalsModel::rowOf(int day) const
{
    const auto found = std::find(days.begin(), days.end(), day);
    return found == days.end() ? -1 : int(found - days.begin());
}

TableModel::Column ArrivalsModel::column(int index) const
{
    const Results::Column &own = table[std::size_t(index)];
    const QString title = QString(own.name).replace('_', ' ');
    return {own.unit.isEmpty() ? title : title + ", " + own.unit,
            {},
            std::holds_alternative<std::vector<double>>(own.values)};
}

QString ArrivalsModel::text(int row, int column) const
{
    const Results::Column &own = table[std::size_t(column)];
    if (const auto *const texts = std::get_if<QStringList>(&own.values))
        return texts->at(row);
    const double value = std::get<std::vector<double>>(own.values)[std::size_t(row)];
    if (!std::isfinite(value))
        return "unknown";
    constexpr int mjdDigits = 9;
    return own.name == "arrival_barycentric" ? QString::number(value, 'f', mjdDigits)
                                             : QString::number(value, 'g', 4);
}
