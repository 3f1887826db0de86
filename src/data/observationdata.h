#pragma once

#include "data/samples.h"

#include <QDateTime>
#include <QString>
#include <vector>

/// One recording in memory: what its passport says and its samples. A plain value; copies
/// share the samples.
///
/// The instrument stores one channel more than it has frequency bands: `channels` is the
/// number of bands plus one, `fbands` holds `channels` - 1 frequencies, and whatever sums
/// over frequency uses the channels 0 to `channels` - 2.
struct ObservationData {
    int npoints = 0;  ///< samples per channel; 0: no data, -1: passport without channels or modules
    int point = 0;    ///< index of the first sample within the parent recording
    int modules = -1; ///< modules in the file
    int channels = 0; ///< channels per module and ray, the extra last one included
    int rays = 0;     ///< rays per module
    int module = -1;  ///< number of the only module, where the file holds one
    int ray = -1;     ///< number of the only ray, where the file holds one
    int dispersion = 0;   ///< pc/cm^3, of a derived file
    int firstModule = 1;  ///< number of the first module
    int spareNumber = -1; ///< set by the reader, read by no one

    double tresolution = 0;     ///< seconds between samples
    double sampleFactor = 0;    ///< 0.89 once samples were read
    double sampleMarker = 0;    ///< -1.0 once samples were read
    QDateTime beginTime;        ///< UTC, of the first sample, the seconds since the parent's begin
                                ///< truncated; invalid where the passport has none. Whoever shows
                                ///< times takes exactBegin() or a RecordingClock
    QString nativeName;         ///< display name
    QString fileName;           ///< without directory
    QString spareText;          ///< left empty by the reader
    QString starTime;           ///< sidereal time of the first sample, "h:m:s"
    QString filePath;           ///< full path; of the parent recording, for derived files
    std::vector<double> fbands; ///< band centres, MHz, in file order
    bool samplesShared = false; ///< samples belong to another record; freeing does not depend on it
    std::vector<int> moduleNumbers; ///< of the modules in file order, as the passport has them
    Samples samples;                ///< samples[module][channel][ray][point]; null: passport only
    double beginRest = 0;  ///< ms from `beginTime` to the first sample, with fractions of a ms
    int missingPoints = 0; ///< points at the end that are not whole in the file; what is missing of
                           ///< them reads as 0
};

/// Points whose samples are all there: those from 0 on and before this one.
inline int completePoints(const ObservationData &data)
{
    return data.npoints - data.missingPoints;
}
