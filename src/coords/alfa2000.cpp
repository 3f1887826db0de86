#include "coords/alfa2000.h"

#include "base/debugline.h"
#include "coords/angletext.h"
#include "coords/site.h"

#include <QStringList>
#include <cmath>

namespace Tools {

namespace {

using namespace Site;

// This estimate has a longitude, a precession and a sidereal time of its own, which differ from
// those of the other conversions in their last digits or more.
constexpr double pi = 3.141592653589793;
constexpr double estimateLongitude = 2.5094444444444446; // h
constexpr double precessionN = 9.890199072e-05;          // rad
constexpr double precessionM = 0.00022349910648;         // rad
constexpr double lcSquared = 0.3319082106334796;
constexpr double fourA = 3.999809822573784;
constexpr double twoA = 1.999904911286892;
constexpr double siderealPerUt = 1.0027379093;
constexpr double julianCentury = 36525;            // days
constexpr double radiansPerSecond = 7.2722052e-05; // of right ascension
constexpr double unreadable = -1000;               // degrees
constexpr double longestSpan = 1e15;               // ms; 30 thousand years

// Minutes and seconds are added whatever the sign of the degrees. No value is refused, that of
// an unreadable text neither: the estimate then means nothing, but it is given.
double degreesOf(const QString &delta)
{
    const QStringList parts = delta.split(':');
    if (parts.size() != 3)
        return unreadable;
    return parts[0].toDouble() + parts[1].toDouble() / 60 + parts[2].toDouble() / 3600;
}

} // namespace

QString getAlfa2000(const QDateTime &dateTime, int point, double tres, const QString &delta)
{
    const double span = std::trunc(point * tres * 1000);
    if (!dateTime.isValid() || !(std::abs(span) < longestSpan)) {
        debugLine("getAlfa2000() ERROR! Invalid dateTime!");
        return {};
    }
    if (point < 0) {
        debugLine("getAlfa2000() ERROR! Bad point=", point);
        return {};
    }
    const double deltaDate = degreesOf(delta) * pi / 180;

    // As UTC: the clock changes of the user's own time zone must not come in.
    const QDateTime begin(dateTime.date(), dateTime.time(), Qt::UTC);
    const QDateTime moment = begin.addMSecs(qint64(span));
    const double t = double(QDate(2000, 1, 1).daysTo(moment.date()) - 1) / julianCentury;
    const QTime clock = moment.time();
    const double ut =
        clock.hour() + clock.minute() / 60.0 + clock.second() / 3600.0 + clock.msec() / 3600000.0;

    const double sine = std::sin(deltaDate);
    const double b = twoLsTc * sine;
    const double d = b * b - (sine * sine - lcSquared) * fourA;
    const double x = ((b + std::sqrt(d)) / twoA) * ts / std::cos(deltaDate);
    const double k = x / std::sqrt(1 - x * x);
    const double alphaDate =
        ((ut * siderealPerUt + 6.697375 + 2400.051111111111 * t + 2.5862222222222222e-05 * t * t -
          1.7416666666666665e-09 * t * t * t + estimateLongitude) *
         pi) /
            12 +
        std::atan(k);

    // k in place of a span of years is on purpose: estimates stay comparable with earlier ones.
    double alpha = alphaDate;
    double alphaMiddle = alphaDate;
    double deltaMiddle = deltaDate;
    for (int pass = 0; pass < 2; ++pass) {
        alpha = alphaDate -
                (std::sin(alphaMiddle) * precessionN * std::tan(deltaMiddle) + precessionM) * k;
        const double deltaPass = deltaDate - std::cos(alphaMiddle) * precessionN * k;
        alphaMiddle = (alphaDate + alpha) / 2;
        deltaMiddle = (deltaDate + deltaPass) / 2;
    }
    return secondsToHms(wrappedHours((alpha / radiansPerSecond) / 3600) * 3600);
}

} // namespace Tools
