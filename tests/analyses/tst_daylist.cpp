#include "analyses/days/daylist.h"
#include "coords/coordinates.h"
#include "coords/skyclock.h"
#include "support/testmain.h"

#include <cmath>

using Days::Day;
using Days::DayChoice;
using Days::DayList;
using Days::DayStart;
using Days::StartKind;

namespace {

constexpr double step = 0.0124928; // s

QDateTime utc(const QString &text)
{
    return QDateTime::fromString(text + "Z", Qt::ISODateWithMs);
}

RecordingEntry recording(const QString &begin, int points, const QString &path = "/data/a.pnt")
{
    RecordingEntry entry;
    entry.path = path;
    entry.begin = utc(begin);
    entry.completePoints = points;
    entry.state = RecordingState::Whole;
    entry.header.npoints = points;
    entry.header.modules = 1;
    entry.header.rays = 8;
    entry.header.tresolution = step;
    entry.header.fbands = {111, 110};
    entry.header.moduleNumbers = {3};
    return entry;
}

constexpr int hour = 288166; // points in 3600 s

// Files of an hour each, one after the other.
RecordingSet hours(const QString &begin, int count)
{
    RecordingSet set;
    for (int i = 0; i < count; ++i) {
        set.entries.push_back(recording(begin, hour, QString("/data/%1.pnt").arg(i)));
        set.entries.back().begin = utc(begin).addSecs(3600 * i);
    }
    return set;
}

DayChoice choiceOf(const DayStart &start)
{
    DayChoice choice;
    choice.module = 3;
    choice.start = start;
    return choice;
}

DayChoice atPoint(int point)
{
    return choiceOf({StartKind::Point, point, {}, 0, {}});
}

} // namespace

class TestDayList : public QObject {
    Q_OBJECT

private slots:
    void acrossTheTurnOfTheHour();
    void starts();
    void joins();
    void leavesOut();
    void stepsOfEquallyManyFiles();
    void outside();
};

void TestDayList::acrossTheTurnOfTheHour()
{
    const RecordingSet set = hours("2015-04-01T23:00:00", 2);
    // In the middle at midnight, so half of the stretch lies in either file.
    const QDateTime midnight = utc("2015-04-02T00:00:00");
    const double delta = Tools::declinationOfDate({0, 0.6}, midnight.date());
    DayChoice choice = choiceOf({StartKind::Source, 0, {}, 0, {}});
    choice.start.source = {Tools::positionInBeam(midnight, delta).alfa, 0.6};
    choice.pointsAfter = 100;
    const DayList list = Days::findDays(set, choice);
    QCOMPARE(int(list.days.size()), 1);
    const std::vector<Days::DayPart> parts = list.days[0].parts;
    QCOMPARE(int(parts.size()), 2);
    QCOMPARE(parts[0].first + parts[0].count, hour);
    QCOMPARE(parts[1].first, 0);
    QCOMPARE(parts[0].count + parts[1].count, 16384 + 100);
    // The files themselves are 0.4 s short of an hour.
    QVERIFY(std::abs(parts[0].count - 8192) < 60);
    QVERIFY(list.leftOut.empty());
}

// On the second of three days of whole hours.
void TestDayList::starts()
{
    const RecordingSet set = hours("2015-04-01T00:00:00", 72);
    const auto secondDay = [&set](const DayStart &start, int days) {
        const DayList list = Days::findDays(set, choiceOf(start));
        return int(list.days.size()) == days ? list.days[1] : Day();
    };
    QCOMPARE(secondDay({StartKind::Point, 5000, {}, 0, {}}, 72).parts.at(0).first, 5000);
    for (const double clockOffset : {0.0, 2.5}) {
        const Day day = secondDay({StartKind::Utc, 0, QTime(10, 20, 30), 0, {}, clockOffset}, 3);
        const double seconds = day.begin.time().msecsSinceStartOfDay() / 1000.0;
        QVERIFY(std::abs(seconds - (37230 + clockOffset)) <= step);
    }
    const Day sidereal = secondDay({StartKind::Sidereal, 0, {}, 7.25, {}}, 3);
    QVERIFY(std::abs(Tools::localSiderealTime(sidereal.begin) - 7.25) * 3600 < 2 * step);

    const Tools::SkyPosition place = {Tools::rightAscensionOf("03:32:59.4"),
                                      Tools::declinationOf("54:34:43.6")};
    const Day day = secondDay({StartKind::Source, 0, {}, 0, place}, 3);
    const Tools::CulminationResult culmination =
        Tools::culminationFromCatalog("03:32:59", "54:34:44", "2015.04.02", 1, step, 4, 16384);
    QCOMPARE(day.parts.at(0).recording, 24 + culmination.time.left(2).toInt());
    QVERIFY(std::abs(day.parts[0].first - culmination.culminationPoint) < 0.5 / step);
}

