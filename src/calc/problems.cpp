#include "calc/problems.h"

#include <algorithm>

Problems joinProblems(std::initializer_list<Problems> lists)
{
    Problems all;
    for (const Problems &list : lists) {
        for (const FieldProblem &problem : list) {
            const bool isKnown =
                !problem.field.isEmpty() &&
                std::any_of(all.begin(), all.end(), [&](const FieldProblem &known) {
                    return known.field == problem.field;
                });
            if (!isKnown)
                all.push_back(problem);
        }
    }
    return all;
}
