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
    void initTestCase();
    void texts_data();
    void texts();
};

// Digits of its own and a comma for the point: no text may follow it.
void TestTexts::initTestCase()
{
    QLocale::setDefault(QLocale("ar_EG"));
    QCOMPARE(QLocale().toString(1.5), QString::fromUtf8("١٫٥"));
}

void TestTexts::texts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &text, const char *expected) {
        QTest::newRow(name) << text << QString::fromUtf8(expected);
    };

    row("hours: sign in front", hoursToText(-1.5), "-01:30:00");
    row("hours: cut off at every step", hoursToText(0.999999), "00:59:59");
    row("hours: exact in binary", hoursToText(23.4453125), "23:26:43"); // 43.125 s
    row("hours: below one, negative", hoursToText(-0.25), "-00:15:00");
    row("hours: no number", hoursToText(qQNaN()), "nan");
    row("hours: more than an integer holds", hoursToText(3e9), "3000000000:00:00");
    row("degrees", degreesToText(39.7478125), "39°44′52″"); // 52.125
    row("degrees: negative", degreesToText(-5.5), "-05°30′00″");
    row("degrees: three digits", degreesToText(180.0), "180°00′00″");
    row("degrees: no number", degreesToText(-qInf()), "-inf");

    row("seconds", secondsToHms(44000.66), "12:13:20.66");
    row("seconds: all fields padded", secondsToHms(3723.5), "01:02:03.50");
    row("seconds: two decimals are rounded", secondsToHms(59.996), "00:00:60.00");
    row("seconds: none", secondsToHms(0), "00:00:00.00");
    row("seconds: negative", secondsToHms(-3723.5), "-01:02:03.50");
    row("seconds: no number", secondsToHms(qQNaN()), "nan");

    row("angle of a time", angleTextFromTime("39:44:52"), "39°44′52″");
    row("angle of a time with fraction", angleTextFromTime("39:44:52.5"), "");
    row("angle of a short time", angleTextFromTime("9:44:52"), "");
    row("angle of foreign digits", angleTextFromTime(QString::fromUtf8("39:44:٥٢")), "");

    row("time: other separators", normalisedTime("03.23-27"), "03:23:27");
    row("time: last two characters", normalisedTime("03:23 and 27"), "03:23:27");
    row("time: empty", normalisedTime(""), "");
    row("time: no hour 24", normalisedTime("24:00:00"), "");

    row("loose time", normalisedLooseTime("7:5:3.25"), "07:05:03.25");
    row("loose time: whole", normalisedLooseTime("17:5:33"), "17:05:33");
    row("loose time: two fields", normalisedLooseTime("07:05"), "07:05");
    row("loose time: point without digits", normalisedLooseTime("7:5:3."), "7:5:3.");
    row("loose time: more around it", normalisedLooseTime("7:5:3 UTC"), "7:5:3 UTC");
    row("loose time: line end", normalisedLooseTime("7:5:3\n"), "7:5:3\n");

    row("next day: month", nextDay("2015.04.30"), "2015.05.01");
    row("next day: year", nextDay("1999.12.31"), "2000.01.01");
    row("next day: leap year", nextDay("2000.02.28"), "2000.02.29");
    row("next day: no leap year", nextDay("2100.02.28"), "2100.03.01");
    row("next day: no date", nextDay("2015.02.30"), "");
    row("file date", shortFileDate("2015.04.01"), "010415");
    row("file date: no date", shortFileDate("2015"), "");

    row("stamp: half minute", shiftedTimeStamp("120030"), "120200");
    row("stamp: whole minute", shiftedTimeStamp("120100"), "120230");
    row("stamp: minute 60", shiftedTimeStamp("125900"), "130030");
    row("stamp: minute 61, hour not wrapped", shiftedTimeStamp("235930"), "240100");
    row("stamp: off the grid", shiftedTimeStamp("125945"), "125945");
    row("stamp: five digits", shiftedTimeStamp("12003"), "");
    row("stamp: letters", shiftedTimeStamp("12o030"), "");

    row("source: north", pulsarNameFromCoords("03:23:27", "39:44:52"), "J0323+3944");
    row("source: south", pulsarNameFromCoords("03:23:27", "-05:10:00"), "J0323-0510");
    row("source: degree signs", pulsarNameFromCoords("03:23:27.00", "39°44′52.00″"), "J0323+3944");
    row("source: nan", pulsarNameFromCoords("nan", "nan"), "");
    row("source: empty", pulsarNameFromCoords("", ""), "");
    row("short name: four and six digits", shortSourceName("J0323+394452"), "J0323+3944");
    row("short name: two digits, south", shortSourceName("J0323-39 pulsar"), "J0323-39");
    row("short name: not at the start", shortSourceName("PSR J0323+3944"), "");

    row("site at the end of a path", ploshFromPath("/data/N2/2015_N1"), "N1");
    row("site between slashes", ploshFromPath("/data/N2/2015"), "N2");
    row("site between underscores", ploshFromPath("010415_17_N4_00.pnt"), "N4");
    row("no site N3", ploshFromPath("/data_N3"), "");
    row("no site N3, but another", ploshFromPath("/data/N0/run_N3"), "N0");
    row("the first name in between decides", ploshFromPath("/N3/N1/a"), "");
    row("site in a file name", ploshFromFileName("010415_17_N1_00.pnt"), "N1");
    row("site before the ending", ploshFromFileName("map_N0.txt"), "N0");
    row("no site N3 in a file name", ploshFromFileName("010415_17_N3_00.pnt"), "");
    row("cosine", QString::number(isCosCorrected("/a/map_cos.txt")), "1");
    row("no cosine", QString::number(isCosCorrected("/a/cos.txt")), "0");

    const QString file17 = "/fifteen letters/seventeen letters"; // 16 + 18 characters
    row("two levels, 34 characters", twoLevelTail("/a" + file17), file17.toUtf8());
    row("two levels, 35 characters", twoLevelTail("/a" + file17 + "."),
        "../fifteen letters/\n  /seventeen letters.");
    row("two levels, names with %1", twoLevelTail("/%2 quite a long directory name/%1 long name"),
        "../%2 quite a long directory name/\n  /%1 long name");
    row("two levels, one given", twoLevelTail("/file.pnt"), "/file.pnt");
    row("three levels", threeLevelTail("/a/b/c/d.pnt"), "/b/c/d.pnt");
    row("three levels, two given", threeLevelTail("/c/d.pnt"), "/c/d.pnt");

    row("spectrum of index 0", spectrumFileName(0, 0, 0), "f00_n0_av0.txt");
    row("spectrum of index 1", spectrumFileName(1, 2, 3), "f11_n2_av3.txt");
    row("spectrum of index -7", spectrumFileName(-7, 12, 4, "J0323"), "J0323_f07_n12_av4.txt");
    row("spectrum without ending", spectrumBaseName(12, 2, 3), "f112_n2_av3");
    row("spectrum with dispersion", dispersedSpectrumName(-1, 2, 3, 26), "f01_n2_av3_d26");
    row("map with median", harmonicMapFileName("J%2", 1, 2, 3, "median", 4),
        "map_J%2_np1_sp2_b3_median4.txt");
    row("map with polinom", harmonicMapFileName("J1", 1, 2, 3, "polinom", 4),
        "map_J1_np1_sp2_b3_polinom.txt");
    row("map with another baseline", harmonicMapFileName("J1", 1, 2, 3, "polinom5", 4), "");

    row("recording", dataFileName("2015.04.01", 12, 4, 1, 0.09), "010415_17_N1_00.pnt");
    row("recording of high resolution", dataFileName("2015.04.01", 4, 4, 2, 0.0899),
        "010415_09_N2_00.pnthr");
    row("recording: last hour of the day", dataFileName("2015.12.31", 18, 4, 1, 0.1),
        "311215_23_N1_00.pnt");
    row("recording: next day", dataFileName("2015.12.31", 19, 4, 1, 0.1), "010116_00_N1_00.pnt");
    row("recording: no date", dataFileName("yesterday", 19, 4, 1, 0.1), "");
    row("derived file", pnthrFileName("2015.12.31", 20, 4, 4), "010116_01_4_00.pnthr");
}

void TestTexts::texts()
{
    QFETCH(QString, text);
    QTEST(text, "expected");
}

ZRT_UNIT_TEST_MAIN(TestTexts)
#include "tst_texts.moc"
