#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

namespace Tools {
struct RayTables;
}

/// The four calculators without their widgets: what was typed goes in, a report and the texts
/// of the output fields come out. Fields go by the object names they have in the form.
namespace Calculator {

/// What a calculator gives.
struct Answer {
    QString report;       ///< HTML; its classes are 'blue', 'green' and 'red'
    QStringList problems; ///< what is wrong, as plain text, one sentence each
    QStringList failing;  ///< inputs that were refused; with any of them nothing was computed
    QMap<QString, QString> outputs; ///< texts by field; an empty one where there is no result
    QString command; ///< call of the batch program that gives the same; empty: there is none
};

/// HTML shown before the first calculation.
QString helpText();

/// "Get delta from ray". Names a problem of the tables as well.
struct RayInput {
    QString plosh;                      ///< "N0" to "N4"; empty: not selected
    int module = 0;                     ///< from 1; 0: not selected
    int ray = 0;                        ///< the same
    QMap<QString, QString> unread = {}; ///< fields whose text is refused, with the line to report
};
Answer deltaFromRay(const RayInput &input, const Tools::RayTables &tables);

/// "From catalog to ZRT".
struct CatalogInput {
    QString alfa;  ///< "hh:mm:ss"
    QString delta; ///< "dd:mm:ss", with any separators; what follows is left out
    QString date;  ///< "dd.mm.yyyy", UTC
    QString plosh; ///< its last character is the number of the site
    QString tres;  ///< s
};
Answer catalogToZrt(const CatalogInput &input);

/// "From ZRT to catalog".
struct ZrtInput {
    QString date;  ///< "dd.mm.yyyy", UTC
    QString time;  ///< "hh:mm:ss", the seconds with or without decimals
    QString point; ///< sample that the estimate of alfa counts from that time on
    QString delta; ///< declination of the date, "dd:mm:ss", with or without decimals
    QString tres;  ///< s
};
Answer zrtToCatalog(const ZrtInput &input);

/// Point number of a time, from its hour on; empty where time or tres cannot be read.
QString pointOfTime(const QString &time, const QString &tres);

/// The time with the minutes and seconds at which a point stands, with as many decimals as
/// lead back to the point; empty where something cannot be read or the point lies beyond the
/// hour.
QString timeOfPoint(const QString &time, const QString &point, const QString &tres);

/// "FFA info".
struct FfaInput {
    QString points;
    QString tres;      ///< s
    QString periodMin; ///< s
    QString periodMax; ///< s
    int binsMin = 0;
    int binsMax = 0;
    double ducyMax = 0;
    double wtsp = 0;
    QMap<QString, QString> unread = {}; ///< fields whose text is refused, with the line to report
};

/// Periods are listed for at most so many rows of the periodogram.
inline constexpr int mostRowsShown = 10000;

/// @param withPeriods  lists all periods and fold bins as well
Answer ffaInfo(const FfaInput &input, bool withPeriods);

/// Shortest period that can be searched with so many bins, s; empty where tres is no number.
QString shortestPeriod(int binsMin, const QString &tres);

} // namespace Calculator
