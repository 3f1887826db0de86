#include "forms/native/nativeload.h"

#include "calc/channelsum.h"
#include "calc/finitesamples.h"
#include "calc/stretchsum.h"

#include <QElapsedTimer>
#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

constexpr qint64 mostSamples = qint64(16) << 20;
constexpr qint64 mostDetailedBytes = qint64(256) << 20; // of the file
constexpr qint64 glanceFrom = qint64(64) << 20;         // bytes; less is read at once
constexpr qint64 longSearch = qint64(1)
                              << 21; // samples; the steps of more take longer than a blink
constexpr qint64 chunkBytes = qint64(32) << 20; // of the file
constexpr int glancePoints = 16;
constexpr int firstGlance = 64;         // blocks; as many as a slow disk finds within a second
constexpr int secondGlance = 512;       // blocks
constexpr qint64 fastGlance = 200;      // ms; a disk that slow gets no second glance
constexpr qint64 deliverInterval = 150; // ms
constexpr int mostColumns = 8192;
constexpr int fewestColumns = 1024;
constexpr qint64 mostReduced = qint64(1) << 20; // values of one array of a reduction
constexpr std::size_t mostSpans = 16;           // of a channel that are taken down

// How far a kept part reaches beyond what is in sight, and when it is too coarse for it.
constexpr double expansion = 3;
constexpr double coarse = 8;

class Loading {
public:
    Loading(const NativeRequest &request, const std::function<bool()> &wanted,
            const std::function<void(const std::shared_ptr<const NativePicture> &)> &receiver)
        : isWanted(wanted), deliver(receiver)
    {
        picture.request = request;
        chosen.modules = {request.module};
        chosen.rays = {request.ray};
        hooks.keepAlive = isWanted;
    }

    void run()
    {
        const NativeDomain &domain = picture.request.domain;
        if (!file.open(picture.request.path)) {
            finish(file.reason());
            return;
        }
        const int channels = file.header().channels;
        const qint64 columns =
            std::clamp<qint64>(mostReduced / (channels + 1), fewestColumns, mostColumns);
        nonFinite.resize(std::size_t(channels));
        picture.reduction = Tools::emptyReduction(
            domain.first, domain.count, int(std::min<qint64>(columns, domain.count)), channels);
        if (!picture.request.isRepeated && file.pointBytes() * domain.count > glanceFrom)
            glance();
        if (!isWanted())
            return;
        if (domain.detailed)
            readDetailed();
        else
            readReduced();
    }

private:
    void send(double share, bool isGlance)
    {
        picture.share = share;
        picture.isGlance = isGlance;
        deliver(std::make_shared<const NativePicture>(picture));
    }

    void finish(const QString &problem)
    {
        if (!problem.isEmpty())
            picture.problem = problem;
        picture.isLast = true;
        send(picture.share, picture.isGlance);
    }

    // The sums of the bands that are on. They are empty where the frequencies or the sampling
    // interval are unusable, which a debug line tells, and where a band holds no finite number.
    std::vector<double> sumsOf(const ObservationData &data, const Tools::FiniteSamples &numbers,
                               double dispersion) const
    {
        const std::vector<bool> &off = picture.request.channelsOff;
        const bool isWhole =
            std::all_of(numbers.empty.begin(), numbers.empty.end(), [&](int channel) {
                return channel == data.channels - 1 ||
                       (std::size_t(channel) < off.size() && off[std::size_t(channel)]);
            });
        if (data.channels < 2 || !isWhole || !numbers.samples)
            return {};
        ObservationData masked = data;
        masked.samples = off.empty() ? numbers.samples : numbers.samples.withChannelsOff(off);
        return Tools::sumChannels(masked, dispersion, 0, 0);
    }

    static Tools::FiniteSamples finiteOf(const ObservationData &data)
    {
        return Tools::finiteSamples(data, 0, 0, Tools::wholeChannels(data, data.channels));
    }

    // Takes down which samples of `count` points from `offset` on are no numbers. The first of
    // them is point `first` of the recording.
    void note(const std::vector<Tools::NonFiniteSamples> &found, int offset, int count, int first)
    {
        for (const Tools::NonFiniteSamples &ofChannel : found) {
            Tools::NonFiniteSamples &known = nonFinite[std::size_t(ofChannel.channel)];
            for (const Tools::PointSpan &span : ofChannel.spans) {
                const int begin = std::max(span.begin, offset) - offset + first;
                const int end = std::min(span.end, offset + count) - offset + first;
                if (begin >= end)
                    continue;
                known.channel = ofChannel.channel;
                known.count += end - begin;
                // Texts name but a few of them and the last.
                if (known.spans.size() > mostSpans ||
                    (!known.spans.empty() && known.spans.back().end == begin))
                    known.spans.back().end = end;
                else
                    known.spans.push_back({begin, end});
            }
        }
        std::vector<Tools::NonFiniteSamples> some;
        std::copy_if(nonFinite.begin(), nonFinite.end(), std::back_inserter(some),
                     [](const Tools::NonFiniteSamples &known) { return known.count > 0; });
        picture.nonFinite = Tools::nonFiniteText(some);
        picture.bandsWithoutNumbers.clear();
        for (const Tools::NonFiniteSamples &known : some) {
            if (known.count == picture.request.domain.count &&
                known.channel < picture.reduction.channels - 1)
                picture.bandsWithoutNumbers.push_back(known.channel);
        }
    }

