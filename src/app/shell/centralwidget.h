#pragma once

class QWidget;

/// Empties the main window's central widget: the form that stands there is destroyed with
/// its plot and panels, and the layout with them. The title of the window is the program's again.
void emptyCentralWidget();

/// Shows a form in the emptied central widget: the form at its own width, the plot taking
/// the room, the panel at its own width. A form without a plot takes the room itself. The layout
/// owns all three from here on. The path that a PathLabel of the form shows gives the window its
/// title. The keyboard reaches the plot after all fields of the two.
void fillCentralWidget(QWidget *form, QWidget *plot, QWidget *panel);
