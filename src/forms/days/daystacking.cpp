#include "forms/days/daystacking.h"

DayStacking::DayStacking(Complete complete, QObject *parent)
    : QObject(parent), completeRequest(std::move(complete))
{
    constexpr int delay = 150; // ms
    timer.setSingleShot(true);
    timer.setInterval(delay);
    connect(&timer, &QTimer::timeout, this, &DayStacking::restack);
    connect(&worker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (isStale)
            timer.start();
        if (ending.kind == Jobs::Ending::Failed)
            emit failed(ending.problem);
    });
}

void DayStacking::begin(const DaySpectra &begun)
{
    worker.stop(); // its days are no longer shown
    arrived.clear();
    read = std::make_shared<DaySpectra>(begun);
    decisions.assign(read->plan.list.days.size(), {});
    last = nullptr;
}

void DayStacking::add(SpectraNews news)
{
    arrived.push_back(std::move(news));
    if (!timer.isActive()) // days that keep coming do not put the stack off
        timer.start();
}

// They are put in their places while nobody reads these.
void DayStacking::addArrived()
{
    for (SpectraNews &news : arrived) {
        for (std::size_t ray = 0; ray < news.rays.size(); ++ray)
            read->rays[ray][std::size_t(news.day)] = std::move(news.rays[ray]);
    }
    arrived.clear();
}

void DayStacking::decide(int day, bool isOn)
{
    if (!read || day >= int(decisions.size()))
        return;
    decisions[std::size_t(day)] = isOn;
    restackAnew();
}

void DayStacking::decideAll(std::optional<bool> isOn)
{
    decisions.assign(decisions.size(), isOn);
    restackAnew();
}

// What the user has changed makes the stack under way useless; days that arrive let it end.
void DayStacking::restackAnew()
{
    worker.stop();
    restack();
}

void DayStacking::restackSoon()
{
    timer.start();
}

void DayStacking::restack()
{
    if (!read)
        return;
    isStale = worker.isBusy();
    if (isStale)
        return;
    addArrived();
    StackRequest request;
    request.spectra = read;
    request.parameters = read->parameters;
    request.decided = decisions;
    completeRequest(request);
    using Outcome = std::shared_ptr<const StackOutcome>;
    worker.start<Outcome>(
        [request](const Jobs::Control &control, const Jobs::Deliver<Outcome> &deliver) {
            deliver(stackSpectra(request, control));
        },
        [this](const Outcome &made) {
            last = made;
            emit stacked();
        });
}

void DayStacking::stop()
{
    worker.stop();
}

QStringList DayStacking::daysOff() const
{
    QStringList names;
    if (!last)
        return names;
    for (std::size_t i = 0; i < last->choice.days.size(); ++i) {
        if (!last->choice.days[i] && read->days()[i].isWhole())
            names << Days::dayName(read->days()[i].begin);
    }
    return names;
}