    void glance()
    {
        QElapsedTimer clock;
        clock.start();
        glance(firstGlance);
        if (clock.elapsed() < fastGlance && isWanted())
            glance(secondGlance);
    }

    // Every block stands for the columns up to the next one. Delays are left out of its sums: a
    // block is shorter than most of them, a column mostly longer.
    void glance(int blocks)
    {
        const NativeDomain &domain = picture.request.domain;
        Tools::Reduction &reduction = picture.reduction;
        const SpacedBlocks spaced = {
            domain.first, domain.count, std::min(blocks, reduction.columns),
            std::clamp(domain.count / std::min(blocks, reduction.columns), 1, glancePoints)};
        const StretchReading reading = file.read(spaced, chosen, hooks);
        const ObservationData *const data = reading.whole();
        if (!data)
            return;
        const std::vector<double> sums = sumsOf(*data, finiteOf(*data), 0);
        for (int b = 0; b < spaced.blocks; ++b) {
            const int begin = b == 0 ? 0 : reduction.columnOf(blockFirst(spaced, b));
            const int end = b + 1 == spaced.blocks ? reduction.columns
                                                   : reduction.columnOf(blockFirst(spaced, b + 1));
            Tools::fillGlance(reduction, begin, end - begin, *data, sums, b * spaced.points,
                              spaced.points);
        }
        send(double(spaced.blocks) * spaced.points / domain.count, true);
    }

    // The samples in sight with those that the delays reach; the whole recording where that is
    // no more.
    void readDetailed()
    {
        const NativeRequest &request = picture.request;
        const int npoints = file.completePoints();
        Tools::DelayReach reach = Tools::delayReach(file.header(), request.marginDispersion);
        Stretch stretch = chosen;
        stretch.first = request.domain.first;
        stretch.count = request.domain.count;
        if (stretch.count < npoints) {
            const qint64 most = mostDetailedPoints(file);
            if (qint64(reach.before) + reach.after > most) {
                picture.problem = QString("The delays at this dispersion reach over more than %1 "
                                          "points, too many to be kept for this part.")
                                      .arg(most);
                reach = {};
            }
            stretch.first -= reach.before;
            stretch.count += reach.before + reach.after;
            stretch.wraps = true;
            picture.offset = reach.before;
        }
        const StretchReading reading = file.read(stretch, hooks);
        if (reading.end() == StretchEnd::Cancelled)
            return;
        // What a file that was cut meanwhile still holds is shown, with the reason beside it.
        if (!reading.asFarAsRead()) {
            finish(reading.reason());
            return;
        }
        picture.window = *reading.asFarAsRead();
        if (!reading.reason().isEmpty())
            picture.problem = reading.reason();
        finite = finiteOf(picture.window);
        note(finite.replaced, picture.offset, request.domain.count, request.domain.first);
        if (request.deletesSteps) {
            if (!request.isRepeated &&
                qint64(picture.window.npoints) * picture.window.channels > longSearch)
                sendAsRecorded();
            if (!deleteJumps())
                return;
        }
        reduceWindow();
        picture.share = 1;
        picture.isGlance = false;
        finish({});
    }

    void reduceWindow()
    {
        picture.finite = finite.samples;
        Tools::fillColumns(picture.reduction, 0, picture.reduction.columns, picture.window,
                           sumsOf(picture.window, finite, picture.request.dispersion),
                           picture.offset);
    }

    // The columns alone, so that there is something to look at while jumps are searched.
    void sendAsRecorded()
    {
        reduceWindow();
        const ObservationData window = picture.window;
        picture.window = ObservationData();
        picture.finite = Samples();
        send(1, true);
        picture.window = window;
    }

