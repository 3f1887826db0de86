#include "simulator/dayssimulation.h"

#include "base/timetext.h"
#include "coords/filenames.h"
#include "coords/raytables.h"
#include "coords/skyclock.h"
#include "simulator/daydraws.h"
#include "simulator/daysources.h"

#include <algorithm>
#include <cmath>

namespace Simulator {

namespace {

constexpr int mostDays = 36600;
constexpr double longestDay = 43200; // s, of recording
constexpr double largestScatter = 0.9;
constexpr double smallestScintillation = 0.01;
constexpr double largestScintillation = 1.415; // the root of 2: one square of a normal number
constexpr double narrowestBeam = 0.01;         // degrees
constexpr double widestBeam = 10;
constexpr int fileTimeZone = 4; // h ahead of UTC in which files are named
constexpr qint64 msPerHour = 3600000;
constexpr double degree = M_PI / 180;

double secondsOf(const Simulation &s, int points)
{
    return points * s.msPerPoint / 1000;
}

Tools::SkyPosition middleOfStrip(const DaysSimulation &days)
{
    if (days.strip)
        return *days.strip;
    if (!days.pulsars.empty())
        return days.pulsars.front().position;
    return {0, beamDeclination(days, 1, (days.recording.rays + 1) / 2) * degree};
}

QDateTime fullHour(const QDateTime &moment)
{
    return QDateTime(moment.date(), QTime(moment.time().hour(), 0), Qt::UTC);
}

bool isMissing(const DaysSimulation &days, int day)
{
    return DayDraws(days.recording.seed, Lot::Missing, day).share() < days.missing;
}

// The recording of a day, cut at full hours. Each file begins at a full second, the first sample
// of the hour, as if the receiver began anew.
std::vector<DayFile> filesOf(const DaysSimulation &days, int day)
{
    const Simulation &s = days.recording;
    const double length = secondsOf(s, s.npoints);
    const double slide =
        std::floor(days.slide * DayDraws(s.seed, Lot::Begin, day).symmetric() + 0.5);
    const qint64 untilBegin = qint64(std::floor((slide - length / 2) * 1000));
    QDateTime begin = passage(days, day).addMSecs(untilBegin);
    begin = begin.addMSecs(-begin.time().msec());
    QDateTime end = begin.addMSecs(qint64(std::ceil(length * 1000)));
    if (days.wholeHours) {
        begin = fullHour(begin);
        end = fullHour(end.addMSecs(msPerHour - 1));
    }

    std::vector<DayFile> files;
    int earlier = 0;
    while (begin < end) {
        const QDateTime hourEnd = fullHour(begin).addMSecs(msPerHour);
        const double inHour = double(begin.msecsTo(std::min(end, hourEnd))) / s.msPerPoint;
        const double most = days.wholeHours ? inHour : s.npoints - earlier;
        const int points = int(std::min(inHour, most));
        if (points > 0) {
            const QString name =
                Tools::dataFileName(textOfTime(begin, "yyyy.MM.dd"), begin.time().hour(),
                                    fileTimeZone, days.site, s.msPerPoint / 1000);
            files.push_back({day, name, begin, points, earlier, 0});
        }
        earlier += points;
        begin = hourEnd;
    }
    for (DayFile &file : files)
        file.dayPoints = earlier;
    return files;
}

QString refusedShare(const QString &what, double share)
{
    if (share >= 0 && share <= 1)
        return {};
    return QString("%1 must be a share from 0 to 1, not %2.").arg(what).arg(share);
}

QString refusedRange(const QString &what, double value, double least, double most,
                     const QString &unit)
{
    if (value >= least && value <= most)
        return {};
    return QString("%1 must lie between %2 and %3%4, not %5.")
        .arg(what)
        .arg(least)
        .arg(most)
        .arg(unit)
        .arg(value);
}

QString refusedBeams(const DaysSimulation &days)
{
    const Simulation &s = days.recording;
    for (int module = 1; module <= s.modules; ++module) {
        for (int ray = 1; ray <= s.rays; ++ray) {
            if (beamDeclination(days, module, ray) == Tools::noDeclination)
                return QString("N%1 has no module %2, ray %3; there are modules 1 to 6 with rays "
                               "1 to 8 of N0, N1, N2 and N4.")
                    .arg(days.site)
                    .arg(s.firstModule + module - 1)
                    .arg(ray);
        }
    }
    return {};
}

QString refusedTimes(const DaysSimulation &days)
{
    const Simulation &s = days.recording;
    if (days.days < 1 || days.days > mostDays)
        return QString("There can be 1 to %1 days, not %2.").arg(mostDays).arg(days.days);
    if (s.beginTime.date().year() < 1960 || s.beginTime.date().year() > 2100)
        return "The days must begin between 1960 and 2100, where the Earth's motion is known.";
    if (!(secondsOf(s, s.npoints) <= longestDay))
        return QString("The recording of a day may last %1 s; %2 points of %3 ms last %4 s.")
            .arg(longestDay)
            .arg(s.npoints)
            .arg(s.msPerPoint)
            .arg(secondsOf(s, s.npoints));
    if (days.wholeHours && !(3 * longestDay * 1000 / s.msPerPoint < 2e9))
        return QString("A step of %1 ms is too short for whole hours.").arg(s.msPerPoint);
    const Tools::SkyPosition middle = middleOfStrip(days);
    if (!middle.isNumber() || !Tools::nearestCulmination(middle, s.beginTime).isValid())
        return "The middle of the strip never crosses the beams.";
    return refusedRange("The slide", days.slide, 0, 3600, " s");
}

QString refusedPulsars(const DaysSimulation &days)
{
    const Simulation &s = days.recording;
    for (const SkyPulsar &pulsar : days.pulsars) {
        if (!pulsar.position.isNumber() ||
            !Tools::nearestCulmination(pulsar.position, s.beginTime).isValid())
            return "Sky pulsar: its place never crosses the beams.";
        if (QString text = refusedRange("Sky pulsar: the scintillation", pulsar.scintillation,
                                        smallestScintillation, largestScintillation, {});
            pulsar.scintillation != 0 && !text.isEmpty())
            return text;
        // The rest is as with a pulsar that has no place.
        Simulation one = s;
        PulseTrain train;
        train.period = pulsar.period;
        train.width = pulsar.width;
        train.dispersion = pulsar.dispersion;
        train.strength = pulsar.strength;
        train.phase = pulsar.phase;
        one.pulseTrains = {train};
        if (QString text = refusal(one); !text.isEmpty())
            return "Sky " + text.left(1).toLower() + text.mid(1);
    }
    return {};
}

QString refusedInterference(const DaysSimulation &days)
{
    const double highest = 500 / days.recording.msPerPoint; // Hz
    for (const Hum &hum : days.hums) {
        for (const QString &text :
             {refusedRange("Hum: the frequency", hum.frequency, 1e-6, highest, " Hz"),
              refusedRange("Hum: the strength", hum.strength, -1e6, 1e6, {}),
              refusedShare("Hum: the share", hum.share)}) {
            if (!text.isEmpty())
                return text;
        }
    }
    for (const QString &text :
         {refusedShare("Disturbance: the share", days.disturbance.share),
          refusedRange("Disturbance: the strength", days.disturbance.strength, -1e6, 1e6, {}),
          refusedShare("Storm: the share", days.storm.share),
          refusedRange("Storm: the strength", days.storm.strength, -1e6, 1e6, {}),
          refusedRange("Storm: the count", days.storm.count, 0, 1e6, {})}) {
        if (!text.isEmpty())
            return text;
    }
    return {};
}

} // namespace

DaysSimulation::DaysSimulation()
{
    recording.npoints = 18000; // 3.4 minutes of analysis, and what slides and is delayed
    recording.rays = 1;
    recording.fbands = evenBands(109.4, 0.078125, 32);
    recording.beginTime = QDateTime(QDate(2015, 4, 1), QTime(0, 0), Qt::UTC);
}

QString refusal(const DaysSimulation &days)
{
    if (QString text = refusal(days.recording); !text.isEmpty())
        return text;
    if (QString text = refusedBeams(days); !text.isEmpty())
        return text;
    for (const QString &text :
         {refusedTimes(days), refusedShare("The missing days", days.missing),
          refusedRange("The scatter of gains", days.gainScatter, 0, largestScatter, {}),
          refusedRange("The scatter of noise", days.noiseScatter, 0, largestScatter, {}),
          refusedRange("The beam in right ascension", days.beam.ra, narrowestBeam, widestBeam,
                       " degrees"),
          refusedRange("The beam in declination", days.beam.delta, narrowestBeam, widestBeam,
                       " degrees"),
          refusedPulsars(days), refusedInterference(days)}) {
        if (!text.isEmpty())
            return text;
    }
    return {};
}

double beamDeclination(const DaysSimulation &days, int module, int ray)
{
    static const Tools::RayTables tables = Tools::readRayTables({}); // no file: the nominal ones
    return Tools::deltaFromRay(tables, days.recording.firstModule + module - 1, ray,
                               QString("N%1").arg(days.site));
}

QDateTime passage(const DaysSimulation &days, int day)
{
    const Tools::SkyPosition middle = middleOfStrip(days);
    const QDateTime begin = days.recording.beginTime;
    const std::vector<QDateTime> first = Tools::culminations(middle, begin, begin.addDays(2));
    return Tools::nearestCulmination(
        middle, first.front().addMSecs(qint64(day * Tools::siderealDay() * 1000)));
}

std::vector<DayFile> dayFiles(const DaysSimulation &days)
{
    std::vector<DayFile> files;
    for (int day = 0; day < days.days; ++day) {
        if (isMissing(days, day))
            continue;
        const std::vector<DayFile> more = filesOf(days, day);
        files.insert(files.end(), more.begin(), more.end());
    }
    return files;
}

Simulation simulationOf(const DaysSimulation &days, const DayFile &file)
{
    Simulation s = days.recording;
    s.npoints = file.points;
    s.beginTime = file.begin;
    s.earlierPoints = file.earlierPoints;
    s.seed = DayDraws(s.seed, Lot::Noise, file.day).number();
    const DayGain gain = gainOf(days, file.day);
    s.level *= gain.gain;
    s.sigma *= gain.gain * gain.noise;
    addSky(days, file.day, s);
    addInterference(days, file, s);
    return s;
}

DaysSimulation demonstrationDays()
{
    DaysSimulation days;
    days.recording.drift = 3;
    days.recording.driftTime = 90;
    SkyPulsar pulsar;
    pulsar.position = {Tools::rightAscensionOf("05:30:00"), Tools::declinationOf("28:36:00")};
    pulsar.period = 0.7145;
    pulsar.dispersion = 26.8;
    pulsar.strength = 0.04;
    pulsar.scintillation = 0.5;
    days.pulsars = {pulsar};
    days.hums = {{9.1, 0.012, 1}};
    days.missing = 0.05;
    days.gainScatter = 0.15;
    days.noiseScatter = 0.1;
    days.disturbance = {0.05, 0.3};
    days.storm = {0.03, 200, 20};
    return days;
}

} // namespace Simulator
