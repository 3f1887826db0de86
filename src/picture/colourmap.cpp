#include "picture/colourmap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Plot {

namespace {

// Linear light, 0 to 1, as a byte of sRGB (IEC 61966-2-1).
std::uint32_t byteOf(double linear)
{
    const double light = std::clamp(linear, 0.0, 1.0);
    const double encoded =
        light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
    return std::uint32_t(std::lround(255 * encoded));
}

std::uint32_t fromOklab(double lightness, double chroma, double hue)
{
    const double a = chroma * std::cos(hue);
    const double b = chroma * std::sin(hue);
    const auto cube = [](double x) { return x * x * x; };
    const double l = cube(lightness + 0.3963377774 * a + 0.2158037573 * b);
    const double m = cube(lightness - 0.1055613458 * a - 0.0638541728 * b);
    const double s = cube(lightness - 0.0894841775 * a - 1.2914855480 * b);
    return 0xff000000U | byteOf(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s) << 16 |
           byteOf(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s) << 8 |
           byteOf(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s);
}

ColourMap makeColours()
{
    constexpr double degree = 3.14159265358979323846 / 180;
    ColourMap colours = {};
    for (int i = 0; i < colourCount; ++i) {
        const double t = double(i) / (colourCount - 1);
        colours[std::size_t(i)] = fromOklab(0.22 + 0.73 * t, 0.092, (320 - 220 * t) * degree);
    }
    return colours;
}

ColourMap makeGreys()
{
    ColourMap greys = {};
    for (int i = 0; i < colourCount; ++i)
        greys[std::size_t(i)] = fromOklab(1 - double(i) / (colourCount - 1), 0, 0);
    return greys;
}

} // namespace

const ColourMap &colourMap()
{
    static const ColourMap colours = makeColours();
    return colours;
}

const ColourMap &greyMap()
{
    static const ColourMap greys = makeGreys();
    return greys;
}

std::uint32_t colourOfValue(float value, float low, float high, const ColourMap &map)
{
    if (std::isnan(value))
        return noValueColour;
    if (!(high > low))
        return map.front();
    const float place = (value - low) / (high - low) * (colourCount - 1);
    const float limited = std::clamp(place, 0.0f, float(colourCount - 1));
    return map[std::size_t(limited + 0.5f)];
}

} // namespace Plot
