#include "jobs/worker.h"

#include "support/testmain.h"

#include <QEventLoop>
#include <QThread>
#include <new>
#include <semaphore>
#include <stdexcept>
#include <thread>

using Jobs::Control;
using Jobs::Ending;
using Jobs::Worker;
using Deliver = Jobs::Deliver<QString>;

namespace {

// The owner of a worker, and what its thread hears, in order.
class Owner {
public:
    Owner()
    {
        QObject::connect(&worker, &Worker::progress,
                         [this](int percent) { hear(QString("%1 %").arg(percent)); });
        QObject::connect(&worker, &Worker::remark, [this](const QString &text) { hear(text); });
        QObject::connect(&worker, &Worker::ended, [this](const Ending &ending) {
            const char *const names[] = {"finished", "stopped", "failed"};
            hear(QString("%1 %2").arg(names[ending.kind], ending.problem).trimmed());
        });
    }

    template <typename Work>
    void start(Work work)
    {
        worker.start<QString>(work, [this](const QString &value) { hear(value); });
    }

    void hear(const QString &text)
    {
        heard << text;
        QCOMPARE(QThread::currentThread(), qApp->thread());
    }

    QStringList heard;
    Worker worker;
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
    void nothingArrivesAfterDestruction();
    void receiverRunsAnEventLoop();
    void exceptionsBecomeFailures();
};

void TestWorker::everythingArrivesInOrder()
{
    Owner owner;
    bool wasElsewhere = false;
    owner.start([&](const Control &control, const Deliver &deliver) {
        wasElsewhere = QThread::currentThread() != qApp->thread();
        control.progress(0);
        deliver("first");
        for (int i = 0; i < 1000; ++i)
            control.progress(50);
        control.remark("remark");
        deliver("second");
    });
    QVERIFY(owner.worker.isBusy());
    QTRY_VERIFY(!owner.worker.isBusy());
    QCOMPARE(owner.heard, QStringList({"0 %", "first", "50 %", "remark", "second", "finished"}));
    QVERIFY(wasElsewhere);
}

// When the second job is asked for, one value of the first has arrived and others wait in line.
void TestWorker::newestRequestCounts()
{
    Owner owner;
    std::binary_semaphore linedUp(0);
    owner.worker.start<QString>(
        [&](const Control &control, const Deliver &deliver) {
            deliver("old");
            control.progress(10);
            deliver("too late");
            linedUp.release();
            waitForStop(control);
            deliver("much too late");
        },
        [&](const QString &value) {
            owner.hear(value);
            linedUp.acquire();
            owner.start([](const Control &, const Deliver &send) { send("new"); });
        });
    QTRY_VERIFY(!owner.worker.isBusy());
    QCOMPARE(owner.heard, QStringList({"old", "new", "finished"}));
}

void TestWorker::requestsOneAfterTheOther()
{
    Owner owner;
    constexpr int requests = 500;
    for (int i = 1; i <= requests; ++i) {
        owner.start([i](const Control &control, const Deliver &deliver) {
            deliver(QString::number(i));
            if (i < requests)
                waitForStop(control);
        });
        if (i % 7 == 0)
            QCoreApplication::processEvents();
    }
    QTRY_VERIFY(!owner.worker.isBusy());
    QCOMPARE(owner.heard.takeLast(), QString("finished"));
    QCOMPARE(owner.heard.last().toInt(), requests);
    int last = 0;
    for (const QString &text : owner.heard) {
        QVERIFY(text.toInt() > last);
        last = text.toInt();
    }
}

void TestWorker::stopIsHeardOnce()
{
    Owner owner;
    owner.worker.stop(); // nothing runs
    owner.start([](const Control &control, const Deliver &deliver) {
        deliver("value");
        waitForStop(control);
        deliver("too late");
        control.progress(99);
    });
    QTRY_COMPARE(owner.heard, QStringList("value"));
    owner.worker.stop();
    owner.worker.stop();
    QVERIFY(owner.worker.isBusy());
    QTRY_VERIFY(!owner.worker.isBusy());
    QCOMPARE(owner.heard, QStringList({"value", "stopped"}));

    // The job is over, but its value waits in line: whoever stops it gets none any more.
    std::binary_semaphore over(0);
    owner.start([&](const Control &, const Deliver &deliver) {
        deliver("value");
        over.release();
    });
    over.acquire();
    owner.worker.stop();
    QTRY_VERIFY(!owner.worker.isBusy());
    QCOMPARE(owner.heard, QStringList({"value", "stopped", "stopped"}));

    owner.start([](const Control &, const Deliver &) {});
    owner.worker.stop(); // perhaps before the job began
    QTRY_VERIFY(!owner.worker.isBusy());
    QCOMPARE(owner.heard, QStringList({"value", "stopped", "stopped", "stopped"}));
}

// By the owner, or by a receiver of its first value.
void TestWorker::nothingArrivesAfterDestruction()
{
    for (int repetition = 0; repetition < 50; ++repetition) {
        const bool isByReceiver = repetition % 2 == 1;
        QStringList heard;
        auto worker = std::make_unique<Worker>();
        connect(worker.get(), &Worker::ended, this, [&] { heard << "ended"; });
        std::binary_semaphore begun(0);
        bool hasLeft = false;
        worker->start<QString>(
            [&](const Control &control, const Deliver &deliver) {
                deliver("first");
                deliver("second");
                begun.release();
                waitForStop(control);
                deliver("third");
                hasLeft = true;
            },
            [&](const QString &value) {
                heard << value;
                worker.reset();
            });
        begun.acquire();
        if (isByReceiver)
            QTRY_VERIFY(!worker);
        worker.reset();
        QVERIFY(hasLeft);
        QCoreApplication::processEvents();
        QCOMPARE(heard, isByReceiver ? QStringList("first") : QStringList());
    }
}

// A message box does that: what comes later arrives while it is open.
void TestWorker::receiverRunsAnEventLoop()
{
    Owner owner;
    QEventLoop loop;
    connect(&owner.worker, &Worker::ended, &loop, &QEventLoop::quit);
    owner.worker.start<QString>(
        [](const Control &, const Deliver &deliver) {
            deliver("first");
            deliver("second");
        },
        [&](const QString &value) {
            owner.hear(value);
            if (value == "first") {
                loop.exec();
                owner.hear("closed");
            }
        });
    QTRY_COMPARE(owner.heard, QStringList({"first", "second", "finished", "closed"}));
}

void TestWorker::exceptionsBecomeFailures()
{
    for (const bool isMemory : {true, false}) {
        Owner owner;
        owner.start([isMemory](const Control &, const Deliver &) {
            if (isMemory)
                throw std::bad_alloc();
            throw std::runtime_error("the reason");
        });
        QTRY_VERIFY(!owner.worker.isBusy());
        QCOMPARE(owner.heard.size(), 1);
        QVERIFY(owner.heard[0].startsWith(isMemory ? "failed There is not enough memory"
                                                   : "failed the reason"));
    }
}

ZRT_UNIT_TEST_MAIN(TestWorker)
#include "tst_worker.moc"
