#include "data/samples.h"

#include <algorithm>
#include <cstdint>
#include <sys/mman.h>

namespace {

constexpr qint64 cacheLine = 64;
constexpr qint64 hugePage = qint64(2) << 20;
constexpr qint64 floatsPerLine = cacheLine / qint64(sizeof(float));

// Rows begin on a cache line, and their distance is an odd number of lines: rows whose
// length is a large power of two would otherwise share one cache set and evict each other
// while a block of points is spread over all of them.
qint64 rowStrideFor(int npoints)
{
    const qint64 lines = (npoints + floatsPerLine - 1) / floatsPerLine;
    return (lines | 1) * floatsPerLine;
}

} // namespace

qint64 SampleBlock::bytesNeeded(int modules, int channels, int rays, int npoints)
{
    if (modules < 1 || channels < 1 || rays < 1 || npoints < 1)
        return -1;
    // Up to three pointers lead to a row; they count where the rows are short.
    qint64 bytes = rowStrideFor(npoints) * qint64(sizeof(float)) + 3 * qint64(sizeof(void *));
    for (const int count : {modules, channels, rays}) {
        if (__builtin_mul_overflow(bytes, qint64(count), &bytes))
            return -1;
    }
    return __builtin_add_overflow(bytes, hugePage, &bytes) ? -1 : bytes;
}

std::shared_ptr<SampleBlock> SampleBlock::allocate(int modules, int channels, int rays, int npoints)
{
    if (bytesNeeded(modules, channels, rays, npoints) < 0)
        return nullptr;
    const std::size_t rows = std::size_t(modules) * std::size_t(channels) * std::size_t(rays);
    const std::size_t rowBytes = std::size_t(rowStrideFor(npoints)) * rows * sizeof(float);
    // One huge page more than needed, so that the rows can begin on a huge page.
    const std::size_t mapped = rowBytes + std::size_t(hugePage);
    void *const mapping = mmap(nullptr, mapped, PROT_READ | PROT_WRITE,
                               MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED)
        return nullptr;

    std::shared_ptr<SampleBlock> block(new SampleBlock);
    block->mapping = mapping;
    block->mappedBytes = mapped;
    block->stride = rowStrideFor(npoints);
    block->npoints = npoints;
    block->channels = channels;
    block->rays = rays;

    const qint64 beyondHugePage = qint64(reinterpret_cast<std::uintptr_t>(mapping) % hugePage);
    char *const aligned = static_cast<char *>(mapping) + (hugePage - beyondHugePage) % hugePage;
    float *const first = reinterpret_cast<float *>(aligned);
    madvise(first, rowBytes, MADV_HUGEPAGE);

    std::vector<const float *> rowPointers(rows);
    for (std::size_t row = 0; row < rows; ++row)
        rowPointers[row] = first + qint64(row) * block->stride;
    block->setPointers(std::move(rowPointers));
    return block;
}

// One row of zeros that is never written, and so takes no memory, stands for all that are off.
std::shared_ptr<SampleBlock> SampleBlock::withChannelsOff(std::shared_ptr<const SampleBlock> whole,
                                                          const std::vector<bool> &off)
{
    std::shared_ptr<SampleBlock> block = allocate(1, 1, 1, whole->npoints);
    if (!block)
        return nullptr;
    const float *const zeros = block->rayPointers[0];
    std::vector<const float *> rows = whole->rayPointers;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const std::size_t channel = row / std::size_t(whole->rays) % std::size_t(whole->channels);
        if (channel < off.size() && off[channel])
            rows[row] = zeros;
    }
    block->standFor(std::move(whole), std::move(rows));
    return block;
}

std::shared_ptr<SampleBlock> SampleBlock::withOwnRows(std::shared_ptr<const SampleBlock> whole,
                                                      int module, int ray,
                                                      const std::vector<bool> &channels)
{
    const int own = int(std::count(channels.begin(), channels.end(), true));
    std::shared_ptr<SampleBlock> block = allocate(1, std::max(own, 1), 1, whole->npoints);
    if (!block)
        return nullptr;
    // A huge page would be taken whole where a few samples are written.
    madvise(block->mapping, block->mappedBytes, MADV_NOHUGEPAGE);
    std::vector<const float *> rows = whole->rayPointers;
    int next = 0;
    for (std::size_t channel = 0; channel < channels.size(); ++channel) {
        if (channels[channel])
            rows[whole->rowOf(module, int(channel), ray)] = block->ray(0, next++, 0);
    }
    block->standFor(std::move(whole), std::move(rows));
    return block;
}

// Takes the shape of another block, whose rows are among those given.
void SampleBlock::standFor(std::shared_ptr<const SampleBlock> whole,
                           std::vector<const float *> rows)
{
    channels = whole->channels;
    rays = whole->rays;
    stride = whole->stride;
    npoints = whole->npoints;
    setPointers(std::move(rows));
    others = std::move(whole);
}

// Builds the tree over the rows, which are in the order module, channel, ray.
void SampleBlock::setPointers(std::vector<const float *> rows)
{
    rayPointers = std::move(rows);
    channelPointers.resize(rayPointers.size() / std::size_t(rays));
    for (std::size_t i = 0; i < channelPointers.size(); ++i)
        channelPointers[i] = rayPointers.data() + i * std::size_t(rays);
    modulePointers.resize(channelPointers.size() / std::size_t(channels));
    for (std::size_t i = 0; i < modulePointers.size(); ++i)
        modulePointers[i] = channelPointers.data() + i * std::size_t(channels);
}

SampleBlock::~SampleBlock()
{
    if (mapping)
        munmap(mapping, mappedBytes);
}

std::size_t SampleBlock::rowOf(int module, int channel, int ray) const
{
    return (std::size_t(module) * std::size_t(channels) + std::size_t(channel)) *
               std::size_t(rays) +
           std::size_t(ray);
}

float *SampleBlock::ray(int module, int channel, int ray) const
{
    return const_cast<float *>(rayPointers[rowOf(module, channel, ray)]);
}
