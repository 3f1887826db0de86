#pragma once

#include "calc/leveljumps.h"
#include "calc/reduction.h"
#include "data/recordingfile.h"

#include <QString>
#include <functional>
#include <memory>
#include <vector>

/// What the viewer shows of a recording is read beside the window's thread: first a glance at
/// the whole part, then the part itself. Only plain data pass between the threads, and none of
/// them is changed once it was handed over.

/// The part of a recording that the viewer keeps, and how.
struct NativeDomain {
    int first = 0; ///< point, index within the file
    int count = 0;
    bool detailed = false; ///< every sample is kept; otherwise only a reduction
};

/// Whether a part holds every point of a range.
bool contains(const NativeDomain &domain, double first, double points);

/// The part to keep for what is in sight: the present one as long as it shows enough of it.
///
/// @param npoints  of the recording
/// @param mostDetailed  points that may be kept with every sample; a recording that has no more
///                      is kept whole
/// @param first, points  in sight
NativeDomain wantedDomain(int npoints, int mostDetailed, double first, double points,
                          const NativeDomain &present);

/// Most points that are kept with every sample of one ray: at most 64 MiB of them, and 256 MiB of
/// the file, which holds the other rays between them.
int mostDetailedPoints(const RecordingFile &file);

struct NativeRequest {
    QString path;
    int module = 0; ///< index from 0
    int ray = 0;    ///< index from 0
    NativeDomain domain;
    double dispersion = 0;         ///< pc/cm^3, of the sum
    double marginDispersion = 0;   ///< samples for delays up to this one are kept as well
    bool deletesSteps = false;     ///< of the detailed part
    std::vector<bool> channelsOff; ///< left out of the sum
    bool isRepeated = false;       ///< the part is shown already: no glance at it
};

/// What is known of the part so far.
struct NativePicture {
    NativeRequest request;
    Tools::Reduction reduction;
    double share = 0;     ///< of the part's points that the reduction is made of
    bool isGlance = true; ///< some columns show only a few of their points

    /// Every sample of the part: module 0 and ray 0 of this record are those asked for. It has no
    /// samples until the part was read.
    ObservationData window;
    int offset = 0; ///< point of the window at which the part begins
    /// The same samples for sums: what is no finite number is replaced by the median of the
    /// channel's others; only bands without any finite number stay as they are.
    Samples finite;
    std::vector<int> bandsWithoutNumbers; ///< of the part, indices from 0, ascending
    /// The level jumps that were deleted from every channel, as points of the window; empty where
    /// none are deleted.
    std::vector<std::vector<Tools::LevelJump>> jumps;

    bool isLast = false;
    QString problem;   ///< what a user should know of the file; may come with samples
    QString nonFinite; ///< which samples read so far are no numbers; empty where all are
};

/// Reads what is asked for and hands it over step by step, on the calling thread.
///
/// @param isWanted  asked every few milliseconds; false ends the work
/// @param deliver   called with each state, the last of them isLast
void loadNative(const NativeRequest &request, const std::function<bool()> &isWanted,
                const std::function<void(const std::shared_ptr<const NativePicture> &)> &deliver);
