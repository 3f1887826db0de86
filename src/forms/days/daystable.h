#pragma once

#include "analyses/days/daylist.h"
#include "data/recordingset.h"
#include "forms/days/daysmodel.h"

class TableView;

/// The list of days as every form over days shows it.

/// Shows the days by date; a click on the title of a column orders them by it.
void showDaysByDate(TableView *table, DaysModel *days);

/// Columns as wide as a date, a sigma and a value of some digits.
void fitDayColumns(TableView *table);

/// The days that can be used and those that cannot, then the recordings that give none.
///
/// @param directory  that the paths of recordings are told in
std::vector<DayRow> rowsOfDays(const Days::DayList &list, const RecordingSet &set,
                               const QString &directory);

/// The recordings that give no day, with their reasons.
void appendLeftOut(std::vector<DayRow> &rows, const std::vector<Days::LeftOut> &leftOut,
                   const RecordingSet &set, const QString &directory);
