#pragma once

#include <QByteArray>
#include <QString>

class QDateTime;
class QIODevice;

namespace Results {

/// Header of a SIGPROC filterbank file, one IF.
struct FilterbankHeader {
    QString source;
    QString rawDataFile;  ///< at most 80 bytes; empty: not in the header
    double begin = 0;     ///< MJD (UTC) of the first sample
    double step = 0;      ///< s
    double firstBand = 0; ///< MHz, centre of the first channel in the file
    double bandStep = 0;  ///< MHz, negative where the highest band comes first
    int channels = 0;
    int bits = 32; ///< per value: 8 and 16 are unsigned integers, 32 floats
};

/// What is wrong with the counts and numbers of a header, in plain words; empty when it can be
/// written and read.
QString filterbankProblem(const FilterbankHeader &header);

/// The header as it stands at the begin of a file.
QByteArray filterbankBytes(const FilterbankHeader &header);

/// Reads a header and leaves the device at the first value.
///
/// @return what is wrong, in plain words; empty when the header is complete and its counts can be
///         used
QString readFilterbank(QIODevice &device, FilterbankHeader &header);

/// Moment in UTC, given in days since 1858 November 17, 0h.
QDateTime dateOfModifiedJulian(double days);

} // namespace Results