void TestDayList::joins()
{
    struct Row {
        const char *second; // begin of the second file
        int points;         // of the first; 80046 are 999.9987 s
        bool isJoined;
    };
    for (const Row &row :
         {Row{"2015-04-01T10:16:40", 80046, true}, Row{"2015-04-01T10:16:41", 80046, false},
          Row{"2015-04-01T10:16:40", 79974, true}, // 0.9 s later
          Row{"2015-04-01T10:16:40.005", 80046, true},
          Row{"2015-04-01T10:16:40.015", 80046, false}}) {
        RecordingSet set;
        set.entries = {recording("2015-04-01T10:00:00", row.points), recording(row.second, 80046)};
        const Day day = Days::findDays(set, atPoint(70000)).days[0];
        QCOMPARE(day.reason.isEmpty(), row.isJoined);
        QCOMPARE(int(day.parts.size()), row.isJoined ? 2 : 0);
    }
}

void TestDayList::leavesOut()
{
    RecordingSet set = hours("2015-04-01T00:00:00", 3);
    const auto add = [&set](const char *begin, const QString &path = "/data/a.pnt") {
        set.entries.push_back(recording(begin, hour, path));
        return &set.entries.back();
    };
    add("2015-04-02T00:00:00")->header.tresolution = 0.1;
    add("2015-04-03T00:00:00")->header.fbands = {111, 109};
    add("2015-04-04T00:00:00")->header.moduleNumbers = {4};
    add("2015-04-04T00:00:00", "/data/b.pnt");
    add("2015-04-04T00:00:00", "/data/c.pnt");
    add("");
    RecordingEntry *const damaged = add("2015-04-05T00:00:00");
    damaged->state = RecordingState::Damaged;
    damaged->problem = "/data/a.pnt is damaged.";
    const DayList list = Days::findDays(set, choiceOf({StartKind::Utc, 0, QTime(1, 30), 0, {}}));
    QCOMPARE(int(list.days.size()), 1);
    const QStringList expected = {
        "another time of the day", "another time of the day", "step is 100 ms",
        "other frequencies",       "not hold module 3",       "another time of the day",
        "the same time: /data/b",  "no begin time",           "is damaged"};
    QCOMPARE(int(list.leftOut.size()), expected.size());
    for (int i = 0; i < expected.size(); ++i)
        QVERIFY2(list.leftOut[std::size_t(i)].reason.contains(expected[i]),
                 qPrintable(list.leftOut[std::size_t(i)].reason));
}

// Where equally many files have each of several steps, the files that hold the wanted time decide.
void TestDayList::stepsOfEquallyManyFiles()
{
    RecordingSet set = hours("2015-04-01T00:00:00", 1);
    set.entries.push_back(recording("2015-04-01T10:00:00", hour));
    set.entries.back().header.tresolution = 0.1;
    for (const auto &[time, wanted] : {std::pair(QTime(0, 30), step), {QTime(10, 30), 0.1}}) {
        const DayList list = Days::findDays(set, choiceOf({StartKind::Utc, 0, time, 0, {}}));
        QCOMPARE(int(list.days.size()), 1);
        QCOMPARE(list.tresolution, wanted);
        QVERIFY(list.leftOut.at(0).reason.contains("which 1 of 2 recordings have"));
    }
}

void TestDayList::outside()
{
    RecordingSet set = hours("2015-04-01T00:00:00", 1);
    DayChoice choice = atPoint(hour - 16384);
    QVERIFY(Days::findDays(set, choice).days[0].reason.isEmpty());
    choice.pointsAfter = 7;
    QVERIFY(Days::findDays(set, choice).days[0].reason.contains("ends 7 points after"));
    set.entries[0].state = RecordingState::Short;
    QVERIFY(Days::findDays(set, choice).days[0].reason.contains("which ends early"));
    choice.start.point = -1;
    QVERIFY(Days::findDays(set, choice).days[0].reason.contains("begins 1 points before"));
    QVERIFY(Days::findDays({}, choice).days.empty());
}

ZRT_UNIT_TEST_MAIN(TestDayList)
#include "tst_daylist.moc"
