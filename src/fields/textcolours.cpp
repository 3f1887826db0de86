#include "fields/textcolours.h"

#include <QPalette>

namespace TextColours {

bool areLight(const QPalette &palette)
{
    return palette.color(QPalette::WindowText).lightness() >
           palette.color(QPalette::Window).lightness();
}

QColor problem(const QPalette &palette)
{
    return areLight(palette) ? "#ff8a8a" : "#b00020";
}

} // namespace TextColours
