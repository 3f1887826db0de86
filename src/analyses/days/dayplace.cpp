#include "analyses/days/dayplace.h"

#include "coords/filenames.h"
#include "coords/pulsarcatalogue.h"
#include "coords/raytables.h"
#include "coords/skyclock.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace Days {

namespace {

constexpr double degree = std::numbers::pi / 180;
constexpr double hoursPerRadian = 12 / std::numbers::pi;
constexpr int mostModules = 6;
constexpr int raysOfModule = 8;
constexpr int suggestions = 5;

QTime timeOf(const QString &text)
{
    QTime time = QTime::fromString(text.trimmed(), "h:m:s");
    if (!time.isValid())
        time = QTime::fromString(text.trimmed(), "h:m:s.z");
    return time;
}

bool isPowerOfTwo(int number)
{
    return number > 0 && (number & (number - 1)) == 0;
}

// How many of the starts are given, the point apart.
int countOfStarts(const DayPlace &place)
{
    const bool hasPosition = !place.alfa.isEmpty() || !place.delta.isEmpty();
    return int(!place.utc.isEmpty()) + int(!place.siderealTime.isEmpty()) +
           int(!place.source.isEmpty()) + int(hasPosition);
}

void addSourceProblems(const DayPlace &place, std::vector<FieldProblem> &problems)
{
    if (!place.source.isEmpty() && !Tools::findPulsar(Tools::knownPulsars(), place.source)) {
        const QStringList near =
            Tools::suggestPulsars(Tools::knownPulsars(), place.source, suggestions);
        problems.push_back(
            {"source",
             QString("The catalogue has no pulsar \"%1\", or several.%2")
                 .arg(place.source,
                      near.isEmpty() ? QString() : " Nearest names: " + near.join(", ") + ".")});
    }
    if (place.alfa.isEmpty() && place.delta.isEmpty())
        return;
    if (!std::isfinite(Tools::rightAscensionOf(place.alfa)))
        problems.push_back({"alfa", QString("The right ascension \"%1\" is not of the form "
                                            "hh:mm:ss.")
                                        .arg(place.alfa)});
    if (!std::isfinite(Tools::declinationOf(place.delta)))
        problems.push_back(
            {"delta",
             QString("The declination \"%1\" is not of the form +dd:mm:ss.").arg(place.delta)});
}

QString cacheFolder(const QString &dataFolder)
{
    constexpr int digits = 12;
    const QByteArray hash = QCryptographicHash::hash(QDir(dataFolder).absolutePath().toUtf8(),
                                                     QCryptographicHash::Sha256);
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/zrt/days/" +
           QString::fromLatin1(hash.toHex().left(digits));
}

} // namespace

std::vector<FieldProblem> problemsOf(const DayPlace &place)
{
    std::vector<FieldProblem> problems;
    if (countOfStarts(place) > 1)
        problems.push_back({"source", "Give one start: a source, coordinates, a sidereal time or a "
                                      "UTC time."});
    addSourceProblems(place, problems);
    if (!place.siderealTime.isEmpty() &&
        !std::isfinite(Tools::rightAscensionOf(place.siderealTime)))
        problems.push_back({"siderealTime", QString("The sidereal time \"%1\" is not of the form "
                                                    "hh:mm:ss.")
                                                .arg(place.siderealTime)});
    if (!place.utc.isEmpty() && !timeOf(place.utc).isValid())
        problems.push_back(
            {"zrtUtc", QString("The time \"%1\" is not of the form hh:mm:ss.").arg(place.utc)});
    if (place.firstPoint < 0)
        problems.push_back({"firstPoint", "The first point cannot be below 0."});
    if (place.points < fewestPoints || place.points > mostPoints || !isPowerOfTwo(place.points))
        problems.push_back({"points", QString("%1 points cannot be taken. Allowed: powers of two "
                                              "from %2 to %3.")
                                          .arg(place.points)
                                          .arg(fewestPoints)
                                          .arg(mostPoints)});
    const bool hasSource =
        !place.source.isEmpty() || (!place.alfa.isEmpty() && !place.delta.isEmpty());
    if (place.module < 0 || (place.module == 0 && !hasSource))
        problems.push_back({"module", "Give the number of the module, or a source, which chooses "
                                      "it."});
    if (place.ray < 0 || (place.ray == 0 && !hasSource))
        problems.push_back({"ray", "Give the number of the ray, or a source, which chooses it."});
    if (!std::isfinite(place.clockOffset))
        problems.push_back({"clockOffset", "The clock offset must be a number of seconds."});
    return problems;
}

