#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <vector>

/// Declinations of the telescope's beams. The program brings nominal values; a text file in
/// the user's configuration takes their place.
namespace Tools {

/// What deltaFromRay gives for a beam that is in no table, degrees.
inline constexpr double noDeclination = -1000;

struct RayDeclination {
    int module;
    int ray;
    double declination; ///< degrees
};

struct RayTables {
    QHash<QString, double> byKey;   ///< degrees of N0, N1 and N2, key "m<module>_r<ray>_p<site>"
    std::vector<RayDeclination> n4; ///< beams of N4
    QString problem; ///< why a file was not used, for the user to read; empty: nothing is wrong
};

/// Reads the lines "site module ray declination" of a table: a site of N0, N1, N2 and N4, a
/// module from 1 to 6, a ray from 1 to 8, degrees from -90 to 90, every beam at most once. What
/// follows "#" is left out.
///
/// @return empty tables and a problem with its line number for any other line; a problem as
///         well where no beam is given at all
RayTables parseRayTables(const QByteArray &text);

/// The tables of a file, or the nominal ones where it does not exist. Those are given as well,
/// with the problem named, where it cannot be used.
RayTables readRayTables(const QString &path);

/// The user's own file.
QString rayTablesPath();

/// The tables in use, read from rayTablesPath() at the first call.
const RayTables &rayTables();

/// Declination of a beam, degrees; noDeclination for a beam or site ("N0" to "N4") that is in
/// no table.
double deltaFromRay(const RayTables &tables, int module, int ray, const QString &plosh);

/// The same by the tables in use.
double deltaFromRay(int module, int ray, const QString &plosh);

} // namespace Tools
