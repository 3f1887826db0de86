#include "analyses/sky/skyrun.h"

#include "analyses/sky/skyday.h"
#include "base/numbertext.h"
#include "jobs/items.h"

#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <algorithm>
#include <future>
#include <limits>

namespace Sky {

namespace {

constexpr int hashDigits = 16;

StackShape shapeOf(const SkyPlan &plan)
{
    return {plan.rayCount(), int(plan.dispersions.size()), plan.starts,
            methodOf(plan.product).positions(plan)};
}

qint64 samplesBytes(const SkyPlan &plan)
{
    qint64 longest = 0;
    for (const Passage &passage : plan.passages)
        longest = std::max<qint64>(longest, passage.points());
    const qint64 bands = qint64(plan.header.fbands.size()) + 1;
    return longest * bands * qint64(sizeof(float)) * plan.rayCount();
}

QString stemOf(const SkyPlan &plan)
{
    return "sky_" +
           QString::fromLatin1(QCryptographicHash::hash(requestOf(plan), QCryptographicHash::Sha256)
                                   .toHex()
                                   .left(hashDigits));
}

// Whether a stack holds nothing but passages as the plan has them.
bool fits(const SkyStack &stack, const SkyPlan &plan)
{
    for (const auto &[name, one] : stack.added) {
        const QString &wanted = name;
        const auto place =
            std::find_if(plan.passages.begin(), plan.passages.end(),
                         [&wanted](const Passage &passage) { return passage.name == wanted; });
        if (place == plan.passages.end() || place->state != one.state)
            return false;
    }
    return true;
}

class Runner {
public:
    Runner(const RecordingSet &recordings, const SkyPlan &skyPlan, const RunChoice &runChoice,
           const Jobs::Control &runControl)
        : set(recordings), plan(skyPlan), choice(runChoice), control(runControl)
    {}

    SkyRun run()
    {
        const StackShape shape = shapeOf(plan);
        if (shape.bytes() <= 0) {
            result.problem = "The stacks of so many cells are too large. Choose fewer rays, "
                             "dispersions or starts.";
            return std::move(result);
        }
        result.stack = SkyStack(requestOf(plan), shape);
        if (!choice.folder.isEmpty() && !choice.isNew)
            takeKept();
        findMissing();
        result.keptPassages = int(passagesOfPart) - int(missing.size());
        addMissing();
        keep();
        return std::move(result);
    }

private:
    QString pathOf(int part, int parts) const
    {
        return QDir(choice.folder).filePath(stackFileName(plan, part, parts));
    }

    bool isWholeRun() const { return choice.parts == 1; }

    // The own file first, which may hold what others hold too; then, for the whole, all others.
    void takeKept()
    {
        const QString own = stackFileName(plan, choice.part, choice.parts);
        take(own, true);
        const QStringList all =
            QDir(choice.folder).entryList({stemOf(plan) + "*.stack"}, QDir::Files, QDir::Name);
        for (const QString &name : all) {
            if (name != own)
                take(name, isWholeRun());
        }
    }

    void take(const QString &name, bool withSums)
    {
        const QString path = QDir(choice.folder).filePath(name);
        if (!QFile::exists(path))
            return;
        StackReading kept =
            StackReading::of(path, result.stack.request(), result.stack.shape(), withSums);
        if (!kept.problem.isEmpty()) {
            result.remarks << kept.problem + " What it held is computed anew.";
        } else if (!fits(kept.stack, plan)) {
            result.remarks << path + ": it holds days whose recordings have changed or are gone. "
                                     "They are computed anew.";
        } else if (!withSums) {
            for (const auto &[passage, one] : kept.stack.added) {
                if (one.isWhole())
                    elsewhere.insert(passage);
            }
        } else if (result.stack.added.empty()) {
            result.stack = std::move(kept.stack);
            isChanged = name != stackFileName(plan, choice.part, choice.parts);
        } else if (result.stack.merge(kept.stack)) {
            isChanged = true; // the own file is to hold what was joined
        } else {
            result.remarks << path + ": other stacks hold its days too; it is left aside.";
        }
    }

    void findMissing()
    {
        for (std::size_t i = 0; i < plan.passages.size(); ++i) {
            if (int(i % std::size_t(choice.parts)) != choice.part - 1)
                continue;
            ++passagesOfPart;
            const Passage &passage = plan.passages[i];
            const auto known = result.stack.added.find(passage.name);
            const bool isHere = known != result.stack.added.end() && known->second.isWhole();
            if (!isHere && elsewhere.count(passage.name) == 0)
                missing.push_back(&passage);
        }
    }

