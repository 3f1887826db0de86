#pragma once

#include "results/resulttable.h"

#include <utility>
#include <vector>

class QWidget;

/// Asks for a name and writes tables beside each other, all of them or none, each with its own word
/// behind that name. Tells the user what failed or was written.
///
/// @param form    the dialog belongs to it
/// @param name    offered
/// @param tables  with the word of each
void askAndSaveTables(QWidget *form, const QString &title, const QString &name,
                      const std::vector<std::pair<QString, Results::ResultTable>> &tables);
