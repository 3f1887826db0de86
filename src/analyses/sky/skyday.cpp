#include "analyses/sky/skyday.h"

#include "analyses/days/daysums.h"
#include "analyses/days/fourierday.h"
#include "calc/finitesamples.h"
#include "calc/pulsar/bandsum.h"
#include "coords/barycentre.h"
#include "data/truenumbers.h"
#include "jobs/items.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <new>

namespace Sky {

namespace {

constexpr int fewestRaysToJudge = 3;
constexpr double mostAbove = 2; // times what is expected

// Points that can be summed at any dispersion of the plan, from reachBefore on.
int summedPoints(const ObservationData &data, const SkyPlan &plan)
{
    return data.npoints - plan.reach - plan.reachBefore;
}

// One ray of a passage, its samples finite.
struct RaySamples {
    ObservationData data;
    PulsarParameters selected;
    QString problem; // why the ray does not count on that day
    QString remark;
};

RaySamples raySamples(const PassageSamples &samples, std::size_t ray, const SkyPlan &plan)
{
    RaySamples one;
    const int module = samples.modules[ray];
    const int place = samples.rays[ray];
    const Tools::FiniteSamples finite = Tools::finiteSamples(
        samples.data, module, place, Tools::wholeChannels(samples.data, Pulsar::sumBands));
    if (!finite.samples) // what can be added another time must not count as done
        throw std::bad_alloc();
    if (!finite.empty.empty())
        one.problem = Tools::noFiniteText(finite.empty);
    one.remark = Tools::nonFiniteText(finite.replaced, samples.data.point);
    one.data = samples.data;
    one.data.samples = finite.samples;
    one.selected.module = module + 1;
    one.selected.ray = place + 1;
    one.selected.firstPoint = plan.reachBefore;
    return one;
}

std::vector<float> sumsOf(const RaySamples &ray, const SkyPlan &plan, double dispersion,
                          bool forward)
{
    std::vector<double> sums(std::size_t(std::max(0, summedPoints(ray.data, plan))));
    if (sums.empty() || Pulsar::sumChannels(ray.data, ray.selected, sums.data(), int(sums.size()),
                                            dispersion, forward) < Pulsar::sumBands)
        return {};
    return {sums.begin(), sums.end()};
}

class PassageWork {
public:
    PassageWork(const PassageSamples &passageSamples, const Passage &onePassage,
                const SkyPlan &skyPlan, int threadCount, const Jobs::Control &runControl,
                SkyStack &skyStack)
        : samples(passageSamples), passage(onePassage), plan(skyPlan), threads(threadCount),
          control(runControl), stack(skyStack), method(methodOf(skyPlan.product))
    {}

    PassageEnd run()
    {
        const auto units = plan.rays.size() * plan.dispersions.size();
        Added &entry = stack.added.try_emplace(passage.name).first->second;
        entry.state = passage.state;
        done.assign(units, 0);
        std::copy(entry.units.begin(), entry.units.end(), done.begin());
        prepareRays();
        addFirstDispersion();
        addOthers();
        end.wasStopped = isStopped();
        const bool isWhole = std::all_of(done.begin(), done.end(), [](char is) { return is != 0; });
        if (isWhole)
            entry.units.clear();
        else
            entry.units.assign(done.begin(), done.end());
        if (std::none_of(done.begin(), done.end(), [](char is) { return is != 0; }))
            stack.added.erase(passage.name);
        return std::move(end);
    }

private:
    bool isStopped() const { return control.isStopped(); }
    // A passage with a problem is worked on no further: other parts of the work need what failed.
    bool isEnded() const { return isStopped() || !end.problem.isEmpty(); }

    std::size_t unitOf(std::size_t ray, std::size_t dispersion) const
    {
        return ray * plan.dispersions.size() + dispersion;
    }

    void each(int count, const std::function<void(int)> &work)
    {
        Jobs::Control own;
        own.isStopped = control.isStopped;
        for (const Jobs::Ending &ending :
             Jobs::runItems(count, threads, own, [&](int item, const Jobs::Control &) {
                 if (!isStopped())
                     work(item);
             })) {
            if (ending.kind == Jobs::Ending::Failed && end.problem.isEmpty())
                end.problem = ending.problem;
        }
    }

    void prepareRays()
    {
        rays.resize(plan.rays.size());
        each(plan.rayCount(), [this](int ray) {
            rays[std::size_t(ray)] = raySamples(samples, std::size_t(ray), plan);
        });
        ratios.resize(plan.rays.size() * std::size_t(plan.starts));
        each(plan.rayCount(), [this](int ray) { findRatios(std::size_t(ray)); });
        for (std::size_t ray = 0; ray < rays.size() && !isEnded(); ++ray) {
            const QString place = QString("%1, module %2, ray %3: ")
                                      .arg(passage.name)
                                      .arg(plan.rays[ray].module)
                                      .arg(plan.rays[ray].ray);
            if (!rays[ray].problem.isEmpty())
                end.remarks << place + rays[ray].problem + "; the ray does not count that day.";
            else if (!rays[ray].remark.isEmpty())
                end.remarks << place + rays[ray].remark;
        }
    }