    // While one passage is worked on, the next one is read.
    void addMissing()
    {
        std::future<PassageReading> next;
        const auto readAhead = [this, &next](std::size_t i) {
            if (i >= missing.size())
                return;
            next = std::async(std::launch::async, [this, i] {
                PassageReading reading;
                const Jobs::Ending ending = Jobs::runGuarded(
                    [&] { reading = readPassage(set, *missing[i], plan, control); });
                if (ending.kind == Jobs::Ending::Failed)
                    reading.problem = ending.problem;
                return reading;
            });
        };
        readAhead(0);
        sinceKept.start();
        for (std::size_t i = 0; i < missing.size() && !result.wasStopped; ++i) {
            const PassageReading reading = next.get();
            readAhead(i + 1);
            result.wasStopped = control.isStopped();
            if (!result.wasStopped)
                add(*missing[i], reading, i);
            keepSometimes();
        }
    }

    void add(const Passage &passage, const PassageReading &reading, std::size_t number)
    {
        if (!reading.problem.isEmpty()) {
            result.badPassages.push_back({passage.name, reading.problem});
            return;
        }
        result.bytesRead += bytesOf(passage);
        Jobs::Control own;
        own.isStopped = control.isStopped;
        own.progress = [this, number](int percent) {
            control.progress(int((100 * number + std::size_t(percent)) / missing.size()));
        };
        const PassageEnd end =
            addPassage(reading.samples, passage, plan, choice.threads, own, result.stack);
        isChanged = true;
        result.wasStopped = end.wasStopped;
        if (!end.problem.isEmpty())
            result.badPassages.push_back({passage.name, end.problem});
        for (const QString &remark : end.remarks) {
            result.remarks << remark;
            control.remark(remark);
        }
        if (choice.passageDone)
            choice.passageDone(result.stack);
        control.progress(int(100 * (number + 1) / missing.size()));
    }

    qint64 bytesOf(const Passage &passage) const
    {
        SkyPlan one;
        one.passages = {passage};
        return one.bytesRead(set);
    }

    // How often does not change what comes out, only how much a kill loses: writing takes at most
    // a twentieth of the time.
    void keepSometimes()
    {
        constexpr qint64 leastMs = 5000;
        constexpr qint64 timesLonger = 20;
        if (isChanged && sinceKept.elapsed() > std::max(leastMs, timesLonger * lastKeepingMs))
            keep();
    }

    void keep()
    {
        if (choice.folder.isEmpty() || !isChanged)
            return;
        QElapsedTimer timer;
        timer.start();
        QDir().mkpath(choice.folder);
        const WriteFailure failure = result.stack.write(pathOf(choice.part, choice.parts));
        if (failure && !hasFailedToKeep) {
            hasFailedToKeep = true;
            result.remarks << failure.text() + " The stacks are not kept.";
        }
        isChanged = false;
        lastKeepingMs = timer.elapsed();
        sinceKept.restart();
    }

