#include "batch/axis.h"

#include <algorithm>
#include <array>

namespace Batch {

using namespace Results;

namespace {

struct AxisName {
    PulsarAxis::Kind kind;
    const char *name;
    const char *unit;
};

constexpr std::array<AxisName, 4> axisNames = {{
    {PulsarAxis::Kind::Points, "point", ""},
    {PulsarAxis::Kind::Frequency, "frequency", "Hz"},
    {PulsarAxis::Kind::Dispersion, "dispersion", "pc/cm^3"},
    {PulsarAxis::Kind::Phase, "phase", ""},
}};

const AxisName &nameOf(PulsarAxis::Kind kind)
{
    return *std::find_if(axisNames.begin(), axisNames.end(),
                         [=](const AxisName &name) { return name.kind == kind; });
}

QString withUnit(const AxisName &name)
{
    return *name.unit ? QString("%1 [%2]").arg(name.name, name.unit) : QString(name.name);
}

} // namespace

void addAxis(const PulsarAxis &axis, std::vector<HeaderLine> &lines)
{
    lines.push_back({"x", withUnit(nameOf(axis.kind))});
    lines.push_back({"x_first", numberText(axis.first)});
    lines.push_back({"x_step", numberText(axis.step)});
    if (axis.kind == PulsarAxis::Kind::Phase)
        lines.push_back({"x_period", numberText(axis.period) + " s"});
}

Column axisColumn(const PulsarAxis &axis, int rows)
{
    auto values = std::vector<double>(std::size_t(rows));
    for (int row = 0; row < rows; ++row)
        values[std::size_t(row)] = axis.first + row * axis.step;
    return {nameOf(axis.kind).name, nameOf(axis.kind).unit, values};
}

PulsarAxis axisOf(const std::vector<HeaderLine> &lines)
{
    PulsarAxis axis;
    const QString name = valueOf(lines, "x");
    for (const AxisName &known : axisNames) {
        if (name == withUnit(known))
            axis.kind = known.kind;
    }
    if (name.isEmpty())
        return axis;
    axis.first = valueOf(lines, "x_first").toDouble();
    axis.step = valueOf(lines, "x_step").toDouble();
    axis.period = valueOf(lines, "x_period").section(' ', 0, 0).toDouble();
    return axis;
}

} // namespace Batch