    // Replaces the samples by a corrected copy; false when the work is not wanted any more.
    bool deleteJumps()
    {
        ObservationData &window = picture.window;
        const auto corrected =
            finite.samples ? SampleBlock::allocate(1, window.channels, 1, window.npoints) : nullptr;
        if (!corrected) {
            picture.problem = "There is no memory to delete steps; the data are as recorded.";
            return true;
        }
        picture.jumps.resize(std::size_t(window.channels));
        for (int channel = 0; channel < window.channels; ++channel) {
            if (!isWanted())
                return false;
            float *const samples = corrected->ray(0, channel, 0);
            std::copy_n(finite.samples[0][channel][0], window.npoints, samples);
            auto &jumps = picture.jumps[std::size_t(channel)];
            jumps = Tools::findLevelJumps(samples, window.npoints, isWanted);
            Tools::removeLevelJumps(samples, window.npoints, jumps);
            Tools::replaceAgain(samples, {channel, 0, completePoints(window)}, finite.replaced);
        }
        finite.samples = Samples(corrected);
        window.samples = Tools::withGaps(finite.samples, window.npoints, finite.replaced);
        return isWanted();
    }

    // Chunk by chunk; of each only its columns are kept.
    void readReduced()
    {
        Tools::Reduction &reduction = picture.reduction;
        Tools::DelayReach reach = Tools::delayReach(file.header(), picture.request.dispersion);
        const qint64 perColumn = std::max(1, reduction.count / reduction.columns);
        const int step = int(
            std::clamp<qint64>(chunkBytes / (perColumn * file.pointBytes()), 1, reduction.columns));
        const bool hasSum =
            qint64(reach.before) + reach.after <= std::max<qint64>(4 * step * perColumn, 65536);
        if (!hasSum) {
            reach = {};
            picture.problem = "The delays at this dispersion are too long for a sum over a part of "
                              "this length; look at a shorter one.";
        }
        QElapsedTimer sinceDelivery;
        sinceDelivery.start();
        for (int column = 0; column < reduction.columns; column += step) {
            const int columns = std::min(step, reduction.columns - column);
            Stretch stretch = chosen;
            stretch.first = reduction.columnFirst(column) - reach.before;
            // in this order, for a recording may end at the last point that an int can count
            stretch.count = reduction.columnFirst(column + columns) - stretch.first + reach.after;
            stretch.wraps = true;
            const StretchReading reading = file.read(stretch, hooks);
            if (reading.end() == StretchEnd::Cancelled)
                return;
            const ObservationData *const data = reading.whole();
            if (!data) {
                finish(reading.reason());
                return;
            }
            const Tools::FiniteSamples finiteData = finiteOf(*data);
            note(finiteData.replaced, reach.before, stretch.count - reach.before - reach.after,
                 reduction.columnFirst(column));
            const std::vector<double> sums =
                hasSum ? sumsOf(*data, finiteData, picture.request.dispersion)
                       : std::vector<double>();
            Tools::fillColumns(reduction, column, columns, *data, sums, reach.before);
            picture.share = double(column + columns) / reduction.columns;
            if (sinceDelivery.elapsed() > deliverInterval) {
                send(picture.share, true);
                sinceDelivery.restart();
            }
        }
        picture.isGlance = false;
        finish({});
    }

    NativePicture picture;
    const std::function<bool()> &isWanted;
    const std::function<void(const std::shared_ptr<const NativePicture> &)> &deliver;
    RecordingFile file;
    Stretch chosen;
    SampleReadingHooks hooks;
    Tools::FiniteSamples finite;                    // of the window
    std::vector<Tools::NonFiniteSamples> nonFinite; // of the part, one per channel
};

} // namespace

bool contains(const NativeDomain &domain, double first, double points)
{
    return first >= domain.first && first + points <= double(domain.first) + domain.count;
}

NativeDomain wantedDomain(int npoints, int mostDetailed, double first, double points,
                          const NativeDomain &present)
{
    if (npoints <= mostDetailed)
        return {0, npoints, true};
    const double end = first + points;
    const double presentEnd = double(present.first) + present.count;
    const bool touchesEnd = (first <= present.first && present.first > 0) ||
                            (end >= presentEnd && presentEnd < npoints);
    const bool canBeDetailed = points * expansion <= mostDetailed;
    if (present.count > 0 && contains(present, first, points) && !touchesEnd &&
        (present.detailed || (!canBeDetailed && present.count <= coarse * points)))
        return present;

    NativeDomain domain;
    domain.detailed = canBeDetailed;
    domain.count =
        canBeDetailed ? mostDetailed : int(std::min<double>(npoints, points * expansion));
    const double centred = first + points / 2 - domain.count / 2.0;
    domain.first = int(std::clamp<double>(centred, 0, npoints - domain.count));
    return domain;
}

int mostDetailedPoints(const RecordingFile &file)
{
    constexpr qint64 fewest = 4096;
    const qint64 bySamples = mostSamples / file.header().channels;
    if (file.completePoints() <= bySamples)
        return int(std::max(fewest, bySamples));
    return int(std::max(fewest, std::min(bySamples, mostDetailedBytes / file.pointBytes())));
}

void loadNative(const NativeRequest &request, const std::function<bool()> &isWanted,
                const std::function<void(const std::shared_ptr<const NativePicture> &)> &deliver)
{
    Loading(request, isWanted, deliver).run();
}
