#include "calc/analysis.h"

#include "base/numbertext.h"
#include "base/shellword.h"

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
                           texts << exactText(number);
                       return texts;
                   },
                   [](auto number) { return QStringList(exactText(double(number))); }},
        value);
}

QString headerText(const FieldValue &value)
{
    return std::visit(Overloaded{[](bool is) { return QString(is ? "yes" : "no"); },
                                 [](const QString &text) { return text; },
                                 [](const std::array<double, 4> &numbers) {
                                     QStringList texts;
                                     for (const double number : numbers)
                                         texts << exactText(number);
                                     return texts.join(' ');
                                 },
                                 [](int number) { return QString::number(number); },
                                 [](double number) { return exactText(number); }},
                      value);
}

} // namespace Tools
