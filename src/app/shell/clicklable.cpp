#include "app/shell/clicklable.h"

void ClickLable::mousePressEvent(QMouseEvent *)
{
    emit clicked();
}

void ClickLable::enterEvent(QEvent *)
{
    if (styleSheet() == "color: black")
        setStyleSheet("color: blue");
    else if (styleSheet() == "color: red")
        setStyleSheet("color: darkMagenta");
    setCursor(Qt::PointingHandCursor);
}

void ClickLable::leaveEvent(QEvent *)
{
    if (styleSheet() == "color: blue")
        setStyleSheet("color: black");
    else if (styleSheet() == "color: darkMagenta")
        setStyleSheet("color: red");
}
