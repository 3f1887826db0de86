#pragma once

class PulsarGrafik;
class QMouseEvent;
class QWheelEvent;

/// What a picture above a plot, with the same X axis and the same left and right margins, does with
/// mouse and wheel: the plot gets them.
namespace Plot {

/// A rectangle over the picture is one over the whole height of the plot. What drags the plot
/// along stays at one height.
///
/// @param height  0 for the plot's top, 1 for its bottom
void handOn(const QMouseEvent &event, PulsarGrafik &plot, double height);

/// The event is accepted.
void handOn(QWheelEvent &event, PulsarGrafik &plot);

} // namespace Plot
