#include "analyses/days/fourierdays.h"
#include "analyses/days/stretchfields.h"
#include "analyses/profiles/profileparameters.h"
#include "calc/pulsar/pulsarfields.h"

#include <algorithm>

// The parameters of profiles as forms, options and headers have them.

namespace Profiles {

namespace {

using P = ProfileParameters;

constexpr char manual[] =
    "Average pulse profiles of one place of the sky over all days of folders: \"Average "
    "profiles\"\n"
    "of the workbench. Each day is folded at its period at the telescope, which follows from that\n"
    "at the barycentre, in 8 sub-integrations and 32 bands, and kept so. Days are aligned by the\n"
    "ephemeris where their begins are known to a tenth of a bin, or by the pulse of the other "
    "days\n"
    "where a day shows its own with an S/N of 7 or more; noise is never aligned. Written are the\n"
    "average profile with its error, the list of days with S/N, widths and arrival times, a .tim\n"
    "file of those, and the S/N over trial periods and dispersions with the best of both.\n"
    "Flux densities are told where --sefd, or --temperature and --gain, are given, for a source "
    "in\n"
    "the middle of the beam.";

constexpr char examples[] =
    "Examples: a known pulsar; days whose begins are whole seconds, by template; a .par file:\n"
    "  zrt-batch profile --source B0329+54 --bins 32 --plot png -o results .\n"
    "  zrt-batch profile --module 1 --ray 7 --point 1000 --period 0.7145 --dm 26.7 --bins 32 "
    "--align "
    "template .\n"
    "  zrt-batch profile --par J0332+5434.par --begin-error 0.001 -o results .";

ProfileField field(const FieldText &text, FieldRef (*of)(P &))
{
    return Days::recordedField<P>(text, of);
}

ProfileField dayField(const QString &option, FieldRef (*of)(P &))
{
    return field(Days::fourierDaysField(option), of);
}

std::vector<ProfileField> placeFields()
{
    return {dayField("--module", refOf<&P::module>),
            dayField("--ray", refOf<&P::ray>),
            dayField("--count", refOf<&P::points>),
            dayField("--source", refOf<&P::source>),
            dayField("--ra", refOf<&P::alfa>),
            dayField("--dec", refOf<&P::delta>),
            dayField("--sidereal", refOf<&P::siderealTime>),
            dayField("--utc", refOf<&P::utc>),
            dayField("--point", refOf<&P::firstPoint>),
            dayField("--clock-offset", refOf<&P::clockOffset>)};
}

std::vector<ProfileField> foldFields()
{
    return {
        field(ranged({"dispersion", "--dm", "DM",
                      "Dispersion, pc/cm^3; below 0: that of the .par file or of the source.",
                      "dispersion", "pc/cm^3"},
                     -1, 10000),
              refOf<&P::dispersion>),
        field(ranged({"period", "--period", "SECONDS",
                      "Period at the barycentre; 0: by --f0, the .par file or the source.",
                      "period", "s"},
                     0, 10000),
              refOf<&P::period>),
        field({"frequency", "--f0", "HZ", "Frequency of the rotation in place of the period.", "f0",
               "Hz"},
              refOf<&P::frequency>),
        field({"derivative", "--f1", "F1", "Its change, s^-2.", "f1", "s^-2"},
              refOf<&P::derivative>),
        field({"epoch", "--epoch", "MJD",
               "Epoch of period and frequency; 0: midnight nearest to the first day.", "epoch",
               "MJD"},
              refOf<&P::epoch>),
        field({"parFile", "--par", "FILE", "Ephemeris: a .par file with F0.", "par"},
              refOf<&P::parFile>),
        field(pulsarField("--noise"), refOf<&P::noise>),
        field({"levelJumps", "--level-jumps", "", "Take jumps of level off each band.",
               "level_jumps"},
              refOf<&P::removesJumps>),
        field(ranged({"bins", "--bins", "N", "Bins: a power of two from 16 to 1024.", "bins"}, 16,
                     1024),
              refOf<&P::bins>),
    };
}

std::vector<ProfileField> stackFields()
{
    ProfileField align =
        field({"align", "--align", "HOW", "How the phases of days come together.", "align"},
              refOf<&P::align>);
    align.choices = {{"template", "alignTemplate", "Template"},
                     {"ephemeris", "alignEphemeris", "Ephemeris"},
                     {"none", "alignNone", "None"}};
    return {
        align,
        field(
            {"normalise", "--no-normalise", "", "Do not bring the days to one noise.", "normalise"},
            refOf<&P::normalise>),
        field({"weight", "--no-weight", "", "Do not weight the days by 1 / sigma^2.", "weight"},
              refOf<&P::weight>),
        field(ranged({"leastSnr", "--least-snr", "SNR",
                      "Leave days out whose own S/N is below; this selects.", "least_snr"},
                     0, 1000),
              refOf<&P::leastSnr>),
        field(ranged({"harmonics", "--harmonics", "N", "Harmonics of Z^2_n.", "harmonics"}, 1, 64),
              refOf<&P::harmonics>),
        field({"beginError", "--begin-error", "SECONDS",
               "Standard error of the begins; below 0: 0.289 s where they are whole seconds.",
               "begin_error", "s"},
              refOf<&P::beginError>),
        field({"sefd", "--sefd", "JY", "System equivalent flux density; 0: no flux.", "sefd", "Jy"},
              refOf<&P::sefd>),
        field({"temperature", "--temperature", "K", "System temperature, with --gain.",
               "temperature", "K"},
              refOf<&P::temperature>),
        field({"gain", "--gain", "K/JY", "Gain, K/Jy, with --temperature.", "gain", "K/Jy"},
              refOf<&P::gain>),
        field({"site", "--site", "NAME", "Name of the telescope in the .tim file.", "site"},
              refOf<&P::site>),
    };
}

} // namespace

const std::vector<ProfileField> &profileFields()
{
    static const std::vector<ProfileField> all = [] {
        std::vector<ProfileField> fields = placeFields();
        for (const std::vector<ProfileField> &more : {foldFields(), stackFields()})
            fields.insert(fields.end(), more.begin(), more.end());
        // Left empty in a form, these have their presets.
        const QStringList optional = {"dispersion", "period", "frequency",   "derivative", "epoch",
                                      "beginError", "sefd",   "temperature", "gain"};
        for (ProfileField &one : fields)
            one.isOptional = optional.contains(one.name);
        return fields;
    }();
    return all;
}

const ProfileAnalysis &profileAnalysis()
{
    static const ProfileAnalysis analysis = [] {
        ProfileAnalysis made;
        made.name = "profilesOfDays";
        made.label = "Average profiles";
        made.command = "profile";
        made.manual = manual;
        made.examples = examples;
        for (const ProfileField &field : profileFields())
            made.fields.push_back(&field);
        return made;
    }();
    return analysis;
}

QString profileCommand(const ProfileParameters &parameters, const QStringList &daysOff,
                       const QStringList &folders)
{
    return Days::commandOfDays(profileAnalysis(), parameters, daysOff, folders);
}

} // namespace Profiles
