#include "simulator/optionreading.h"

#include "coords/skyposition.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

bool readAngle(double angle, double *radians)
{
    *radians = angle;
    return std::isfinite(angle);
}

bool readValue(const QString &text, Target target)
{
    bool good = false;
    if (int **const number = std::get_if<int *>(&target))
        **number = text.toInt(&good);
    else if (quint32 **const natural = std::get_if<quint32 *>(&target))
        **natural = text.toUInt(&good);
    else if (double **const real = std::get_if<double *>(&target))
        **real = text.toDouble(&good);
    else if (const auto *const alfa = std::get_if<RightAscension>(&target))
        good = readAngle(Tools::rightAscensionOf(text), alfa->radians);
    else
        good = readAngle(Tools::declinationOf(text), std::get<Declination>(target).radians);
    return good;
}

QString kindOf(const Target &target)
{
    if (std::holds_alternative<RightAscension>(target))
        return "right ascension like 05:34:32";
    if (std::holds_alternative<Declination>(target))
        return "declination like 22:00:52";
    return "number it can take";
}

} // namespace

QString firstProblem(const std::vector<QString> &answers)
{
    const auto found = std::find_if(answers.begin(), answers.end(),
                                    [](const QString &answer) { return !answer.isEmpty(); });
    return found == answers.end() ? QString() : *found;
}

QString readOption(const QCommandLineParser &parser, const QString &name, Target target)
{
    if (!parser.isSet(name) || readValue(parser.value(name), target))
        return {};
    return QString("--%1: \"%2\" is not a %3.").arg(name, parser.value(name), kindOf(target));
}

QString readFields(const QString &option, const QString &text, std::initializer_list<Field> fields)
{
    QStringList keys;
    for (const Field &field : fields)
        keys << field.key;
    for (const QString &item : text.split(',', Qt::SkipEmptyParts)) {
        const QString key = item.section('=', 0, 0).trimmed();
        const QString value = item.section('=', 1).trimmed();
        const int index = int(keys.indexOf(key));
        if (index < 0)
            return QString("--%1: \"%2\" is unknown; it takes %3.")
                .arg(option, key, keys.join(", "));
        const Target target = (fields.begin() + index)->target;
        if (!readValue(value, target))
            return QString("--%1: %2=\"%3\" is not a %4.").arg(option, key, value, kindOf(target));
    }
    return {};
}

} // namespace Simulator