    const RecordingSet &set;
    const SkyPlan &plan;
    const RunChoice &choice;
    const Jobs::Control &control;
    SkyRun result;
    std::set<QString> elsewhere; // passages that the stacks of other parts hold
    std::vector<const Passage *> missing;
    std::size_t passagesOfPart = 0;
    bool isChanged = false;
    bool hasFailedToKeep = false;
    QElapsedTimer sinceKept;
    qint64 lastKeepingMs = 0;
};

std::vector<float> noiseOf(int points)
{
    std::vector<float> noise(static_cast<std::size_t>(points));
    quint32 state = 1;
    for (float &value : noise) {
        state = state * 1664525U + 1013904223U;
        value = float(state >> 8);
    }
    return noise;
}

// The least of a few trials: the first one makes tables, any may have to wait for a processor.
template <typename Work>
double secondsOfTrial(const Work &work)
{
    constexpr int most = 5;
    constexpr double enough = 0.5; // s, of all trials
    constexpr double nanosecond = 1e-9;
    QElapsedTimer timer;
    timer.start();
    double least = std::numeric_limits<double>::infinity();
    double before = 0;
    for (int i = 0; i < most && before < enough; ++i) {
        work();
        const double now = double(timer.nsecsElapsed()) * nanosecond;
        least = std::min(least, now - before);
        before = now;
    }
    return least;
}

// Of one stretch of one cell, once its sum is there.
double secondsOfStretch(const SkyPlan &plan)
{
    const std::vector<float> noise = noiseOf(plan.parameters.points);
    CellStretch stretch;
    stretch.sums = noise.data();
    stretch.backSums = plan.parameters.noise == "backSum" ? noise.data() : nullptr;
    stretch.points = plan.parameters.points;
    stretch.tresolution = plan.header.tresolution;
    return secondsOfTrial([&] { methodOf(plan.product).ofStretch(stretch, plan); });
}

// Of the sum over the bands for as many points as a stretch has.
double secondsOfSum(const SkyPlan &plan)
{
    const std::vector<float> band = noiseOf(plan.parameters.points);
    std::vector<double> sum(band.size());
    const double seconds = secondsOfTrial([&] {
        for (std::size_t count = 0; count < plan.header.fbands.size(); ++count) {
            for (std::size_t i = 0; i < sum.size(); ++i)
                sum[i] += double(band[i]);
        }
    });
    return sum[0] == sum[0] ? seconds : 0; // so that the sums are made
}

} // namespace

qint64 memoryOf(const SkyPlan &plan, int threads)
{
    const qint64 side = threads > 0 ? threads : Jobs::threadCount();
    const qint64 stacks = std::max<qint64>(0, shapeOf(plan).bytes());
    const qint64 samples = samplesBytes(plan);
    const qint64 bands = qint64(plan.header.fbands.size()) + 1;
    const qint64 ray = samples / std::max(1, plan.rayCount());
    // Two passages at once, the copy of a ray without what is no number, and sums as doubles and
    // floats with the products of all stretches.
    constexpr qint64 perPoint = 2 * sizeof(double) + 4 * sizeof(float);
    const qint64 ofThread = ray + ray / (bands * qint64(sizeof(float))) * perPoint;
    const qint64 products = qint64(plan.rayCount()) * plan.starts *
                            methodOf(plan.product).positions(plan) * qint64(sizeof(float));
    // Stacks of other parts are read whole before they are added.
    return 2 * stacks + 2 * samples + side * ofThread + products;
}

double secondsOf(const SkyPlan &plan, int threads)
{
    double stretches = 0;
    double points = 0;
    for (const Passage &passage : plan.passages) {
        stretches += double(std::count_if(passage.firstPoints.begin(), passage.firstPoints.end(),
                                          [](int point) { return point >= 0; }));
        points += passage.points();
    }
    const double series = double(plan.rays.size()) * double(plan.dispersions.size());
    const double sums = points / plan.parameters.points;
    const int side = threads > 0 ? threads : Jobs::threadCount();
    return series * (stretches * secondsOfStretch(plan) + sums * secondsOfSum(plan)) / side;
}

QByteArray requestOf(const SkyPlan &plan)
{
    QByteArray request = plan.product == Product::Fourier ? "fourier" : "ffa";
    for (const SkyField &field : skyFields()) {
        if (decidesStacks(field, plan.product))
            request += ";" + field.key.toUtf8() + "=" +
                       Tools::headerText(field.valueIn(plan.parameters)).toUtf8();
    }
    for (const SkyRay &ray : plan.rays)
        request += ";m" + QByteArray::number(ray.module) + "r" + QByteArray::number(ray.ray) + "=" +
                   exactText(ray.beam.isKnown() ? ray.beam.delta : 0).toUtf8();
    request += ";starts=" + QByteArray::number(plan.starts) +
               ";step=" + exactText(plan.header.tresolution).toUtf8() + ";bands";
    for (const double frequency : plan.header.fbands)
        request += "," + exactText(frequency).toUtf8();
    request += ";dates=" + plan.dates.first.toString(Qt::ISODate).toUtf8() + ":" +
               plan.dates.last.toString(Qt::ISODate).toUtf8();
    return request.replace(' ', '_').replace('\n', '_');
}

QString stackFileName(const SkyPlan &plan, int part, int parts)
{
    return parts == 1 ? stemOf(plan) + ".stack"
                      : QString("%1_%2of%3.stack").arg(stemOf(plan)).arg(part).arg(parts);
}

SkyRun runSky(const RecordingSet &set, const SkyPlan &plan, const RunChoice &choice,
              const Jobs::Control &control)
{
    return Runner(set, plan, choice, control).run();
}

} // namespace Sky
