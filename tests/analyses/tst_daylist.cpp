#include "analyses/days/daylist.h"
#include "coords/coordinates.h"
#include "coords/skyclock.h"
#include "support/testmain.h"

#include <cmath>

using Days::Day;
using Days::DayChoice;
using Days::DayList;
using Days::StartKind;

Q_DECLARE_METATYPE(StartKind)

namespace {

constexpr double step = 0.0124928; // s

QDateTime utc(const QString &text)
{
    QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    time.setTimeSpec(Qt::UTC);
    return time;
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

DayChoice sourceAt(double alfa, double delta)
{
    DayChoice choice;
    choice.module = 3;
    choice.ray = 5;
    choice.start.kind = StartKind::Source;
    choice.start.source = {alfa, delta};
    return choice;
}

} // namespace

class TestDayList : public QObject {
    Q_OBJECT

private slots:
    void oneDayPerPassage();
    void acrossTheTurnOfTheHour();
    void startsOfTheCalculator();
    void startsByTheClocks_data();
    void startsByTheClocks();
    void joins_data();
    void joins();
    void leavesOut();
    void outside();
};

// A year of whole days has one passage more than days.
void TestDayList::oneDayPerPassage()
{
    const RecordingSet set = hours("2015-01-01T00:00:00", 24 * 365);
    const DayList list = Days::findDays(set, sourceAt(1.2, 0.9));
    QCOMPARE(int(list.days.size()), 366);
    QDate last;
    int twice = 0;
    for (const Day &day : list.days) {
        QVERIFY2(day.reason.isEmpty(), qPrintable(day.reason));
        twice += day.begin.date() == last;
        last = day.begin.date();
        const QDateTime middle = day.begin.addMSecs(qint64(16384 * step * 500));
        QVERIFY(Tools::separation(
                    Tools::positionInBeam(middle, Tools::declinationOfDate({1.2, 0.9}, last)),
                    {1.2, 0.9}) < 2e-6);
    }
    QCOMPARE(twice, 1);
}

void TestDayList::acrossTheTurnOfTheHour()
{
    RecordingSet set = hours("2015-04-01T23:00:00", 2);
    // In the middle at midnight, so half of the stretch lies in either file.
    DayChoice choice = sourceAt(0, 0.6);
    const QDateTime midnight = utc("2015-04-02T00:00:00");
    choice.start.source.alfa =
        Tools::positionInBeam(midnight, Tools::declinationOfDate({0, 0.6}, midnight.date())).alfa;
    choice.pointsAfter = 100;
    DayList list = Days::findDays(set, choice);
    QCOMPARE(int(list.days.size()), 1);
    const std::vector<Days::DayPart> parts = list.days[0].parts;
    QCOMPARE(int(parts.size()), 2);
    QCOMPARE(parts[0].first + parts[0].count, hour);
    QCOMPARE(parts[1].first, 0);
    QCOMPARE(parts[0].count + parts[1].count, 16384 + 100);
    QVERIFY(std::abs(parts[0].count - 8192) <
            60); // the files' own length is 0.4 s short of an hour
    QVERIFY(list.leftOut.empty());
    // Cut by a gap of two seconds the stretch lies in no file whole.
    set.entries[1].begin = set.entries[1].begin.addSecs(2);
    list = Days::findDays(set, choice);
    QVERIFY(list.days.empty() || !list.days[0].reason.isEmpty());
}

void TestDayList::startsOfTheCalculator()
{
    const RecordingSet set = hours("2015-04-01T00:00:00", 24);
    const DayList list = Days::findDays(
        set, sourceAt(Tools::rightAscensionOf("03:32:59.4"), Tools::declinationOf("54:34:43.6")));
    QCOMPARE(int(list.days.size()), 1);
    const Tools::CulminationResult culmination =
        Tools::culminationFromCatalog("03:32:59", "54:34:44", "2015.04.01", 1, step, 4, 16384);
    const Days::DayPart part = list.days[0].parts[0];
    QCOMPARE(part.recording, culmination.time.left(2).toInt());
    QVERIFY(std::abs(part.first - culmination.culminationPoint) < 0.5 / step);
}

void TestDayList::startsByTheClocks_data()
{
    QTest::addColumn<StartKind>("kind");
    QTest::addColumn<double>("clockOffset");
    QTest::addColumn<int>("days");
    QTest::newRow("a point of each file") << StartKind::Point << 0.0 << 72;
    QTest::newRow("UTC") << StartKind::Utc << 0.0 << 3;
    QTest::newRow("UTC, clock ahead") << StartKind::Utc << 2.5 << 3;
    QTest::newRow("sidereal time") << StartKind::Sidereal << 0.0 << 3;
}

void TestDayList::startsByTheClocks()
{
    QFETCH(StartKind, kind);
    QFETCH(double, clockOffset);
    QFETCH(int, days);
    const RecordingSet set = hours("2015-04-01T00:00:00", 72);
    DayChoice choice;
    choice.module = 3;
    choice.start = {kind, 5000, QTime(10, 20, 30), 7.25, {}, clockOffset};
    const DayList list = Days::findDays(set, choice);
    QCOMPARE(int(list.days.size()), days);
    const Day &day = list.days[1];
    const double secondsAfterHour = day.begin.time().msecsSinceStartOfDay() / 1000.0;
    if (kind == StartKind::Point)
        QCOMPARE(day.parts[0].first, 5000);
    else if (kind == StartKind::Utc)
        QVERIFY(std::abs(secondsAfterHour - (10 * 3600 + 20 * 60 + 30 + clockOffset)) <= step);
    else
        QVERIFY(std::abs(Tools::localSiderealTime(day.begin) - 7.25) * 3600 < 2 * step);
}

void TestDayList::joins_data()
{
    QTest::addColumn<QString>("second");
    QTest::addColumn<int>("points");
    QTest::addColumn<int>("parts");
    // 80046 points are 999.9987 s.
    QTest::newRow("at once") << "2015-04-01T10:16:40" << 80046 << 2;
    QTest::newRow("a second later") << "2015-04-01T10:16:41" << 80046 << 1;
    QTest::newRow("0.9 s later") << "2015-04-01T10:16:40" << 79974 << 2;
    QTest::newRow("with fractions") << "2015-04-01T10:16:40.005" << 80046 << 2;
    QTest::newRow("with fractions, too late") << "2015-04-01T10:16:40.015" << 80046 << 1;
}

void TestDayList::joins()
{
    QFETCH(QString, second);
    QFETCH(int, points);
    QFETCH(int, parts);
    RecordingSet set;
    set.entries = {recording("2015-04-01T10:00:00", points), recording(second, 80046)};
    DayChoice choice;
    choice.module = 3;
    choice.start.point = 70000;
    const Day day = Days::findDays(set, choice).days[0];
    QCOMPARE(day.reason.isEmpty(), parts == 2);
    QCOMPARE(int(day.parts.size()), parts == 2 ? 2 : 0);
}

void TestDayList::leavesOut()
{
    RecordingSet set = hours("2015-04-01T00:00:00", 3);
    set.entries.push_back(recording("2015-04-02T00:00:00", hour));
    set.entries.back().header.tresolution = 0.1;
    set.entries.push_back(recording("2015-04-03T00:00:00", hour));
    set.entries.back().header.fbands = {111, 109};
    set.entries.push_back(recording("2015-04-04T00:00:00", hour));
    set.entries.back().header.moduleNumbers = {4};
    set.entries.push_back(recording("2015-04-04T00:00:00", hour, "/data/b.pnt"));
    set.entries.push_back(recording("2015-04-04T00:00:00", hour, "/data/c.pnt"));
    set.entries.push_back(recording("", hour));
    set.entries.push_back(recording("2015-04-05T00:00:00", hour));
    set.entries.back().state = RecordingState::Damaged;
    set.entries.back().problem = "/data/a.pnt is damaged.";
    DayChoice choice;
    choice.module = 3;
    choice.start.kind = StartKind::Utc;
    choice.start.utc = QTime(1, 30);
    const DayList list = Days::findDays(set, choice);
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

void TestDayList::outside()
{
    RecordingSet set = hours("2015-04-01T00:00:00", 1);
    DayChoice choice;
    choice.module = 3;
    choice.start.point = hour - 16384;
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
