#include "data/recordingset.h"

#include "base/process.h"
#include "data/recordingfile.h"
#include "data/truenumbers.h"
#include "support/recordings.h"
#include "support/testmain.h"

#include <QDir>

namespace {

// A recording of two points, one module, ray and band, that begins at a clock time.
QByteArray recordingAt(const QByteArray &clock)
{
    return TestSupport::passportBytes({"npoints 2", "nbands 1", "fbands 111.5", "modulus 3",
                                       "rays 1", "tresolution 12.5", "date_begin 01.04.2015",
                                       "time_begin " + clock}) +
           QByteArray(2 * 2 * 4, '\0');
}

QStringList namesOf(const RecordingSet &set, const QString &folder)
{
    QStringList names;
    for (const RecordingEntry &entry : set.entries)
        names << QDir(folder).relativeFilePath(entry.path);
    return names;
}

} // namespace

class TestRecordingSet : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { setUpProcess(); }
    void init();
    void folderInOrderOfTime();
    void subfoldersAndLinks();
    void listHasEachFileOnce();
    void manyHeadersKeepTheirPlaces();
    void stoppedReadingHasNoEntries();

private:
    std::unique_ptr<QTemporaryDir> folder; // of one test
};

void TestRecordingSet::init()
{
    folder = std::make_unique<QTemporaryDir>();
}

void TestRecordingSet::folderInOrderOfTime()
{
    TestSupport::writeFile(*folder, "a.pnt", recordingAt("12:00:00.5 UTC"));
    TestSupport::writeFile(*folder, "b.pnthr", recordingAt("12:00:00.2 UTC"));
    TestSupport::writeFile(*folder, "c.PNT", recordingAt("11:00:00 UTC"));
    TestSupport::writeFile(*folder, "d.pnt", recordingAt("13:00:00 UTC").chopped(1));
    TestSupport::writeFile(*folder, "e.pnt", "no passport at all");
    TestSupport::writeFile(*folder, "f.pnt", recordingAt("unknown"));
    TestSupport::writeFile(*folder, "g.txt", recordingAt("12:00:00 UTC"));
    TestSupport::writeFile(*folder, "h.pnt", recordingAt("11:00:00 UTC"));
    QVERIFY(QFile::link("gone", folder->filePath("i.pnt")));
    QTest::ignoreMessage(QtDebugMsg, "Error! No channels in file!");
    const RecordingSet set = recordingsOfFolder(folder->path(), false);
    QVERIFY(!set.wasStopped);
    QCOMPARE(namesOf(set, folder->path()), QStringList({"c.PNT", "h.pnt", "b.pnthr", "a.pnt",
                                                        "d.pnt", "e.pnt", "f.pnt", "i.pnt"}));
    using State = RecordingState;
    const State states[] = {State::Whole, State::Whole,   State::Whole, State::Whole,
                            State::Short, State::Damaged, State::Whole, State::Unreadable};
    for (std::size_t i = 0; i < set.entries.size(); ++i) {
        const RecordingEntry &entry = set.entries[i];
        QCOMPARE(entry.state, states[i]);
        QCOMPARE(entry.problem.isEmpty(), entry.state == State::Whole);
        QVERIFY(entry.problem.isEmpty() || entry.problem.contains(entry.path));
    }
    const RecordingEntry &ends = set.entries[4];
    QCOMPARE(ends.completePoints, 1);
    QCOMPARE(ends.announcedSize, ends.size + 1);
    QCOMPARE(moduleNumber(ends.header, 0), 3);
    QVERIFY(!ends.header.samples);
}

void TestRecordingSet::subfoldersAndLinks()
{
    const QDir top(folder->path());
    QVERIFY(top.mkpath("one/two") && top.mkpath("looks_like.pnt"));
    TestSupport::writeFile(*folder, "a.pnt", recordingAt("12:00:03 UTC"));
    TestSupport::writeFile(*folder, "one/b.pnt", recordingAt("12:00:02 UTC"));
    TestSupport::writeFile(*folder, "one/two/c.pnt", recordingAt("12:00:01 UTC"));
    QVERIFY(QFile::link(top.path(), top.filePath("one/two/back")));
    QVERIFY(QFile::link("a.pnt", top.filePath("z.pnt")));
    QCOMPARE(namesOf(recordingsOfFolder(top.path(), false), top.path()), QStringList("a.pnt"));
    QCOMPARE(namesOf(recordingsOfFolder(top.path(), true), top.path()),
             QStringList({"one/two/c.pnt", "one/b.pnt", "a.pnt"}));

    const RecordingSet set = recordingsOfFolder(folder->filePath("none"), true);
    QCOMPARE(namesOf(set, folder->path()), QStringList("none"));
    QCOMPARE(set.entries[0].state, RecordingState::Unreadable);
    QVERIFY(set.entries[0].problem.contains("is not there"));
}

void TestRecordingSet::listHasEachFileOnce()
{
    const QString path = TestSupport::writeFile(*folder, "a.pnt", recordingAt("12:00:03 UTC"));
    const QString link = folder->filePath("link.pnt");
    QVERIFY(QFile::link(path, link));
    const QString gone = folder->filePath("gone.pnt");
    const RecordingSet set = recordingsOfFiles(
        {link, path, folder->path() + "/./a.pnt", gone, QDir::current().relativeFilePath(gone)});
    QCOMPARE(namesOf(set, folder->path()), QStringList({"link.pnt", "gone.pnt"}));
}

// Read side by side, each header as it is read alone.
void TestRecordingSet::manyHeadersKeepTheirPlaces()
{
    QStringList paths;
    for (int i = 0; i < 200; ++i) {
        const QByteArray clock = QTime(0, 0).addSecs(i * 7919 % 86400).toString().toLatin1();
        const QByteArray points = i % 10 == 9 ? "npoints many" : "npoints 2";
        paths << TestSupport::writeFile(*folder, QString("%1.pnt").arg(i),
                                        recordingAt(clock + " UTC").replace("npoints 2", points));
    }
    const std::vector<RecordingEntry> entries = readHeaders(paths);
    QCOMPARE(int(entries.size()), paths.size());
    for (int i = 0; i < paths.size(); ++i) {
        RecordingFile file;
        file.open(paths[i]);
        const RecordingEntry &entry = entries[std::size_t(i)];
        QCOMPARE(entry.path, paths[i]);
        QCOMPARE(entry.header.beginTime, file.header().beginTime);
        QCOMPARE(entry.size, file.size());
        QCOMPARE(entry.problem, file.reason());
    }
}

void TestRecordingSet::stoppedReadingHasNoEntries()
{
    TestSupport::writeFile(*folder, "a.pnt", recordingAt("12:00:00 UTC"));
    Jobs::Control control;
    control.isStopped = [] { return true; };
    const RecordingSet set = recordingsOfFolder(folder->path(), true, control);
    QVERIFY(set.wasStopped);
    QVERIFY(set.entries.empty());
}

ZRT_UNIT_TEST_MAIN(TestRecordingSet)
#include "tst_recordingset.moc"
