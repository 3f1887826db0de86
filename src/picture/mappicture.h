#pragma once

#include "analyses/sky/skymap.h"
#include "picture/plotexport.h"
#include "picture/zoom.h"

#include <QPointF>
#include <QRect>
#include <QStringList>
#include <memory>
#include <optional>
#include <vector>

/// Maps of the sky as pictures: on the screen, in files of a form and in those of the batch program
/// they are painted by the same function.
namespace Plot {

/// Maps of one kind side by side, one per ray, with colours for significance.
struct MapPicture {
    struct Panel {
        std::shared_ptr<const Sky::SkyMap> map; ///< all panels have as many rows and columns
        QString title;
    };
    std::vector<Panel> panels;
    QString title;
    float high = 1; ///< sigma of the lightest colour; the darkest is that of 0
    Range columns;  ///< in sight; column c stands at index c
    int firstRow = 0;
    int rowCount = 0; ///< in sight, from firstRow on; the lowest stands below
    QString key;      ///< kept in the file, for programs

    bool isEmpty() const { return panels.empty(); }
    const Sky::SkyMap &map() const { return *panels.front().map; }
    int allRows() const { return int(map().rows.size()); }
};

/// The picture of whole maps.
///
/// @param titles  of the panels, one per map
MapPicture mapPicture(const std::vector<std::shared_ptr<const Sky::SkyMap>> &maps,
                      const QStringList &titles, const QString &title);

/// The same, named by what the maps are of.
MapPicture mapPicture(const Sky::SkyPlan &plan,
                      const std::vector<std::shared_ptr<const Sky::SkyMap>> &maps);

/// Where the panels stand in a picture of that size, without their labels.
std::vector<QRect> mapAreas(const MapPicture &picture, const QSize &size);

/// A place in one of the maps.
struct MapPlace {
    int panel = 0;
    int row = 0;
    double column = 0; ///< with fraction
};
std::optional<MapPlace> mapPlaceAt(const MapPicture &picture, const QSize &size,
                                   const QPointF &pixel);

/// The pixels of a row between two columns; of no extent where it is out of sight.
QRectF mapPixels(const MapPicture &picture, const QSize &size, const MapPlace &from,
                 double toColumn);

/// Paints the picture; where the painter has several pixels for one of its units, with these.
void paintMap(QPainter &painter, const MapPicture &picture, const QSize &size);

/// The picture as a drawing for files; it must outlive the drawing.
Drawing mapDrawing(const MapPicture &picture, const QSize &size, int pngScale);

} // namespace Plot
