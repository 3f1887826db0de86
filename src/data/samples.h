#pragma once

#include <QtGlobal>
#include <cstddef>
#include <memory>
#include <vector>

/// The memory of one recording's samples: every ray an array of `npoints` floats, all rays
/// in one block, and the pointer tree over them. Fresh memory reads as zeros and takes up
/// room only where it is written. Whoever makes a block may write it; once handed to
/// `Samples` it is only read.
class SampleBlock {
public:
    /// @return null when a count is below 1, the size overflows 63 bits or the system
    ///         refuses the memory
    static std::shared_ptr<SampleBlock> allocate(int modules, int channels, int rays, int npoints);

    /// Bytes that `allocate` takes for these counts; -1 when a count is below 1 or the size
    /// overflows 63 bits.
    static qint64 bytesNeeded(int modules, int channels, int rays, int npoints);

    ~SampleBlock();
    SampleBlock(const SampleBlock &) = delete;
    SampleBlock &operator=(const SampleBlock &) = delete;

    /// Array of `npoints` floats of one ray; indices from 0.
    float *ray(int module, int channel, int ray) const;

private:
    friend class Samples;
    SampleBlock() = default;
    static std::shared_ptr<SampleBlock> withChannelsOff(std::shared_ptr<const SampleBlock> whole,
                                                        const std::vector<bool> &off);
    static std::shared_ptr<SampleBlock> withOwnRows(std::shared_ptr<const SampleBlock> whole,
                                                    int module, int ray,
                                                    const std::vector<bool> &channels);
    void setPointers(std::vector<const float *> rows);
    void standFor(std::shared_ptr<const SampleBlock> whole, std::vector<const float *> rows);
    std::size_t rowOf(int module, int channel, int ray) const;

    std::shared_ptr<const SampleBlock> others; // where some rows belong to another block

    void *mapping = nullptr;
    std::size_t mappedBytes = 0;
    qint64 stride = 0;
    int npoints = 0;
    int channels = 0;
    int rays = 0;
    std::vector<const float *> rayPointers;
    std::vector<const float *const *> channelPointers;
    std::vector<const float *const *const *> modulePointers;
};

/// Samples of a recording as every analysis reads them: samples[module][channel][ray][point],
/// indices from 0. Copies share the memory and the last one frees it; an empty object (only
/// the passport was read) compares equal to nullptr.
class Samples {
public:
    Samples() = default;
    explicit Samples(std::shared_ptr<const SampleBlock> sampleBlock)
        : block(std::move(sampleBlock)), modules(block ? block->modulePointers.data() : nullptr)
    {}

    const float *const *const *operator[](int module) const { return modules[module]; }
    explicit operator bool() const { return modules != nullptr; }
    bool operator==(std::nullptr_t) const { return modules == nullptr; }

    /// The same samples, but zeros in the channels that are off: whatever sums over them leaves
    /// these out. The other channels' memory is shared.
    ///
    /// @param off  one per channel; missing ones are on
    /// @return empty when memory is short
    Samples withChannelsOff(const std::vector<bool> &off) const
    {
        return block ? Samples(SampleBlock::withChannelsOff(block, off)) : Samples();
    }

    /// A block that shares the memory of these samples, but for some channels of one ray: their
    /// rows are zeros, for the caller to write.
    ///
    /// @param module, ray  indices from 0
    /// @param channels     one per channel, true: a row of its own; missing ones share
    /// @return null when memory is short or there are no samples
    std::shared_ptr<SampleBlock> withOwnRows(int module, int ray,
                                             const std::vector<bool> &channels) const
    {
        return block ? SampleBlock::withOwnRows(block, module, ray, channels) : nullptr;
    }

private:
    std::shared_ptr<const SampleBlock> block;
    const float *const *const *const *modules = nullptr;
};
