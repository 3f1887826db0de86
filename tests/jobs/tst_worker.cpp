#include "jobs/items.h"
#include "jobs/memorygate.h"
#include "jobs/worker.h"

#include "support/testmain.h"

#include <QEventLoop>
#include <QSignalSpy>
#include <QThread>
#include <new>
#include <semaphore>
#include <stdexcept>
#include <thread>

using Jobs::Control;
using Jobs::Deliver;
using Jobs::Ending;
using Jobs::Worker;

namespace {

// What the thread of a worker's owner hears, in order.
class Listener {
public:
    explicit Listener(Worker &worker)
    {
        QObject::connect(&worker, &Worker::progress, [this](int percent) {
            heard << QString("%1 %").arg(percent);
            checkThread();
        });
        QObject::connect(&worker, &Worker::remark, [this](const QString &text) { heard << text; });
        QObject::connect(&worker, &Worker::ended, [this](const Ending &ending) {
            const char *const names[] = {"finished", "stopped", "failed"};
            heard << names[ending.kind];
            problem = ending.problem;
            checkThread();
        });
    }

    auto receiver()
    {
        return [this](const QString &value) {
            heard << value;
            checkThread();
        };
    }

    QStringList heard;
    QString problem;
    bool isOwnThread = true;

private:
    void checkThread() { isOwnThread &= QThread::currentThread() == qApp->thread(); }
};

void waitForStop(const Control &control)
{
    while (!control.isStopped())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace

class TestWorker : public QObject {
    Q_OBJECT

private slots:
    void everythingArrivesInOrder();
    void newestRequestCounts();
    void requestsOneAfterTheOther();
    void stopIsHeardOnce();
    void stopAfterTheLastValueWasSent();
    void nothingArrivesAfterDestruction();
    void receiverDeletesTheWorker();
    void receiverRunsAnEventLoop();
    void productsArriveWhileTheRestRuns();
    void exceptionsBecomeFailures_data();
    void exceptionsBecomeFailures();
};

void TestWorker::everythingArrivesInOrder()
{
    Worker worker;
    Listener listener(worker);
    bool wasElsewhere = false;
    worker.start<QString>(
        [&](const Control &control, const Deliver<QString> &deliver) {
            wasElsewhere = QThread::currentThread() != qApp->thread();
            control.progress(0);
            deliver("first");
            for (int i = 0; i < 1000; ++i)
                control.progress(50);
            control.remark("remark");
            deliver("second");
            control.progress(100);
        },
        listener.receiver());
    QVERIFY(worker.isBusy());
    QTRY_VERIFY(!worker.isBusy());
    QCOMPARE(listener.heard,
             QStringList({"0 %", "first", "50 %", "remark", "second", "100 %", "finished"}));
    QVERIFY(wasElsewhere && listener.isOwnThread);
}

// Of the first job a value has arrived and others wait in line when the second one is asked for.
void TestWorker::newestRequestCounts()
{
    Worker worker;
    Listener listener(worker);
    std::binary_semaphore linedUp(0);
    worker.start<QString>(
        [&](const Control &control, const Deliver<QString> &deliver) {
            deliver("old");
            control.progress(10);
            deliver("too late");
            linedUp.release();
            waitForStop(control);
            deliver("much too late");
        },
        [&](const QString &value) {
            listener.heard << value;
            linedUp.acquire();
            worker.start<std::unique_ptr<int>>(
                [](const Control &, const Deliver<std::unique_ptr<int>> &deliver) {
                    deliver(std::make_unique<int>(7));
                },
                [&](const std::unique_ptr<int> &number) {
                    listener.heard << QString::number(*number);
                });
        });
    QTRY_VERIFY(!worker.isBusy());
    QCOMPARE(listener.heard, QStringList({"old", "7", "finished"}));
}

void TestWorker::requestsOneAfterTheOther()
{
    Worker worker;
    Listener listener(worker);
    constexpr int requests = 500;
    for (int i = 1; i <= requests; ++i) {
        worker.start<QString>(
            [i](const Control &control, const Deliver<QString> &deliver) {
                deliver(QString::number(i));
                if (i < requests)
                    waitForStop(control);
            },
            listener.receiver());
        if (i % 7 == 0)
            QCoreApplication::processEvents();
    }
    QTRY_VERIFY(!worker.isBusy());
    QCOMPARE(listener.heard.count("finished"), 1);
    QCOMPARE(listener.heard.mid(listener.heard.size() - 2),
             QStringList({QString::number(requests), "finished"}));
    int last = 0;
    for (const QString &text : listener.heard.mid(0, listener.heard.size() - 1)) {
        QVERIFY(text.toInt() > last);
        last = text.toInt();
    }
}

void TestWorker::stopIsHeardOnce()
{
    Worker worker;
    Listener listener(worker);
    worker.stop(); // nothing runs
    worker.start<QString>(
        [](const Control &control, const Deliver<QString> &deliver) {
            deliver("value");
            waitForStop(control);
            deliver("too late");
            control.progress(99);
        },
        listener.receiver());
    QTRY_COMPARE(listener.heard, QStringList("value"));
    worker.stop();
    worker.stop();
    QVERIFY(worker.isBusy());
    QTRY_VERIFY(!worker.isBusy());
    QCOMPARE(listener.heard, QStringList({"value", "stopped"}));

    // before it began
    worker.start<QString>([](const Control &, const Deliver<QString> &) {}, listener.receiver());
    worker.stop();
    QTRY_VERIFY(!worker.isBusy());
    QCOMPARE(listener.heard, QStringList({"value", "stopped", "stopped"}));
}

// The job is over, but its value waits in line: whoever stops it gets none any more.
void TestWorker::stopAfterTheLastValueWasSent()
{
    Worker worker;
    Listener listener(worker);
    const auto over = std::make_shared<std::binary_semaphore>(0);
    worker.start<QString>(
        [over](const Control &, const Deliver<QString> &deliver) {
            deliver("value");
            over->release();
        },
        listener.receiver());
    over->acquire();
    worker.stop();
    QTRY_VERIFY(!worker.isBusy());
    QCOMPARE(listener.heard, QStringList("stopped"));
}

void TestWorker::nothingArrivesAfterDestruction()
{
    for (int repetition = 0; repetition < 50; ++repetition) {
        QStringList heard;
        auto worker = std::make_unique<Worker>();
        QObject::connect(worker.get(), &Worker::ended, [&] { heard << "ended"; });
        std::binary_semaphore begun(0);
        bool hasLeft = false;
        worker->start<QString>(
            [&](const Control &control, const Deliver<QString> &deliver) {
                deliver("value");
                begun.release();
                waitForStop(control);
                deliver("value");
                hasLeft = true;
            },
            [&](const QString &value) { heard << value; });
        begun.acquire();
        worker.reset();
        QVERIFY(hasLeft);
        QCoreApplication::processEvents();
        QCOMPARE(heard, QStringList());
    }
}

void TestWorker::receiverDeletesTheWorker()
{
    auto *worker = new Worker;
    const QPointer<Worker> alive(worker);
    int received = 0;
    worker->start<int>(
        [](const Control &control, const Deliver<int> &deliver) {
            deliver(1);
            deliver(2);
            waitForStop(control);
        },
        [&](int) {
            ++received;
            delete worker;
        });
    QTRY_VERIFY(!alive);
    QCoreApplication::processEvents();
    QCOMPARE(received, 1);
}

// A message box does that: what comes later arrives while it is open.
void TestWorker::receiverRunsAnEventLoop()
{
    Worker worker;
    QStringList heard;
    QEventLoop loop;
    QObject::connect(&worker, &Worker::ended, [&] {
        heard << "ended";
        loop.quit();
    });
    worker.start<QString>(
        [](const Control &, const Deliver<QString> &deliver) {
            deliver("first");
            deliver("second");
        },
        [&](const QString &value) {
            heard << value;
            if (value == "first")
                loop.exec();
        });
    QTRY_VERIFY(!worker.isBusy());
    QCOMPARE(heard, QStringList({"first", "second", "ended"}));
}

// Many items in one job: the last one ends only after the window has got the others.
void TestWorker::productsArriveWhileTheRestRuns()
{
    constexpr int items = 20;
    Worker worker;
    std::vector<int> received;
    std::binary_semaphore othersAreThere(0);
    worker.start<int>(
        [&](const Control &control, const Deliver<int> &deliver) {
            Jobs::MemoryGate gate(100);
            Jobs::runItems(items, 3, control, [&](int item, const Control &own) {
                const Jobs::MemoryGate::Pass pass(gate, 30, own);
                if (item == 0)
                    othersAreThere.acquire();
                deliver(item);
            });
        },
        [&](int item) {
            received.push_back(item);
            if (received.size() == items - 1)
                othersAreThere.release();
        });
    QTRY_VERIFY(!worker.isBusy());
    QCOMPARE(received.size(), std::size_t(items));
    QCOMPARE(received.back(), 0);
}

void TestWorker::exceptionsBecomeFailures_data()
{
    QTest::addColumn<bool>("isMemory");
    QTest::addColumn<QString>("begin");
    QTest::newRow("no memory") << true << "There is not enough memory";
    QTest::newRow("other") << false << "the reason";
}

void TestWorker::exceptionsBecomeFailures()
{
    QFETCH(bool, isMemory);
    QFETCH(QString, begin);
    Worker worker;
    Listener listener(worker);
    worker.start<QString>(
        [isMemory](const Control &, const Deliver<QString> &) {
            if (isMemory)
                throw std::bad_alloc();
            throw std::runtime_error("the reason");
        },
        listener.receiver());
    QTRY_VERIFY(!worker.isBusy());
    QCOMPARE(listener.heard, QStringList("failed"));
    QVERIFY2(listener.problem.startsWith(begin), qPrintable(listener.problem));
}

ZRT_UNIT_TEST_MAIN(TestWorker)
#include "tst_worker.moc"
