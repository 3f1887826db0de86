#include "forms/days/daysmodel.h"

#include "base/timetext.h"

#include <QColor>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>
#include <cmath>

namespace {

constexpr int digits = 4; // significant, of sigma
constexpr int headerDigits = 6;

// The same digits for all days, so that they can be compared at a glance.
QString sigmaText(double sigma)
{
    if (!(sigma > 0))
        return {};
    const int decimals = digits - 1 - int(std::floor(std::log10(sigma)));
    return decimals >= 0 && decimals <= 2 * digits ? QString::number(sigma, 'f', decimals)
                                                   : QString::number(sigma, 'g', digits);
}

QString textOf(const DayRow &day, int column)
{
    switch (column) {
    case DaysModel::Date:
        return day.begin.isValid() ? textOfTime(day.begin, "yyyy-MM-dd hh:mm:ss") : day.name;
    case DaysModel::Sigma:
        return sigmaText(day.sigma);
    case DaysModel::Power:
        return std::isfinite(day.power) ? QString::number(day.power, 'f', 1) : QString();
    default:
        return day.reason;
    }
}

// Paler than the others, but legible on any ground.
QColor paleText()
{
    QColor colour = QGuiApplication::palette().color(QPalette::Text);
    constexpr double opacity = 0.6;
    colour.setAlphaF(opacity);
    return colour;
}

} // namespace

void DaysModel::setRows(std::vector<DayRow> newRows)
{
    beginResetModel();
    days = std::move(newRows);
    endResetModel();
}

void DaysModel::updateRows(const std::vector<DayRow> &newRows)
{
    if (newRows.size() != days.size()) {
        setRows(newRows);
        return;
    }
    days = newRows;
    if (!days.empty())
        emit dataChanged(index(0, 0), index(int(days.size()) - 1, PlaceCount - 1));
}

void DaysModel::setPowers(const std::vector<double> &powers, double newFrequency)
{
    const std::size_t count = std::min(powers.size(), days.size());
    if (frequency != newFrequency) {
        frequency = newFrequency;
        emit headerDataChanged(Qt::Horizontal, Power, Power);
    }
    bool isChanged = false;
    for (std::size_t row = 0; row < count; ++row) {
        isChanged = isChanged || days[row].power != powers[row];
        days[row].power = powers[row];
    }
    if (isChanged)
        emit dataChanged(index(0, Power), index(int(count) - 1, Power));
}

TableModel::Column DaysModel::column(int index) const
{
    switch (index) {
    case Date:
        return {"Day, UTC"};
    case Sigma:
        return {"Sigma", "Standard deviation of the series less its base line", true};
    case Power:
        return {words.value,
                frequency > 0
                    ? words.valueTip.arg(QString("%1 Hz").arg(frequency, 0, 'g', headerDigits))
                    : QString(words.valueTip).remove("at %1, "),
                true};
    default:
        return {"Reason"};
    }
}

QString DaysModel::text(int row, int column) const
{
    return textOf(days[std::size_t(row)], column);
}

QVariant DaysModel::sortValue(int row, int column) const
{
    const DayRow &day = days[std::size_t(row)];
    switch (column) {
    case Date:
        // Recordings that give no day follow the days.
        return day.begin.isValid() ? textOfTime(day.begin, "yyyy-MM-dd hh:mm:ss.zzz")
                                   : "recording " + day.name;
    case Sigma:
        return day.sigma;
    case Power:
        return day.power;
    default:
        return day.reason;
    }
}

QVariant DaysModel::look(int row, int column, int role) const
{
    const DayRow &day = days[std::size_t(row)];
    switch (role) {
    case Qt::ToolTipRole:
        return day.reason.isEmpty() ? text(row, column) : day.reason;
    case Qt::CheckStateRole:
        if (column != Date || !day.canCount || day.isFixed)
            return {};
        return day.isOn ? Qt::Checked : Qt::Unchecked;
    case Qt::ForegroundRole:
        return day.canCount && day.isOn ? QVariant() : QVariant(paleText());
    default:
        return {};
    }
}

bool DaysModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid() || index.column() != Date)
        return false;
    DayRow &day = days[std::size_t(index.row())];
    const bool isOn = value.toInt() == Qt::Checked;
    if (!day.canCount || day.isFixed || day.isOn == isOn)
        return false;
    day.isOn = isOn;
    emit dataChanged(this->index(index.row(), 0), this->index(index.row(), PlaceCount - 1));
    emit switched(index.row(), isOn);
    return true;
}

Qt::ItemFlags DaysModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags common = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    if (!index.isValid() || index.column() != Date)
        return common;
    const DayRow &day = days[std::size_t(index.row())];
    return !day.canCount || day.isFixed ? common : common | Qt::ItemIsUserCheckable;
}
