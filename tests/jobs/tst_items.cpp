#include "jobs/items.h"
#include "jobs/memorygate.h"

#include "support/testmain.h"

#include <atomic>
#include <chrono>
#include <new>
#include <numeric>
#include <semaphore>
#include <thread>

using Jobs::Control;
using Jobs::Ending;
using Jobs::MemoryGate;
using Jobs::runItems;

class TestItems : public QObject {
    Q_OBJECT

private slots:
    void everyItemOnce();
    void itemsRunSideBySide();
    void failureStopsNoOther();
    void stopLeavesTheRest();
    void gateKeepsTheLimit();
    void gateLetsOneAlonePass();
};

void TestItems::everyItemOnce()
{
    for (const auto &[count, threads] : {std::pair(0, 3), {10, 1}, {2, 8}, {1000, 4}}) {
        std::vector<int> done(std::size_t(count), 0);
        std::vector<int> percents;
        int remarks = 0;
        Control control;
        control.progress = [&](int percent) { percents.push_back(percent); };
        control.remark = [&](const QString &) { ++remarks; };
        const std::vector<Ending> endings =
            runItems(count, threads, control, [&](int item, const Control &own) {
                ++done[std::size_t(item)];
                own.progress(70);
                own.progress(30); // an item that goes back does not take the whole back
                own.remark("remark");
            });
        QCOMPARE(done, std::vector<int>(std::size_t(count), 1));
        QCOMPARE(remarks, count);
        QCOMPARE(endings.size(), done.size());
        for (const Ending &ending : endings)
            QCOMPARE(ending.kind, Ending::Finished);
        QVERIFY(std::is_sorted(percents.begin(), percents.end(), std::less_equal<>()));
        QVERIFY(count == 0 || percents.back() == 100);
    }
}

// Each of two items waits for the other one to begin.
void TestItems::itemsRunSideBySide()
{
    std::counting_semaphore<2> begun[2] = {std::counting_semaphore<2>(0),
                                           std::counting_semaphore<2>(0)};
    std::atomic<int> met = 0;
    runItems(2, 2, {}, [&](int item, const Control &) {
        begun[item].release();
        met += begun[1 - item].try_acquire_for(std::chrono::seconds(20));
    });
    QCOMPARE(met.load(), 2);
}

void TestItems::failureStopsNoOther()
{
    const std::vector<Ending> endings = runItems(5, 2, {}, [](int item, const Control &) {
        if (item == 1)
            throw std::bad_alloc();
    });
    for (std::size_t item = 0; item < endings.size(); ++item)
        QCOMPARE(endings[item].kind, item == 1 ? Ending::Failed : Ending::Finished);
    QVERIFY(!endings[1].problem.isEmpty());
}

void TestItems::stopLeavesTheRest()
{
    std::atomic<bool> stopped = false;
    Control control;
    control.isStopped = [&] { return stopped.load(); };
    const std::vector<Ending> endings = runItems(10, 1, control, [&](int item, const Control &own) {
        QVERIFY(!own.isStopped());
        if (item == 3)
            stopped = true;
        QCOMPARE(own.isStopped(), item == 3);
    });
    for (std::size_t item = 0; item < endings.size(); ++item)
        QCOMPARE(endings[item].kind, item < 3 ? Ending::Finished : Ending::Stopped);
}

void TestItems::gateKeepsTheLimit()
{
    constexpr qint64 limit = 100;
    MemoryGate gate(limit);
    std::atomic<qint64> used = 0;
    std::atomic<qint64> most = 0;
    std::atomic<int> granted = 0;
    runItems(300, 4, {}, [&](int item, const Control &control) {
        const qint64 bytes = 10 + 13 * (item % 7);
        const MemoryGate::Pass pass(gate, bytes, control);
        granted += pass.isGranted();
        const qint64 now = used += bytes;
        qint64 known = most;
        while (known < now && !most.compare_exchange_weak(known, now)) {
        }
        std::this_thread::yield();
        used -= bytes;
    });
    QCOMPARE(granted.load(), 300);
    QVERIFY2(most <= limit, qPrintable(QString::number(most)));
}

void TestItems::gateLetsOneAlonePass()
{
    MemoryGate gate(100);
    // Estimates beyond the limit, too large to be added up included.
    for (const qint64 bytes : {qint64(101), std::numeric_limits<qint64>::max(), qint64(-5)})
        QVERIFY(MemoryGate::Pass(gate, bytes, {}).isGranted());
    // A waiter that is stopped leaves the room to others.
    Control stoppedLater;
    int asked = 0;
    stoppedLater.isStopped = [&] { return ++asked > 3; };
    const MemoryGate::Pass first(gate, 60, {});
    QVERIFY(!MemoryGate::Pass(gate, 60, stoppedLater).isGranted());
    QVERIFY(MemoryGate::Pass(gate, 40, {}).isGranted());
}

ZRT_UNIT_TEST_MAIN(TestItems)
#include "tst_items.moc"
