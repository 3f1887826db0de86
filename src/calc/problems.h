#pragma once

#include "calc/fieldproblem.h"

#include <initializer_list>
#include <vector>

/// Everything for which parameters are refused, in the order of the checks.
using Problems = std::vector<FieldProblem>;

/// One list of several. A field stands for the first of its problems; those of no field all stay.
Problems joinProblems(std::initializer_list<Problems> lists);
