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
    void groups();
    void ofThisMachine();
};

using Files = QMap<QString, QByteArray>;

void TestSystemMemory::groups()
{
    const qint64 noLimit = std::numeric_limits<qint64>::max();
    const Files job = {{"job/memory.max", "1000\n"},
                       {"job/memory.current", "700\n"},
                       {"job/memory.stat", "anon 400\nfile 300\ninactive_file 200\n"}};
    const auto with = [](Files files, const Files &more) {
        for (auto file = more.begin(); file != more.end(); ++file)
            files[file.key()] = *file;
        return files;
    };
    const Files step =
        with(job, {{"job/step/memory.max", "5000\n"}, {"job/step/memory.current", "100\n"}});
    const Files old = {{"memory/slurm/memory.limit_in_bytes", "1000\n"},
                       {"memory/slurm/memory.usage_in_bytes", "600\n"},
                       {"memory/slurm/memory.stat", "inactive_file 1\ntotal_inactive_file 100\n"}};
    const std::tuple<QByteArray, Files, qint64> cases[] = {
        {"", {}, noLimit},
        {"0::/job\n", with(job, {{"job/memory.max", "max\n"}}), noLimit},
        {"0::/job\n", job, 500},       // the file cache makes room
        {"0::/job/step\n", step, 500}, // the group around it is tighter
        {"0::/job/step\n", with(step, {{"memory.max", "800\n"}, {"memory.current", "790\n"}}), 10},
        {"0::/job\n", with(job, {{"job/memory.current", "1300\n"}}), 0},
        // No more cache than is used.
        {"0::/job\n", with(job, {{"job/memory.stat", "inactive_file 9000\n"}}), 1000},
        {"0::/job\n", with(job, {{"job/memory.current", "many\n"}}), noLimit},
        {"5:cpu,cpuacct:/slurm\n4:memory:/slurm\n0::/\n", old, 500}, // version 1
        {"4:memory_recursive:/slurm\n", old, noLimit},
    };
    for (const auto &[membership, files, left] : cases) {
        const QTemporaryDir folder;
        const Files all = with(files, {{"membership", membership}});
        for (auto file = all.begin(); file != all.end(); ++file) {
            const QString path = folder.filePath(file.key());
            QVERIFY(QDir().mkpath(QFileInfo(path).path()));
            QFile out(path);
            QVERIFY(out.open(QIODevice::WriteOnly) && out.write(*file) == file->size());
        }
        QCOMPARE(groupMemoryLeft(folder.filePath("membership"), folder.path()), left);
    }
}

void TestSystemMemory::ofThisMachine()
{
    QVERIFY(availableMemory() > 0);
    QVERIFY(hasMemoryFor(1000));
    QVERIFY(!hasMemoryFor(1e18));
}

ZRT_UNIT_TEST_MAIN(TestSystemMemory)
#include "tst_systemmemory.moc"