    bool isHeld(std::size_t start) const { return passage.firstPoints[start] >= 0; }

    void findRatios(std::size_t ray)
    {
        for (std::size_t start = 0; start < std::size_t(plan.starts); ++start) {
            if (!isHeld(start))
                continue;
            const QDateTime middle = plan.middleOf(passage, int(start));
            ratios[ray * std::size_t(plan.starts) + start] =
                Tools::barycentricView(Tools::ownSite(), middle,
                                       plan.directionOf(plan.rays[ray], middle))
                    .topocentric(1);
        }
    }

    CellProduct productOf(const std::vector<float> &sums, const std::vector<float> &back,
                          std::size_t ray, std::size_t start) const
    {
        CellStretch stretch;
        const int first = passage.firstPoints[start] - plan.reachBefore;
        stretch.sums = sums.data() + first;
        stretch.backSums = back.empty() ? nullptr : back.data() + first;
        stretch.points = plan.parameters.points;
        stretch.tresolution = plan.header.tresolution;
        stretch.ratio = ratios[ray * std::size_t(plan.starts) + start];
        return method.ofStretch(stretch, plan);
    }

    // The products of all starts of a ray at one dispersion; those of starts that are not held or
    // not wanted are empty.
    std::vector<CellProduct> productsOf(std::size_t ray, std::size_t dispersion) const
    {
        std::vector<CellProduct> products(static_cast<std::size_t>(plan.starts));
        if (!rays[ray].problem.isEmpty())
            return products;
        const double value = plan.dispersions[dispersion];
        const std::vector<float> sums = sumsOf(rays[ray], plan, value, true);
        std::vector<float> back;
        if (plan.parameters.noise == "backSum")
            back = sumsOf(rays[ray], plan, value, false);
        for (std::size_t start = 0; start < products.size() && !sums.empty(); ++start) {
            const bool isWanted = counted.empty() || counted[start * rays.size() + ray];
            if (isHeld(start) && isWanted)
                products[start] = productOf(sums, back, ray, start);
            if (isStopped())
                return {};
        }
        return products;
    }

    int quarterOf(std::size_t start) const
    {
        constexpr double hours = 24.0 / sunQuarters;
        const double hour = Days::solarHourAt(plan.middleOf(passage, int(start)));
        return std::clamp(int(hour / hours), 0, sunQuarters - 1);
    }

    void addUnit(std::size_t ray, std::size_t dispersion, const std::vector<CellProduct> &products)
    {
        if (products.empty() || done[unitOf(ray, dispersion)])
            return;
        int cutOff = 0;
        for (std::size_t start = 0; start < products.size(); ++start) {
            if (products[start].values.empty() || !counted[start * rays.size() + ray])
                continue;
            const int quarter = quarterOf(start);
            cutOff += stack.add(int(ray), int(dispersion), int(start), quarter,
                                products[start].values, method.clip);
            if (dispersion == 0)
                stack.count(int(ray), int(start), quarter,
                            ratios[ray * std::size_t(plan.starts) + start]);
        }
        done[unitOf(ray, dispersion)] = 1;
        const std::lock_guard lock(mutex);
        stack.cutOff += cutOff;
    }

    // The lowest dispersion, at which interference stands, tells which stretches count.
    void addFirstDispersion()
    {
        if (isEnded())
            return;
        std::vector<std::vector<CellProduct>> products(rays.size());
        each(plan.rayCount(),
             [&](int ray) { products[std::size_t(ray)] = productsOf(std::size_t(ray), 0); });
        if (isEnded())
            return;
        judge(products);
        findHum();
        for (std::size_t ray = 0; ray < rays.size(); ++ray)
            addUnit(ray, 0, products[ray]);
    }

    // A stretch is disturbed where more than half of the rays have twice as many high values as
    // noise. A pulsar, however bright, is not in so many rays.
    void judge(const std::vector<std::vector<CellProduct>> &products)
    {
        counted.assign(std::size_t(plan.starts) * rays.size(), 0);
        int disturbed = 0;
        for (std::size_t start = 0; start < std::size_t(plan.starts); ++start) {
            int held = 0;
            int high = 0;
            for (std::size_t ray = 0; ray < rays.size(); ++ray) {
                const CellProduct &product = products[ray][start];
                const bool counts = !product.values.empty();
                counted[start * rays.size() + ray] = counts;
                held += counts;
                high += counts && product.above > mostAbove * product.expectedAbove;
            }
            if (plan.parameters.allDays || held < fewestRaysToJudge || 2 * high <= held)
                continue;
            ++disturbed;
            std::fill_n(counted.begin() + std::ptrdiff_t(start * rays.size()), rays.size(), 0);
        }
        if (disturbed > 0)
            end.remarks << QString("%1: %2 of %3 stretches are disturbed in most rays and do not "
                                   "count.")
                               .arg(passage.name)
                               .arg(disturbed)
                               .arg(plan.starts);
    }

