#pragma once

#include <QString>
#include <QtGlobal>
#include <functional>
#include <vector>

namespace Ffa {

/// Called with the percentage of trial periods done, once for every fold of a search; false
/// ends the search.
using Progress = std::function<bool(int percent)>;

/// The search proper: every trial period of the plan, in the order of growing downsampling,
/// then bins, then transform row. Neighbouring steps may interleave their periods.
///
/// @param data      size samples, of unit variance; not changed
/// @param tsamp     sampling interval; periods are in the same unit
/// @param widths    nwidths boxcar widths in bins
/// @param periods   periodogramLength() trial periods
/// @param foldbins  bins of the fold behind each of them
/// @param snr       [trial][width]
/// @return false when `progress` ended it: what is written until then is valid
/// @throw std::invalid_argument for parameters that validateParameters() refuses,
///        std::bad_alloc where buffers do not fit
bool runPeriodogram(const float *data, quint64 size, double tsamp, const quint64 *widths,
                    quint64 nwidths, double period_min, double period_max, qint32 bins_min,
                    qint32 bins_max, double *periods, quint32 *foldbins, float *snr,
                    const Progress &progress = {});

/// Bytes of memory that a search takes, its results included, as Periodogram checks them.
/// Parameters must be valid.
double searchBytes(quint64 size, double tsamp, double period_min, double period_max,
                   qint32 bins_min, qint32 bins_max, const std::vector<quint64> &widths);

/// The trial periods of a search and the bins of their folds, in the same order, without
/// searching anything. Parameters must be valid.
///
/// @param periods   periodogramLength() values, in the unit of tsamp
/// @param foldbins  as many
void trialPeriods(quint64 size, double tsamp, double period_min, double period_max, qint32 bins_min,
                  qint32 bins_max, double *periods, quint32 *foldbins);

} // namespace Ffa

/// Result of one search of an evenly sampled series for periodic pulses with the fast folding
/// algorithm: for every trial period the S/N of the best boxcar of every trial width.
///
/// A search is made in the constructor, which throws nothing: what stops it is in `error`,
/// and then both counts are 0 and the arrays empty.
class Periodogram {
public:
    std::vector<quint64> widths;   ///< boxcar widths in bins, ascending; nwidths values
    std::vector<double> periods;   ///< trial periods in the unit of tsamp; length values
    std::vector<quint32> foldbins; ///< phase bins of the fold of each trial; length values
    std::vector<float> snr;        ///< trial k at width j: element k x nwidths + j
    qint32 length = 0;             ///< trial periods
    qint32 nwidths = 0;            ///< trial widths
    QString error;                 ///< empty when the search ran

    /// Empty, after a debug line that says so.
    Periodogram();

    /// Searches the data as they are; they should have mean 0 and unit variance.
    ///
    /// @param data        size samples
    /// @param tsamp       sampling interval; periods are in the same unit
    /// @param bins_min    fewest phase bins of a fold, above 1
    /// @param ducy_max    largest duty cycle, bounds the widths
    /// @param wtsp        growth factor of the widths
    Periodogram(const float *data, quint64 size, double tsamp, double period_min, double period_max,
                qint32 bins_min, qint32 bins_max, double ducy_max, double wtsp,
                const Ffa::Progress &progress = {});

    /// The same; data that are not `normalized` yet are normalised in place first.
    ///
    /// @param reserved  ignored
    Periodogram(float *data, quint64 size, double tsamp, double period_min, double period_max,
                qint32 reserved, qint32 bins_min, qint32 bins_max, double ducy_max, double wtsp,
                bool normalized, const Ffa::Progress &progress = {});

private:
    void search(const float *data, quint64 size, double tsamp, double period_min, double period_max,
                qint32 bins_min, qint32 bins_max, double ducy_max, double wtsp,
                const Ffa::Progress &progress);
};
