#pragma once

#include "jobs/control.h"

#include <QObject>
#include <functional>
#include <memory>
#include <utility>

namespace Jobs {

/// Hands a value over to whoever started the job; from any thread of the job.
template <typename Value>
using Deliver = std::function<void(Value value)>;

/// Runs one job at a time beside the thread of a window, which stays alive meanwhile, and brings
/// its progress and its values there. A job gets its request by value and shares nothing with the
/// window.
///
/// A Worker belongs to the thread that made it: it is called there, and signals and values arrive
/// there through the event loop, in the order in which the job sent them.
///
/// The newest request counts: start() ends the job before it, which is not heard of again. After
/// stop() only ended() still comes. After the destructor, which waits for the job to notice, comes
/// nothing. How soon a job ends is its own affair: it asks Control::isStopped every few
/// milliseconds.
class Worker : public QObject {
    Q_OBJECT

public:
    explicit Worker(QObject *parent = nullptr);
    ~Worker() override;

    /// Starts a job.
    ///
    /// @param work     called as work(control, deliver) with a Control and a Deliver<Value>, on
    ///                 the worker's thread; it may deliver any number of values
    /// @param receive  called as receive(value) on the thread of this object for each of them. It
    ///                 may start, stop or delete this object
    template <typename Value, typename Work, typename Receive>
    void start(Work work, Receive receive)
    {
        const auto receiver = std::make_shared<Receive>(std::move(receive));
        begin([work = std::move(work), receiver](const Control &control, const Post &post) {
            const Deliver<Value> deliver = [&post, &receiver](Value value) {
                // Held by a pointer, for a call is copied and a value need not be.
                const auto held = std::make_shared<Value>(std::move(value));
                post([receiver, held] { (*receiver)(std::move(*held)); });
            };
            work(control, deliver);
        });
    }

    /// Asks the job to end without further values; ended() tells when it has.
    void stop();

    /// From start() until ended().
    bool isBusy() const { return busy; }

signals:
    /// A job was asked for; the one before, if there was any, is not heard of again.
    void started();
    /// Share of the newest job that is done, 0 to 100; the same percentage once.
    void progress(int percent);
    void remark(const QString &text);
    /// The newest job has ended; all its values came before.
    void ended(const Jobs::Ending &ending);

protected:
    bool event(QEvent *event) override;

private:
    using Call = std::function<void()>;
    using Post = std::function<void(Call call)>;
    using Job = std::function<void(const Control &control, const Post &post)>;
    class Line;

    void begin(Job job);
    void finish(Ending ending);

    const std::unique_ptr<Line> line; // between the two threads
    bool busy = false;
    bool stopping = false;
};

} // namespace Jobs
