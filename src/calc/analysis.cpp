#include "calc/analysis.h"

#include "base/shellword.h"
#include "results/reporttext.h"

namespace {

template <typename... Visitors>
struct Overloaded : Visitors... {
    using Visitors::operator()...;
};

} // namespace

namespace Tools {

QStringList commandWords(const FieldValue &value)
{
    return std::visit(
        Overloaded{[](bool) { return QStringList(); },
                   [](const QString &text) { return QStringList(shellWord(text)); },
                   [](const std::array<double, 4> &numbers) {
                       QStringList texts;
                       for (const double number : numbers)
                           texts << ReportText::exact(number);
                       return texts;
                   },
                   [](auto number) { return QStringList(ReportText::exact(double(number))); }},
        value);
}

} // namespace Tools