    // One ray in the middle of the passage tells the hum of all.
    void findHum()
    {
        const std::size_t ray = rays.size() / 2;
        const auto start = std::find_if(passage.firstPoints.begin(), passage.firstPoints.end(),
                                        [](int point) { return point >= 0; });
        if (!rays[ray].problem.isEmpty() || start == passage.firstPoints.end())
            return;
        const std::vector<float> sums = sumsOf(rays[ray], plan, plan.dispersions.front(), true);
        const int offset = *start - plan.reachBefore;
        if (sums.size() < std::size_t(offset) + std::size_t(plan.parameters.points))
            return;
        const auto first = sums.begin() + offset;
        const Days::PreparedSeries series =
            Days::preparedSeries({first, first + plan.parameters.points}, {}, "polinom5");
        if (!series.problem.isEmpty())
            return;
        constexpr double perHertz = 1000;
        for (const Days::DayHum &hum : Days::humOf(series.values, plan.header.tresolution))
            stack.hum.emplace(int(std::floor(hum.from * perHertz)),
                              int(std::ceil(hum.to * perHertz)));
    }

    void addOthers()
    {
        if (isEnded())
            return;
        const auto others = plan.dispersions.size() - 1;
        const int count = int(rays.size() * others);
        std::mutex shown;
        int ended = 0;
        each(count, [&](int item) {
            const std::size_t ray = std::size_t(item) / others;
            const std::size_t dispersion = std::size_t(item) % others + 1;
            if (!done[unitOf(ray, dispersion)])
                addUnit(ray, dispersion, productsOf(ray, dispersion));
            const std::lock_guard lock(shown);
            control.progress(100 * ++ended / count);
        });
    }

    const PassageSamples &samples;
    const Passage &passage;
    const SkyPlan &plan;
    const int threads;
    const Jobs::Control &control;
    SkyStack &stack;
    const SkyMethod &method;
    std::vector<RaySamples> rays;
    std::vector<double> ratios; // ray x starts + start
    std::vector<char> counted;  // start x rays + ray; empty until judged
    std::vector<char> done;     // units, each written by one thread
    std::mutex mutex;           // of the number of values cut off
    PassageEnd end;
};

// Places of the numbers that are wanted among those of the file that are.
std::vector<int> placesOf(const ObservationData &header, int count,
                          int (*numberOf)(const ObservationData &, int),
                          const std::vector<SkyRay> &wanted, int SkyRay::*number)
{
    std::vector<int> held;
    for (int i = 0; i < count; ++i) {
        const int own = numberOf(header, i);
        if (std::any_of(wanted.begin(), wanted.end(),
                        [&](const SkyRay &ray) { return ray.*number == own; }))
            held.push_back(own);
    }
    std::vector<int> places;
    for (const SkyRay &ray : wanted)
        places.push_back(int(std::find(held.begin(), held.end(), ray.*number) - held.begin()));
    return places;
}

} // namespace

const SkyMethod &methodOf(Product product)
{
    return product == Product::Ffa ? ffaMethod() : fourierMethod();
}

PassageEnd addPassage(const PassageSamples &samples, const Passage &passage, const SkyPlan &plan,
                      int threads, const Jobs::Control &control, SkyStack &stack)
{
    return PassageWork(samples, passage, plan, threads, control, stack).run();
}

PassageReading readPassage(const RecordingSet &set, const Passage &passage, const SkyPlan &plan,
                           const Jobs::Control &control)
{
    PassageReading reading;
    Days::Day day;
    day.begin = passage.begin;
    day.parts = passage.parts;
    std::vector<Days::SeriesRequest> requests;
    for (const SkyRay &ray : plan.rays)
        requests.push_back({ray.module, ray.ray, 0, false});
    const auto samples = Days::samplesOfDay(set, day, requests, control);
    const ObservationData *data = samples.whole();
    reading.wasStopped = samples.end() == StretchEnd::Cancelled;
    if (!data) {
        reading.problem = samples.reason();
        return reading;
    }
    const ObservationData &header =
        set.entries[std::size_t(passage.parts.front().recording)].header;
    reading.samples.data = *data;
    reading.samples.modules =
        placesOf(header, header.modules, moduleNumber, plan.rays, &SkyRay::module);
    reading.samples.rays = placesOf(header, header.rays, rayNumber, plan.rays, &SkyRay::ray);
    return reading;
}

} // namespace Sky
