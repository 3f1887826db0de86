#pragma once

#include <QString>

/// Names of recordings and result files, and what they tell about their content.
///
/// A site ("plosh") is one of N0, N1, N2 and N4.
namespace Tools {

/// The site that a path ends in ("..._N1") or names between slashes and underscores
/// ("/N1/"); empty where there is none.
QString ploshFromPath(const QString &path);

/// The site in a file name, between "_" and "_" or "."; empty where there is none.
QString ploshFromFileName(const QString &name);

/// Whether a name says that its content was corrected for the cosine of the declination.
bool isCosCorrected(const QString &name);

/// "/directory/file" of a path, for labels. One longer than 34 characters is broken into two
/// lines. A path with fewer levels comes back unchanged.
QString twoLevelTail(const QString &path);

/// "/directory/directory/file" of a path; one with fewer levels comes back unchanged.
QString threeLevelTail(const QString &path);

/// File of an averaged spectrum, "f<code>_n<count>_av<averaging>.txt". The code of a frequency
/// index sorts those below 1 apart: "0" and the size, from 1 on "1" and the index.
///
/// @param prefix  put in front with "_" unless it is empty
QString spectrumFileName(int frequency, int count, int averaging, const QString &prefix = {});

/// The same without prefix and ending.
QString spectrumBaseName(int frequency, int count, int averaging);

/// The same with the dispersion measure it was computed for.
QString dispersedSpectrumName(int frequency, int count, int averaging, int dispersion);

/// File of a harmonic map.
///
/// @param baseline     "median" or "polinom"; any other gives an empty name
/// @param medianWidth  points; appears in the name for "median" only
QString harmonicMapFileName(const QString &name, int points, int spectrumPoints, int bins,
                            const QString &baseline, int medianWidth);

/// Name of the hourly recording in which a source culminates: ".pnt", or ".pnthr" for a
/// tresolution below 0.09 s. Files are named by the hour they end in, in the time of
/// `timeZone`; past 23 that is an hour of the next day.
///
/// @param date         "yyyy.MM.dd", UTC
/// @param hour         of the culmination, UTC, 0 to 23
/// @param timeZone     hours ahead of UTC
/// @param plosh        number of the site
/// @param tresolution  s
/// @return empty when the date cannot be read
QString dataFileName(const QString &date, int hour, int timeZone, int plosh, double tresolution);

/// Name of the ".pnthr" file of that hour, with the bare number of the site.
QString pnthrFileName(const QString &date, int hour, int timeZone, int plosh);

} // namespace Tools
