#include "analyses/timing/arrivaltimes.h"

#include "coords/barycentre.h"
#include "results/resulttable.h"

#include <QDateTime>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>
#include <tuple>

namespace Timing {

namespace {

using Results::Column;
using Results::ResultTable;

constexpr double secondsPerDay = 86400;
constexpr qint64 mjdOfUnixEpoch = 40587;
constexpr double firstLikelyDay = 30000; // 1941
constexpr double lastLikelyDay = 100000; // 2132
constexpr qint64 mostTimes = 100000;

ArrivalTime timeOfDay(qint64 day, double second, double error)
{
    const double days = std::floor(second / secondsPerDay);
    return {day + qint64(days), second - days * secondsPerDay, error};
}

// A number as days: its digits before and behind the point are read apart, so that none is lost.
ArrivalTime timeOfMjd(const QString &text, double mjd, double error)
{
    const double value = text.toDouble();
    const int point = text.indexOf('.');
    const bool isPlain = point >= 0 && value >= 0 && !text.contains('e', Qt::CaseInsensitive);
    const double part = isPlain ? ("0" + text.mid(point)).toDouble() : value - std::floor(value);
    const double whole = std::floor(mjd);
    return timeOfDay(qint64(std::floor(value) + whole), (part + mjd - whole) * secondsPerDay,
                     error);
}

bool isNumberText(const QString &text)
{
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    return isNumber && std::isfinite(value);
}

// Pulses that the search or a person holds for something else.
bool isAgainst(const ResultTable &table, int row)
{
    const Column *const verdict = columnNamed(table.columns, "verdict");
    const QString text = verdict ? verdict->textAt(row) : QString();
    static const QStringList notAgainst = {"", "-", "candidate", "accept", "unsure"};
    return !notAgainst.contains(text);
}

// Rows of a column with a time each.
std::vector<int> usableRows(const ResultTable &table, const Column &column)
{
    std::vector<int> rows;
    for (int row = 0; row < table.rows(); ++row) {
        if (isNumberText(column.textAt(row)) && !isAgainst(table, row))
            rows.push_back(row);
    }
    return rows;
}

ArrivalTimes timesOfTable(const ResultTable &table)
{
    ArrivalTimes times;
    const Column *column = columnNamed(table.columns, "arrival_barycentric");
    times.scale = TimeScale::Barycentric;
    if (!column || int(usableRows(table, *column).size()) < table.rows()) {
        times.scale = TimeScale::Utc;
        column = columnNamed(table.columns, "arrival");
        if (!column)
            column = columnNamed(table.columns, "mjd");
    }
    if (!column) {
        times.problem = "the table has no arrival times: no column \"arrival\" or \"mjd\". Give "
                        "the table of pulses or of arrival times.";
        return times;
    }
    const Column *error = columnNamed(table.columns, "error");
    if (!error)
        error = columnNamed(table.columns, "mjd_error");
    const std::vector<int> rows = usableRows(table, *column);
    for (const int row : rows)
        times.times.push_back(timeOfMjd(column->textAt(row), 0, error ? error->numberAt(row) : 0));
    if (int(rows.size()) < table.rows())
        times.remarks << QString("%1 of %2 rows are not used: they have a verdict against them or "
                                 "no time.")
                             .arg(table.rows() - int(rows.size()))
                             .arg(table.rows());
    const Column *const ra = columnNamed(table.columns, "ra");
    const Column *const dec = columnNamed(table.columns, "dec");
    std::vector<Tools::SkyPosition> places;
    for (const int row : ra &&dec ? rows : std::vector<int>())
        places.push_back(
            {Tools::rightAscensionOf(ra->textAt(row)), Tools::declinationOf(dec->textAt(row))});
    times.position = meanPosition(places);
    return times;
}

QStringList wordsOf(const QString &line)
{
    static const QRegularExpression blanks("[\\s,;]+");
    return line.split(blanks, Qt::SkipEmptyParts);
}

// Arrival times at any telescope are taken as UTC.
ArrivalTimes timesOfTim(const QStringList &lines)
{
    constexpr double microseconds = 1e6;
    ArrivalTimes times;
    times.scale = TimeScale::Utc;
    for (int i = 1; i < lines.size(); ++i) {
        const QStringList words = wordsOf(lines[i]);
        const bool isComment = words.isEmpty() || words[0] == "C" || words[0].startsWith('#');
        if (isComment || (words.size() < 4 && words[0].toUpper() == words[0]))
            continue; // a key such as MODE or JUMP
        if (words.size() < 4 || !isNumberText(words[2]) || !isNumberText(words[3])) {
            times.problem = QString("line %1 is not of the form name, MHz, MJD, error in "
                                    "microseconds, site: \"%2\".")
                                .arg(i + 1)
                                .arg(lines[i].left(60));
            return times;
        }
        times.times.push_back(timeOfMjd(words[2], 0, words[3].toDouble() / microseconds));
        if (words.size() > 4 && (words[4] == "@" || words[4] == "bat"))
            times.scale = TimeScale::Barycentric;
    }
    return times;
}

// What one line of a list says.
struct ListedTime {
    int line = 0;
    int decimals = 0;
    QString number; ///< empty: a date
    ArrivalTime time;
};

// Date and time, or a number; then the error.
bool readLine(const QString &text, ListedTime &listed)
{
    static const QRegularExpression date(
        "^\\s*(\\d{4})[-.](\\d\\d)[-.](\\d\\d)[T\\s]+(\\d\\d):(\\d\\d):(\\d\\d(?:\\.\\d*)?)\\s*(.*)"
        "$");
    const QRegularExpressionMatch match = date.match(text);
    const QStringList words = wordsOf(match.hasMatch() ? match.captured(7) : text);
    const int used = match.hasMatch() ? 0 : 1;
    if (words.size() < used || words.size() > used + 1)
        return false;
    if (words.size() > used) {
        if (!isNumberText(words[used]) || words[used].toDouble() < 0)
            return false;
        listed.time.error = words[used].toDouble();
    }
    const QString digits = match.hasMatch() ? match.captured(6) : words[0];
    listed.decimals =
        digits.section('.', 1, 1).section('e', 0, 0, QString::SectionCaseInsensitiveSeps).size();
    if (!match.hasMatch()) {
        listed.number = words[0];
        return isNumberText(words[0]);
    }
    const QDate day(match.captured(1).toInt(), match.captured(2).toInt(),
                    match.captured(3).toInt());
    const int hours = match.captured(4).toInt();
    const int minutes = match.captured(5).toInt();
    const double seconds = match.captured(6).toDouble();
    if (!day.isValid() || hours > 23 || minutes > 59 || seconds >= 61)
        return false;
    listed.time = timeOfDay(QDate(1970, 1, 1).daysTo(day) + mjdOfUnixEpoch,
                            hours * 3600 + minutes * 60 + seconds, listed.time.error);
    return true;
}

bool isLikelyDay(const ListedTime &listed)
{
    const double value = listed.number.toDouble();
    return listed.number.isEmpty() || (value >= firstLikelyDay && value < lastLikelyDay);
}

// Whether the lines are moments; a problem where some are and some are not.
bool areMoments(const std::vector<ListedTime> &all, const QString &unit, QString &problem)
{
    if (unit == daysUnit)
        return true;
    const auto other = std::find_if(all.begin(), all.end(), [&](const ListedTime &listed) {
        return unit == secondsUnit ? listed.number.isEmpty() != all.front().number.isEmpty()
                                   : isLikelyDay(listed) != isLikelyDay(all.front());
    });
    if (other != all.end())
        problem = QString("lines %1 and %2 are of different units: one is a date or a modified "
                          "Julian day, the other one seconds. Bring them to one unit, or say what "
                          "plain numbers are.")
                      .arg(all.front().line)
                      .arg(other->line);
    return unit == secondsUnit ? all.front().number.isEmpty() : isLikelyDay(all.front());
}

ArrivalTimes timesOfList(const QStringList &lines, const QString &unit, double mjd)
{
    ArrivalTimes times;
    std::vector<ListedTime> all;
    for (int i = 0; i < lines.size(); ++i) {
        const QString text = lines[i].section('#', 0, 0).trimmed();
        if (text.isEmpty())
            continue;
        ListedTime listed;
        listed.line = i + 1;
        if (!readLine(text, listed)) {
            times.problem = QString("line %1 is no time: \"%2\". A line has a modified Julian day, "
                                    "seconds, or \"2015-04-01 12:00:00.5\", and may have an error "
                                    "in seconds behind it.")
                                .arg(i + 1)
                                .arg(text.left(60));
            return times;
        }
        all.push_back(listed);
    }
    if (all.empty())
        return times;
    const bool isUtc = areMoments(all, mjd > 0 ? QString(daysUnit) : unit, times.problem);
    times.scale = isUtc ? TimeScale::Utc : TimeScale::Seconds;
    const int decimals =
        std::max_element(all.begin(), all.end(), [](const ListedTime &a, const ListedTime &b) {
            return a.decimals < b.decimals;
        })->decimals;
    const bool areDays = isUtc && !all.front().number.isEmpty();
    times.resolution = std::pow(10.0, -decimals) * (areDays ? secondsPerDay : 1);
    for (const ListedTime &listed : all) {
        if (listed.number.isEmpty())
            times.times.push_back(listed.time);
        else if (isUtc)
            times.times.push_back(timeOfMjd(listed.number, mjd, listed.time.error));
        else
            times.times.push_back({0, listed.number.toDouble(), listed.time.error});
    }
    return times;
}

bool isBefore(const ArrivalTime &a, const ArrivalTime &b)
{
    return std::tie(a.day, a.second) < std::tie(b.day, b.second);
}

bool looksLikeTable(const QByteArray &text)
{
    const QByteArray begin = text.left(4096).trimmed();
    return begin.startsWith('{') || begin.startsWith("program:") || begin.startsWith("# program:");
}

} // namespace

QString ArrivalTime::text() const
{
    constexpr int digits = 13;
    if (day == 0)
        return QString::number(second, 'g', 15);
    return QString::number(day) + QString::number(second / secondsPerDay, 'f', digits).mid(1);
}

std::optional<Tools::SkyPosition> meanPosition(const std::vector<Tools::SkyPosition> &places)
{
    double alfa = 0;
    double delta = 0;
    for (const Tools::SkyPosition &place : places) {
        if (!place.isNumber())
            return std::nullopt;
        alfa += std::remainder(place.alfa - places.front().alfa, 2 * M_PI) / double(places.size());
        delta += place.delta / double(places.size());
    }
    if (places.empty())
        return std::nullopt;
    return Tools::SkyPosition{std::fmod(places.front().alfa + alfa + 2 * M_PI, 2 * M_PI), delta};
}

void sortTimes(ArrivalTimes &times)
{
    std::vector<ArrivalTime> &all = times.times;
    if (!std::is_sorted(all.begin(), all.end(), isBefore)) {
        times.remarks << "The times were not in their order; they are sorted.";
        std::stable_sort(all.begin(), all.end(), isBefore);
    }
    const std::size_t before = all.size();
    all.erase(std::unique(all.begin(), all.end(),
                          [](const ArrivalTime &a, const ArrivalTime &b) {
                              return !isBefore(a, b) && !isBefore(b, a);
                          }),
              all.end());
    if (all.size() < before)
        times.remarks << QString("%1 of the times stand there twice and count once.")
                             .arg(before - all.size());
}

ArrivalTimes parseTimes(const QByteArray &text, const QString &unit, double mjd)
{
    ArrivalTimes times;
    if (looksLikeTable(text)) {
        const Results::ReadTable read = Results::readTable(text);
        if (read.problem.isEmpty())
            times = timesOfTable(read.table);
        else
            times.problem = read.problem + ".";
    } else {
        const QStringList lines = QString::fromUtf8(text).split('\n');
        times = lines.front().trimmed() == "FORMAT 1" ? timesOfTim(lines)
                                                      : timesOfList(lines, unit, mjd);
    }
    if (!times.problem.isEmpty())
        return times;
    if (qint64(times.times.size()) > mostTimes)
        times.problem = QString("%1 times are too many; up to %2 can be searched.")
                            .arg(times.times.size())
                            .arg(mostTimes);
    sortTimes(times);
    return times;
}

void turnToBarycentre(ArrivalTimes &times, const Tools::SkyPosition &position)
{
    constexpr double msPerSecond = 1000;
    for (ArrivalTime &time : times.times) {
        const qint64 seconds = (time.day - mjdOfUnixEpoch) * qint64(secondsPerDay);
        const QDateTime moment = QDateTime::fromMSecsSinceEpoch(
            seconds * 1000 + std::llround(time.second * msPerSecond), Qt::UTC);
        const double delay = Tools::barycentricView(Tools::ownSite(), moment, position).delay;
        time = timeOfDay(time.day, time.second + delay, time.error);
    }
    times.scale = TimeScale::Barycentric;
}

std::vector<double> secondsOf(const ArrivalTimes &times)
{
    std::vector<double> seconds;
    for (const ArrivalTime &time : times.times)
        seconds.push_back(double(time.day - times.times.front().day) * secondsPerDay + time.second);
    return seconds;
}

} // namespace Timing
