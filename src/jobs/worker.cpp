#include "jobs/worker.h"

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

namespace Jobs {

namespace {

QEvent::Type arrivalType()
{
    static const int type = QEvent::registerEventType();
    return QEvent::Type(type);
}

} // namespace

// Holds the job that waits to begin and the calls that wait for the window. Calls stand in a list
// of our own, and the event loop is only woken, so that calls of a job that nobody wants any more
// can be taken out again.
class Worker::Line {
public:
    explicit Line(Worker &worker) : owner(worker) {}

    ~Line()
    {
        {
            const std::lock_guard lock(mutex);
            isClosed = true;
            wanted = 0;
        }
        wake.notify_one();
        if (thread.joinable())
            thread.join();
    }

    void put(Job job)
    {
        std::deque<Arrival> dropped; // destroyed without the lock, for it may hold large values
        {
            const std::lock_guard lock(mutex);
            dropped.swap(arrivals);
            std::swap(next, job); // the one that never began goes too
            wanted = ++newest;
        }
        wake.notify_one();
        if (!thread.joinable())
            startThread();
    }

    // Only the call that tells the end stays.
    void stop()
    {
        std::deque<Arrival> dropped;
        const std::lock_guard lock(mutex);
        wanted = 0;
        const auto isEnd = [](const Arrival &arrival) { return arrival.isEnd; };
        const auto end = std::find_if(arrivals.begin(), arrivals.end(), isEnd);
        dropped.swap(arrivals);
        if (end != dropped.end())
            arrivals.push_back(std::move(*end));
    }

    // One call for each wake-up: it may stop the job, start another one, run an event loop, in
    // which the next call comes, or delete the worker.
    void deliverNext()
    {
        Call call;
        {
            const std::lock_guard lock(mutex);
            isWoken = false;
            if (arrivals.empty())
                return;
            call = std::move(arrivals.front().call);
            arrivals.pop_front();
            if (!arrivals.empty())
                wakeOwner();
        }
        call();
    }

private:
    struct Arrival {
        Call call;
        bool isEnd = false;
    };

    void startThread()
    {
        try {
            thread = std::thread([this] { work(); });
        } catch (const std::system_error &) {
            const Ending ending = {Ending::Failed,
                                   "The system allows no further thread. Close other programs."};
            push(newest, {[this, ending] { owner.finish(ending); }, true});
        }
    }

    void work()
    {
        for (;;) {
            Job job;
            int number = 0;
            {
                std::unique_lock lock(mutex);
                wake.wait(lock, [this] { return isClosed || next; });
                if (isClosed)
                    return;
                std::swap(job, next);
                number = newest;
            }
            Ending ending;
            if (wanted == number)
                ending = run(job, number);
            job = nullptr; // its memory is free when the end is told
            push(number, {[this, ending] { owner.finish(ending); }, true});
        }
    }

    Ending run(const Job &job, int number)
    {
        std::atomic<int> lastPercent = -1;
        const Post post = [this, number](Call call) { push(number, {std::move(call), false}); };
        Control control;
        control.isStopped = [this, number] { return wanted != number; };
        control.progress = [&](int percent) {
            if (lastPercent.exchange(percent) != percent)
                post([this, percent] { emit owner.progress(percent); });
        };
        control.remark = [&](const QString &text) {
            post([this, text] { emit owner.remark(text); });
        };
        return runGuarded([&] { job(control, post); });
    }

    void push(int number, Arrival arrival)
    {
        const std::lock_guard lock(mutex);
        if (isClosed || number != (arrival.isEnd ? newest : wanted.load()))
            return;
        arrivals.push_back(std::move(arrival));
        wakeOwner();
    }

    void wakeOwner()
    {
        if (!isWoken)
            QCoreApplication::postEvent(&owner, new QEvent(arrivalType()));
        isWoken = true;
    }

    Worker &owner;
    std::atomic<int> wanted = 0; // number of the job that may go on; 0: none

    std::mutex mutex; // of what follows
    std::condition_variable wake;
    Job next;
    int newest = 0; // number of the last job that was put here
    bool isClosed = false;
    std::deque<Arrival> arrivals;
    bool isWoken = false;

    std::thread thread; // begins with the first job
};

Worker::Worker(QObject *parent) : QObject(parent), line(std::make_unique<Line>(*this))
{}

Worker::~Worker() = default;

void Worker::begin(Job job)
{
    busy = true;
    stopping = false;
    line->put(std::move(job));
    emit started();
}

void Worker::stop()
{
    if (!busy)
        return;
    stopping = true;
    line->stop();
}

void Worker::finish(Ending ending)
{
    busy = false;
    if (stopping)
        ending = {Ending::Stopped, {}};
    emit ended(ending);
}

bool Worker::event(QEvent *event)
{
    if (event->type() != arrivalType())
        return QObject::event(event);
    line->deliverNext();
    return true;
}

} // namespace Jobs
