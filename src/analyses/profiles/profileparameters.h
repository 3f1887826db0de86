#pragma once

#include "analyses/days/dayplace.h"
#include "analyses/profiles/ephemeris.h"
#include "analyses/profiles/profileday.h"
#include "analyses/profiles/profilestack.h"
#include "calc/analysis.h"
#include "calc/fieldproblem.h"

/// What a user asks for of the profiles of many days: "Average profiles - periods" and "Average
/// profiles - dispersions".
namespace Profiles {

struct ProfileParameters : Days::DayPlace {
    double dispersion = -1;     ///< pc/cm^3; below 0: that of the .par file or of the catalogue
    QString noise = "polinom5"; ///< names of PulsarParameters::noise
    bool removesJumps = false;
    double period = 0;     ///< s, barycentric; 0: by the frequency, the file or the catalogue
    double frequency = 0;  ///< F0, Hz
    double derivative = 0; ///< F1, s^-2
    double epoch = 0;      ///< MJD of both; 0: the midnight nearest to the first day
    QString parFile;
    int bins = 64;
    QString align = "template"; ///< "template", "ephemeris" or "none"
    bool normalise = true;
    bool weight = true;
    double leastSnr = 0;
    int harmonics = 10;     ///< of Z^2_n
    double beginError = -1; ///< s; below 0: 1 / root of 12 where begins are whole seconds, else 0
    double sefd = 0;        ///< Jy; 0: by temperature and gain, or no flux
    double temperature = 0; ///< K, of the system
    double gain = 0;        ///< K/Jy
    QString site = "ZRT";   ///< name of the telescope in arrival times
};

using ProfileField = Field<ProfileParameters>;

struct ProfileAnalysis : Analysis<ProfileParameters> {
    QString manual;   ///< of the command, in lines of the help
    QString examples; ///< the same
};

/// All parameters, in the order of the help and of the headers of tables.
const std::vector<ProfileField> &profileFields();
const ProfileAnalysis &profileAnalysis();

/// Everything for which parameters are refused, whatever the recordings are.
std::vector<FieldProblem> problemsOf(const ProfileParameters &parameters);

/// The same days with the same samples for all of it.
struct ProfilePlan {
    Days::DayPlan days;
    ProfileParameters parameters; ///< as they are used: module, ray, dispersion, begin error
    Ephemeris ephemeris;
    Folding folding;
    QStringList remarks;
    /// For which nothing can be folded; the days are told nevertheless where their place is.
    std::vector<FieldProblem> problems;
};
ProfilePlan planProfiles(const RecordingSet &set, const ProfileParameters &parameters);

/// The choice that parameters make; which days are wanted is to be filled in.
StackChoice choiceOf(const ProfileParameters &parameters);

/// System equivalent flux density, Jy; 0 where it is not given.
double sefdOf(const ProfileParameters &parameters);

/// Mean flux density, Jy, by the radiometer equation for one or more polarisations,
///
///     S = S/N x SEFD / sqrt(n_p t B) x sqrt(W / (P - W)).
///
/// @param snr           of the boxcar of that width
/// @param width         W / P, 0 to 1
/// @param bandwidth     B, Hz
/// @param seconds       t of all days together
double fluxDensity(double snr, double sefd, double width, double bandwidth, double seconds,
                   int polarisations = 1);

/// Bandwidth of so many of the bands, Hz, by their mean spacing.
double bandwidthOf(const ProfileDay &day);

/// The call of the batch program that computes the same, ready for a shell.
QString profileCommand(const ProfileParameters &parameters, const QStringList &daysOff,
                       const QStringList &folders);

} // namespace Profiles
