#include "forms/days/daystable.h"

#include "fields/tableview.h"

#include <QDir>
#include <QHeaderView>

void showDaysByDate(TableView *table, DaysModel *days)
{
    table->showSorted(days);
    table->sortByColumn(DaysModel::Date, Qt::AscendingOrder);
    table->verticalHeader()->hide();
    table->horizontalHeader()->setStretchLastSection(true);
    fitDayColumns(table);
}

void fitDayColumns(TableView *table)
{
    const QFontMetrics font = table->fontMetrics();
    constexpr int checkBoxWidth = 40;
    constexpr int margins = 14;
    table->setColumnWidth(DaysModel::Date,
                          font.horizontalAdvance("2015-04-01 12:00:00") + checkBoxWidth);
    table->setColumnWidth(DaysModel::Sigma, 6 * font.averageCharWidth() + margins);
    table->setColumnWidth(DaysModel::Power, 7 * font.averageCharWidth() + margins);
}

std::vector<DayRow> rowsOfDays(const Days::DayList &list, const RecordingSet &set,
                               const QString &directory)
{
    std::vector<DayRow> rows;
    for (const Days::Day &day : list.days) {
        DayRow row;
        row.begin = day.begin;
        row.canCount = day.reason.isEmpty();
        row.reason = day.reason;
        rows.push_back(row);
    }
    appendLeftOut(rows, list.leftOut, set, directory);
    return rows;
}

void appendLeftOut(std::vector<DayRow> &rows, const std::vector<Days::LeftOut> &leftOut,
                   const RecordingSet &set, const QString &directory)
{
    for (const Days::LeftOut &left : leftOut) {
        DayRow row;
        row.name = QDir(directory).relativeFilePath(set.entries[std::size_t(left.recording)].path);
        row.canCount = false;
        row.reason = left.reason;
        rows.push_back(row);
    }
}
