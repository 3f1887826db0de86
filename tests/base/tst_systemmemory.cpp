#include "base/systemmemory.h"
#include "support/testmain.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QTemporaryDir>
#include <limits>

// Control groups as the kernel shows them, in a folder of the test.
class TestSystemMemory : public QObject {
    Q_OBJECT

private slots:
    void groups_data();
    void groups();
    void ofThisMachine();
};

using Files = QMap<QString, QByteArray>;
Q_DECLARE_METATYPE(Files)

void TestSystemMemory::groups_data()
{
    QTest::addColumn<QByteArray>("membership");
    QTest::addColumn<Files>("files");
    QTest::addColumn<qint64>("left");
    const qint64 noLimit = std::numeric_limits<qint64>::max();

    QTest::newRow("no group") << QByteArray("") << Files() << noLimit;
    QTest::newRow("a group without a limit")
        << QByteArray("0::/job\n")
        << Files{{"job/memory.max", "max\n"}, {"job/memory.current", "500\n"}} << noLimit;
    const Files job = {{"job/memory.max", "1000\n"},
                       {"job/memory.current", "700\n"},
                       {"job/memory.stat", "anon 400\nfile 300\ninactive_file 200\n"}};
    QTest::newRow("the file cache makes room") << QByteArray("0::/job\n") << job << qint64(500);
    Files step = job;
    step["job/step/memory.max"] = "5000\n";
    step["job/step/memory.current"] = "100\n";
    QTest::newRow("the group around it is tighter")
        << QByteArray("0::/job/step\n") << step << qint64(500);
    step["memory.max"] = "800\n";
    step["memory.current"] = "790\n";
    QTest::newRow("the uppermost one is tightest")
        << QByteArray("0::/job/step\n") << step << qint64(10);
    Files full = job;
    full["job/memory.current"] = "1200\n";
    full["job/memory.stat"] = "inactive_file 50\n";
    QTest::newRow("more used than allowed") << QByteArray("0::/job\n") << full << qint64(0);
    full["job/memory.stat"] = "inactive_file 9000\n";
    QTest::newRow("no more cache than is used") << QByteArray("0::/job\n") << full << qint64(1000);

    const Files old = {{"memory/slurm/memory.limit_in_bytes", "1000\n"},
                       {"memory/slurm/memory.usage_in_bytes", "600\n"},
                       {"memory/slurm/memory.stat", "inactive_file 1\ntotal_inactive_file 100\n"}};
    QTest::newRow("version 1") << QByteArray("5:cpu,cpuacct:/slurm\n4:memory:/slurm\n0::/\n") << old
                               << qint64(500);
    QTest::newRow("version 1, a controller of another name")
        << QByteArray("4:memory_recursive:/slurm\n") << old << noLimit;
    Files damaged = job;
    damaged["job/memory.current"] = "many\n";
    QTest::newRow("no numbers") << QByteArray("0::/job\n") << damaged << noLimit;
}

void TestSystemMemory::groups()
{
    QFETCH(QByteArray, membership);
    QFETCH(Files, files);
    QFETCH(qint64, left);
    const QTemporaryDir folder;
    files["membership"] = membership;
    for (auto file = files.begin(); file != files.end(); ++file) {
        const QString path = folder.filePath(file.key());
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile out(path);
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write(*file) == file->size());
    }
    QCOMPARE(groupMemoryLeft(folder.filePath("membership"), folder.path()), left);
}

void TestSystemMemory::ofThisMachine()
{
    QVERIFY(availableMemory() > 0);
    QVERIFY(hasMemoryFor(1000));
    QVERIFY(!hasMemoryFor(1e18));
}

ZRT_UNIT_TEST_MAIN(TestSystemMemory)
#include "tst_systemmemory.moc"
