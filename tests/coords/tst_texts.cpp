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
    void texts();
};

void TestTexts::texts()
{
    // Digits of its own and a comma for the point: no text may follow it.
    QLocale::setDefault(QLocale("ar_EG"));
    const char longest[] = "/fifteen letters/seventeen letters"; // 16 + 18 characters
    const std::pair<QString, QString> rows[] = {
        {hoursToText(-1.5), "-01:30:00"},
        {hoursToText(0.999999), "00:59:59"}, // cut off at every step
        {secondsToHms(-3723.5), "-01:02:03.50"},
        {degreesToText(-39.7478125), "-39°44′52″"}, // 52.125
        {angleTextFromTime("39:44:52"), "39°44′52″"},
        {angleTextFromTime("39:44:52\n"), ""},
        {angleTextFromTime(QString::fromUtf8("39:44:٥٢")), ""},
        {normalisedTime("03.23-27"), "03:23:27"},
        {normalisedTime("24:00:00"), ""},
        {normalisedLooseTime("7:5:3.25"), "07:05:03.25"},
        {normalisedLooseTime("7:5:3\n"), "7:5:3\n"},
        {normalisedLooseTime("7:5:3."), "7:5:3."},
        {nextDay("2015.02.30"), ""},
        {shortFileDate("2015.04.01"), "010415"},
        {shiftedTimeStamp("120030"), "120200"}, // half minute
        {shiftedTimeStamp("235930"), "240100"}, // minute 61, hour not wrapped
        {shiftedTimeStamp("125945"), "125945"}, // off the grid
        {pulsarNameFromCoords("03:23:27", "-05:10:00"), "J0323-0510"},
        {pulsarNameFromCoords("nan", "nan"), ""},
        {shortSourceName("J0323-39 pulsar"), "J0323-39"},
        {ploshFromPath("/data/N2/2015_N1"), "N1"}, // site at the end of a path
        {ploshFromPath("/data/N2/2015_N1\n"), "N2"},
        {ploshFromPath("/data/N0/run_N3"), "N0"},         // no site N3, but another
        {ploshFromPath("/N3/N1/a"), ""},                  // the first name in between decides
        {ploshFromFileName("N1/010415_17_N3_00.N4"), ""}, // no site N3 in a file name
        {ploshFromFileName("map_N0.txt"), "N0"},          // site in a file name
        {twoLevelTail(QString("/a") + longest), longest}, // 34 characters
        // names with %1
        {twoLevelTail("/%2 quite a long directory name/%1 long name"),
         "../%2 quite a long directory name/\n  /%1 long name"},
        {spectrumFileName(-7, 12, 4, "J0323"), "J0323_f07_n12_av4.txt"},
        {harmonicMapFileName("J%2", 1, 2, 3, "median", 4), "map_J%2_np1_sp2_b3_median4.txt"},
        {dataFileName("2015.04.01", 12, 4, 1, 0.09), "010415_17_N1_00.pnt"},
        // of high resolution
        {dataFileName("2015.04.01", 4, 4, 2, 0.0899), "010415_09_N2_00.pnthr"},
        {dataFileName("2015.12.31", 19, 4, 1, 0.1), "010116_00_N1_00.pnt"}, // the next day
        {pnthrFileName("2015.12.31", 20, 4, 4), "010116_01_4_00.pnthr"},
    };
    for (const auto &[text, expected] : rows)
        QCOMPARE(text, expected);
}

ZRT_UNIT_TEST_MAIN(TestTexts)
#include "tst_texts.moc"
