#include "coords/angletext.h"
#include "coords/datetext.h"
#include "coords/filenames.h"
#include "coords/sourcenames.h"
#include "support/testmain.h"

#include <QLocale>

using namespace Tools;

class TestTexts : public QObject {
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
};

void TestTexts::texts_data()
{
    // Digits of its own and a comma for the point: no text may follow it.
    QLocale::setDefault(QLocale("ar_EG"));
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &text, const char *expected) {
        QTest::newRow(name) << text << QString::fromUtf8(expected);
    };

    row("hours: sign in front", hoursToText(-1.5), "-01:30:00");
    row("hours: cut off at every step", hoursToText(0.999999), "00:59:59");
    row("seconds: negative", secondsToHms(-3723.5), "-01:02:03.50");

    row("degrees", degreesToText(-39.7478125), "-39°44′52″"); // 52.125
    row("angle of a time", angleTextFromTime("39:44:52"), "39°44′52″");
    row("angle of a time with a line end", angleTextFromTime("39:44:52\n"), "");
    row("angle of foreign digits", angleTextFromTime(QString::fromUtf8("39:44:٥٢")), "");

    row("time: other separators", normalisedTime("03.23-27"), "03:23:27");
    row("time: no hour 24", normalisedTime("24:00:00"), "");

    row("loose time", normalisedLooseTime("7:5:3.25"), "07:05:03.25");
    row("loose time with a line end", normalisedLooseTime("7:5:3\n"), "7:5:3\n");
    row("loose time: point without digits", normalisedLooseTime("7:5:3."), "7:5:3.");

    row("next day: no date", nextDay("2015.02.30"), "");
    row("file date", shortFileDate("2015.04.01"), "010415");

    row("stamp: half minute", shiftedTimeStamp("120030"), "120200");
    row("stamp: minute 61, hour not wrapped", shiftedTimeStamp("235930"), "240100");
    row("stamp: off the grid", shiftedTimeStamp("125945"), "125945");

    row("source: south", pulsarNameFromCoords("03:23:27", "-05:10:00"), "J0323-0510");
    row("source: nan", pulsarNameFromCoords("nan", "nan"), "");
    row("short name: two digits, south", shortSourceName("J0323-39 pulsar"), "J0323-39");

    row("site at the end of a path", ploshFromPath("/data/N2/2015_N1"), "N1");
    row("site before a line end", ploshFromPath("/data/N2/2015_N1\n"), "N2");
    row("no site N3, but another", ploshFromPath("/data/N0/run_N3"), "N0");
    row("the first name in between decides", ploshFromPath("/N3/N1/a"), "");

    row("no site N3 in a file name", ploshFromFileName("N1/010415_17_N3_00.N4"), "");
    row("site in a file name", ploshFromFileName("map_N0.txt"), "N0");
    const char longest[] = "/fifteen letters/seventeen letters"; // 16 + 18 characters
    row("two levels, 34 characters", twoLevelTail(QString("/a") + longest), longest);
    row("two levels, names with %1", twoLevelTail("/%2 quite a long directory name/%1 long name"),
        "../%2 quite a long directory name/\n  /%1 long name");

    row("spectrum of index -7", spectrumFileName(-7, 12, 4, "J0323"), "J0323_f07_n12_av4.txt");
    row("map with median", harmonicMapFileName("J%2", 1, 2, 3, "median", 4),
        "map_J%2_np1_sp2_b3_median4.txt");

    row("recording", dataFileName("2015.04.01", 12, 4, 1, 0.09), "010415_17_N1_00.pnt");
    row("recording of high resolution", dataFileName("2015.04.01", 4, 4, 2, 0.0899),
        "010415_09_N2_00.pnthr");
    row("recording: next day", dataFileName("2015.12.31", 19, 4, 1, 0.1), "010116_00_N1_00.pnt");
    row("derived file", pnthrFileName("2015.12.31", 20, 4, 4), "010116_01_4_00.pnthr");
}

void TestTexts::texts()
{
    QFETCH(QString, text);
    QTEST(text, "expected");
}

ZRT_UNIT_TEST_MAIN(TestTexts)
#include "tst_texts.moc"