std::optional<Tools::SkyPosition> sourceOf(const DayPlace &place)
{
    if (!place.source.isEmpty()) {
        const Tools::KnownPulsar *pulsar = Tools::findPulsar(Tools::knownPulsars(), place.source);
        return pulsar ? std::optional(pulsar->position) : std::nullopt;
    }
    const Tools::SkyPosition position = {Tools::rightAscensionOf(place.alfa),
                                         Tools::declinationOf(place.delta)};
    return position.isNumber() ? std::optional(position) : std::nullopt;
}

DayStart startOf(const DayPlace &place)
{
    DayStart start;
    start.clockOffset = place.clockOffset;
    start.point = place.firstPoint;
    if (const auto source = sourceOf(place)) {
        start.kind = StartKind::Source;
        start.source = *source;
    } else if (!place.siderealTime.isEmpty()) {
        start.kind = StartKind::Sidereal;
        start.siderealTime = Tools::rightAscensionOf(place.siderealTime) * hoursPerRadian;
    } else if (!place.utc.isEmpty()) {
        start.kind = StartKind::Utc;
        start.utc = timeOf(place.utc);
    }
    return start;
}

bool Beam::isKnown() const
{
    return std::isfinite(delta);
}

QString siteOf(const QString &path)
{
    const QFileInfo file(path);
    const QString ofPath = Tools::ploshFromPath(file.absolutePath() + "/");
    const QString ofFolder = Tools::ploshFromPath(file.absolutePath());
    const QString ofName = Tools::ploshFromFileName(file.fileName());
    return !ofName.isEmpty() ? ofName : !ofFolder.isEmpty() ? ofFolder : ofPath;
}

QString siteOf(const RecordingSet &set)
{
    for (const RecordingEntry &entry : set.entries) {
        const QString site = siteOf(entry.path);
        if (!site.isEmpty())
            return site;
    }
    return {};
}

int placeOfRay(int module, int ray)
{
    return module * raysOfModule + ray;
}

Beam beamOf(const QString &site, int module, int ray)
{
    Beam beam = {site, module, ray, std::numeric_limits<double>::quiet_NaN()};
    const double own = Tools::deltaFromRay(module, ray, site);
    if (own == Tools::noDeclination)
        return beam;
    beam.delta = own * degree;
    double nearest = 180;
    for (int m = 1; m <= mostModules; ++m) {
        for (int r = 1; r <= raysOfModule; ++r) {
            const double other = Tools::deltaFromRay(m, r, site);
            if (other != Tools::noDeclination && other != own)
                nearest = std::min(nearest, std::abs(other - own));
        }
    }
    beam.reach = nearest / 2 * degree;
    return beam;
}

Beam nearestBeam(const QString &site, const Tools::SkyPosition &source, const QDate &date)
{
    const double delta = Tools::declinationOfDate(source, date) / degree;
    int module = 0;
    int ray = 0;
    double nearest = 360;
    for (int m = 1; m <= mostModules; ++m) {
        for (int r = 1; r <= raysOfModule; ++r) {
            const double beam = Tools::deltaFromRay(m, r, site);
            if (beam == Tools::noDeclination || std::abs(beam - delta) >= nearest)
                continue;
            nearest = std::abs(beam - delta);
            module = m;
            ray = r;
        }
    }
    return beamOf(site, module, ray);
}

Tools::SkyPosition directionOf(const DayPlan &plan, const QDateTime &begin)
{
    if (plan.source)
        return *plan.source;
    const double nowhere = std::numeric_limits<double>::quiet_NaN();
    if (!plan.beam.isKnown())
        return {nowhere, nowhere};
    const double toMiddle =
        plan.choice.points * plan.list.tresolution / 2 - plan.choice.start.clockOffset;
    return Tools::positionInBeam(begin.addMSecs(qint64(std::llround(toMiddle * 1000))),
                                 plan.beam.delta);
}

RecordingSet recordingsOfFolders(const QStringList &folders, const Jobs::Control &control)
{
    if (folders.size() == 1)
        return recordingsOfFolder(folders.front(), true, control);
    QStringList paths;
    for (const QString &folder : folders) {
        const RecordingSet set = recordingsOfFolder(folder, true, control);
        if (set.wasStopped)
            return set;
        for (const RecordingEntry &entry : set.entries)
            paths << entry.path;
    }
    return recordingsOfFiles(paths, control);
}

KeptFolder keptFolder(const QString &dataFolder)
{
    const QString beside = QDir(dataFolder).absoluteFilePath("zrt-days");
    const QFileInfo kept(beside);
    const bool canBeWritten =
        kept.exists() ? kept.isDir() && kept.isWritable() : QFileInfo(dataFolder).isWritable();
    return canBeWritten ? KeptFolder{beside, true} : KeptFolder{cacheFolder(dataFolder), false};
}

} // namespace Days
