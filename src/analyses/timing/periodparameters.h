#pragma once

#include "analyses/timing/arrivaltimes.h"
#include "calc/analysis.h"
#include "calc/fieldproblem.h"

/// What a user asks for of arrival times: "Period from arrival times".
namespace Timing {

struct PeriodParameters {
    QString times;            ///< typed, in place of a file; between commas, semicolons or lines
    QString unit = automatic; ///< of plain numbers, see parseTimes()
    double mjd = 0;           ///< days that plain numbers count from
    QString source;           ///< name in the catalogue of known pulsars
    QString alfa;             ///< of a source, of 2000, "hh:mm:ss"
    QString delta;            ///< "dd:mm:ss"
    bool earthMotion = true;  ///< turn UTC to the barycentre where the direction is known
    double periodMin = 0.3;   ///< s
    double periodMax = 30;    ///< s
    double chance = 0.001;    ///< share of sets of random times of which a period may be claimed
    int simulated = 100;      ///< sets of random times that chance is told by
    double dayGap = 6;        ///< h: times farther apart are of different days
};

using PeriodField = Field<PeriodParameters>;

struct PeriodAnalysis : Analysis<PeriodParameters> {
    QString manual;   ///< of the command, in lines of the help
    QString examples; ///< the same
};

/// All parameters, in the order of the help and of the headers of tables.
const std::vector<PeriodField> &periodFields();
const PeriodAnalysis &periodAnalysis();

/// Everything for which parameters are refused, whatever the times are.
std::vector<FieldProblem> problemsOf(const PeriodParameters &parameters);

/// The direction that was asked for; nothing where none was.
std::optional<Tools::SkyPosition> directionOf(const PeriodParameters &parameters);

/// Times of UTC at the barycentre, where the parameters want that and they or the times tell the
/// direction; a remark says so where nothing does.
ArrivalTimes turnedTimes(ArrivalTimes times, const PeriodParameters &parameters);

/// Times of parameters, typed or the text of a file, as the search takes them.
ArrivalTimes timesFor(const PeriodParameters &parameters, const QByteArray &file);

/// The call of the batch program that computes the same, ready for a shell.
///
/// @param file  empty where the times are typed
QString periodCommand(const PeriodParameters &parameters, const QString &file);

} // namespace Timing
