#include "jobs/items.h"

#include <QThread>
#include <algorithm>
#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>

namespace Jobs {

namespace {

using Work = std::function<void(int item, const Control &control)>;

// What the threads of one call share.
class Run {
public:
    Run(int itemCount, const Control &wholeControl, const Work &itemWork)
        : count(itemCount), whole(wholeControl), work(itemWork),
          endings(std::size_t(itemCount), {Ending::Stopped, {}}), percents(std::size_t(itemCount))
    {}

    // Where the system gives no more threads, those that there are do it all.
    void go(int threadLimit)
    {
        std::vector<std::thread> threads;
        try {
            while (int(threads.size()) + 1 < threadLimit)
                threads.emplace_back([this] { takeItems(); });
        } catch (const std::system_error &) {
        }
        takeItems();
        for (std::thread &thread : threads)
            thread.join();
    }

    std::vector<Ending> takeEndings() { return std::move(endings); }

private:
    void takeItems()
    {
        for (int item = next++; item < count && !whole.isStopped(); item = next++) {
            const Control own = controlOf(item);
            const Ending ending = runGuarded([&] { work(item, own); });
            if (ending.kind == Ending::Finished && whole.isStopped())
                return; // nobody knows whether the result is whole
            endings[std::size_t(item)] = ending;
            showProgress(item, 100);
        }
    }

    Control controlOf(int item)
    {
        Control control;
        control.progress = [this, item](int percent) { showProgress(item, percent); };
        control.isStopped = whole.isStopped;
        control.remark = [this](const QString &text) {
            const std::lock_guard lock(mutex);
            whole.remark(text);
        };
        return control;
    }

    void showProgress(int item, int percent)
    {
        const std::lock_guard lock(mutex);
        int &known = percents[std::size_t(item)];
        const int risen = std::clamp(percent, known, 100);
        sumOfPercents += risen - known;
        known = risen;
        const int all = int(sumOfPercents / count);
        if (all > lastShown)
            whole.progress(lastShown = all);
    }

    const int count;
    const Control &whole;
    const Work &work;
    std::vector<Ending> endings; // each written by the thread that took the item
    std::atomic<int> next = 0;

    std::mutex mutex; // of what follows and of what the whole hears
    std::vector<int> percents;
    qint64 sumOfPercents = 0;
    int lastShown = -1;
};

} // namespace

int threadCount()
{
    for (const char *const name : {"SLURM_CPUS_PER_TASK", "PBS_NCPUS", "NCPUS", "NSLOTS"}) {
        const int count = qEnvironmentVariableIntValue(name);
        if (count > 0)
            return count;
    }
    return std::max(1, QThread::idealThreadCount());
}

std::vector<Ending> runItems(int count, int threads, const Control &control, const Work &work)
{
    if (count < 1)
        return {};
    Run run(count, control, work);
    run.go(std::min(threads > 0 ? threads : threadCount(), count));
    return run.takeEndings();
}

} // namespace Jobs
