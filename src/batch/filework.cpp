#include "batch/filework.h"

#include "base/bytetext.h"
#include "base/timetext.h"
#include "batch/inputlist.h"
#include "batch/keyedwork.h"
#include "batch/outputfiles.h"
#include "batch/programname.h"
#include "calc/stretchsum.h"
#include "coords/barycentre.h"
#include "data/recordingtime.h"
#include "data/recordingwriter.h"
#include "data/truenumbers.h"
#include "results/filterbank.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace Batch {

using namespace Results;

namespace {

constexpr int blockPoints = 16384;
constexpr qint64 mostImportBlock = qint64(64) << 20; // bytes
constexpr int longestText = 80; // bytes of a text in the header of a filterbank

// Bands in descending order, as indices of channels; empty where they are not equally spaced.
std::vector<int> descendingBands(const ObservationData &header)
{
    const int bands = header.channels - 1;
    const std::vector<double> &f = header.fbands;
    if (bands < 1 || int(f.size()) < bands)
        return {};
    const double spacing = bands > 1 ? (f[std::size_t(bands - 1)] - f[0]) / (bands - 1) : 0;
    std::vector<int> order;
    for (int band = 0; band < bands; ++band) {
        const double expected = f[0] + band * spacing;
        if (!(f[std::size_t(band)] > 0) ||
            std::abs(f[std::size_t(band)] - expected) > 0.01 * std::abs(spacing))
            return {};
        order.push_back(spacing > 0 ? bands - 1 - band : band);
    }
    return order;
}

// The name of a recording with the key of a request behind it, in 80 bytes.
QString rawDataName(const QString &path, const QString &key)
{
    QString name = QFileInfo(path).fileName();
    while (bytesOfText(name).size() + 1 + key.size() > longestText)
        name.chop(1);
    return name + " " + key;
}

Failure exportFilterbank(const ExportRequest &request, const QString &key, RecordingFile &file,
                         const QString &path, const Control &control)
{
    const ObservationData &header = file.header();
    const std::vector<int> order = descendingBands(header);
    if (order.empty())
        return {ExitCode::BadData,
                file.path() +
                    ": its bands are missing in the passport or not equally spaced, which "
                    "a .fil cannot say."};
    FilterbankHeader fil;
    fil.rawDataFile = rawDataName(file.path(), key);
    fil.source = QFileInfo(file.path()).completeBaseName();
    fil.begin = header.beginTime.isValid() ? Tools::modifiedJulianDay(exactBegin(header)) : 0;
    fil.step = header.tresolution;
    fil.channels = int(order.size());
    fil.firstBand = header.fbands[std::size_t(order.front())];
    fil.bandStep = order.size() > 1 ? (header.fbands[std::size_t(order.back())] - fil.firstBand) /
                                          double(order.size() - 1)
                                    : -1;
    if (const QString problem = filterbankProblem(fil); !problem.isEmpty())
        return {ExitCode::BadData, file.path() + " cannot be exported as a .fil: " + problem + "."};
    WholeFile writer;
    if (Failure failure = makeFolderOf(path))
        return failure;
    if (Failure failure = failureOf(writer.open(path)))
        return failure;
    if (Failure failure = failureOf(writer.write(filterbankBytes(fil))))
        return failure;

    std::vector<float> row(std::size_t(std::min(blockPoints, header.npoints)) * order.size());
    SampleReadingHooks hooks;
    hooks.keepAlive = [&control] { return !control.isStopped(); };
    for (int first = 0; first < header.npoints; first += blockPoints) {
        Stretch stretch;
        stretch.first = first;
        stretch.count = std::min(blockPoints, header.npoints - first);
        stretch.modules = {request.module - 1};
        stretch.rays = {request.ray - 1};
        const StretchReading reading = file.read(stretch, hooks);
        const ObservationData *const part = reading.whole();
        if (!part)
            return failureOf(reading.end(), reading.reason());
        for (std::size_t band = 0; band < order.size(); ++band) {
            const float *const samples = part->samples[0][order[band]][0];
            for (int i = 0; i < stretch.count; ++i)
                row[std::size_t(i) * order.size() + band] = samples[i];
        }
        const qint64 count = qint64(stretch.count) * qint64(order.size());
        qToLittleEndian<quint32>(row.data(), count, row.data());
        if (Failure failure = failureOf(writer.write(reinterpret_cast<const char *>(row.data()),
                                                     count * qint64(sizeof(float)))))
            return failure;
        control.progress(int(100 * (qint64(first) + stretch.count) / header.npoints));
    }
    return failureOf(writer.commit());
}

QByteArray seriesDescription(const ExportRequest &request, const QString &key,
                             const RecordingFile &file, const QString &path)
{
    const ObservationData &header = file.header();
    const int bands = header.channels - 1;
    const double first = header.fbands.front();
    const double last = header.fbands[std::size_t(bands - 1)];
    const double spacing = bands > 1 ? std::abs(last - first) / (bands - 1) : 0;
    const double begin =
        header.beginTime.isValid() ? Tools::modifiedJulianDay(exactBegin(header)) : 0;
    const std::vector<std::pair<QString, QString>> lines = {
        {"Data file name without suffix", QFileInfo(path).completeBaseName()},
        {"Telescope used", "ZRT"},
        {"Instrument used", "ZRT"},
        {"Object being observed", QFileInfo(file.path()).completeBaseName()},
        {"J2000 Right Ascension (hh:mm:ss.ssss)", "00:00:00.0000"},
        {"J2000 Declination     (dd:mm:ss.ssss)", "00:00:00.0000"},
        {"Data observed by", "unknown"},
        {"Epoch of observation (MJD)", QString::number(begin, 'f', 12)},
        {"Barycentered?           (1=yes, 0=no)", "0"},
        {"Number of bins in the time series", QString::number(header.npoints)},
        {"Width of each time series bin (sec)", numberText(header.tresolution)},
        {"Any breaks in the data? (1=yes, 0=no)", "0"},
        {"Type of observation (EM band)", "Radio"},
        {"Beam diameter (arcsec)", "0"},
        {"Dispersion measure (cm-3 pc)", numberText(request.dispersion)},
        {"Central freq of low channel (MHz)", numberText(std::min(first, last))},
        {"Total bandwidth (MHz)", numberText(spacing * bands)},
        {"Number of channels", QString::number(bands)},
        {"Channel bandwidth (MHz)", numberText(spacing)},
        {"Data analyzed by", programName()},
    };
    QString text;
    for (const auto &[name, value] : lines)
        text += " " + name.leftJustified(38) + " =  " + value + "\n";
    text += QString(" Any additional notes:\n    Module %1, ray %2 of ")
                .arg(moduleNumber(header, request.module - 1))
                .arg(rayNumber(header, request.ray - 1)) +
            QFileInfo(file.path()).fileName() + "; position not known.\n    Delays refer to " +
            numberText(last) + " MHz and wrap round the end of the recording.\n    " + key + "\n";
    return bytesOfText(text);
}

// Sums as little-endian floats, a block at a time: all of them may be more than one array of bytes
// can hold.
WriteFailure writeFloats(const std::vector<double> &sums, WholeFile &writer)
{
    std::vector<float> block;
    for (std::size_t first = 0; first < sums.size(); first += blockPoints) {
        const std::size_t end = std::min(first + blockPoints, sums.size());
        block.assign(sums.begin() + std::ptrdiff_t(first), sums.begin() + std::ptrdiff_t(end));
        const qint64 count = qint64(block.size());
        qToLittleEndian<quint32>(block.data(), count, block.data());
        if (WriteFailure failure = writer.write(reinterpret_cast<const char *>(block.data()),
                                                count * qint64(sizeof(float))))
            return failure;
    }
    return {};
}

Failure exportSeries(const ExportRequest &request, const QString &key, RecordingFile &file,
                     const QStringList &paths, const Control &control)
{
    SampleReadingHooks hooks;
    hooks.keepAlive = [&control] { return !control.isStopped(); };
    const Tools::StretchSum sum =
        Tools::sumStretch(file, request.dispersion, request.module - 1, request.ray - 1, 0,
                          file.header().npoints, hooks);
    if (!sum.whole())
        return sum.end() == StretchEnd::Refused ? Failure{ExitCode::BadData, sum.reason()}
                                                : failureOf(sum.end(), sum.reason());
    if (!sum.whole()->remark.isEmpty())
        control.remark(file.path() + ": " + sum.whole()->remark +
                       " They count as the median of their channel.");
    const std::vector<double> &sums = sum.whole()->sums;
    if (std::any_of(sums.begin(), sums.end(), [](double v) { return !std::isfinite(float(v)); }))
        return {ExitCode::BadData, file.path() + ": its samples are too large to be added; a .dat "
                                                 "holds no sums beyond 3.4e38. Check the file."};
    return writeOutputs(
        {{paths[1], seriesDescription(request, key, file, paths[0])},
         {paths[0], {}, [&sums](WholeFile &writer) { return writeFloats(sums, writer); }}});
}

// Turns numbers of the passport into places in the file.
Failure findRequested(const RecordingFile &file, ExportRequest &request)
{
    if (Failure failure = findPlace(file, Numbered::Module, request.moduleNumber, request.module))
        return failure;
    if (Failure failure = findPlace(file, Numbered::Ray, request.rayNumber, request.ray))
        return failure;
    return findRay(file, request.module, request.ray);
}

// Names tell the true numbers of module and ray; of a file that cannot be read, which will be
// refused, the given ones.
QStringList exportPaths(const ExportRequest &request, const QString &input)
{
    RecordingFile file;
    ExportRequest found = request;
    int module = request.moduleNumber.value_or(request.module);
    int ray = request.rayNumber.value_or(request.ray);
    if (file.open(input) && !findRequested(file, found)) {
        module = moduleNumber(file.header(), found.module - 1);
        ray = rayNumber(file.header(), found.ray - 1);
    }
    QString name = QFileInfo(input).fileName() + QString(".m%1_r%2").arg(module).arg(ray);
    if (request.kind == "fil")
        return {besideOrIn(input, request.output, name + ".fil")};
    name += "_DM" + numberText(request.dispersion);
    return {besideOrIn(input, request.output, name + ".dat"),
            besideOrIn(input, request.output, name + ".inf")};
}

std::vector<HeaderLine> exportParameters(const ExportRequest &request)
{
    const auto numberOr = [](const std::optional<int> &number, int place) {
        return number ? QString("number %1").arg(*number) : QString("place %1").arg(place);
    };
    return {{"kind", request.kind},
            {"module", numberOr(request.moduleNumber, request.module)},
            {"ray", numberOr(request.rayNumber, request.ray)},
            {"dispersion", numberText(request.dispersion)}};
}

QByteArray importedPassport(const FilterbankHeader &fil, int npoints, const QString &input,
                            const QString &key)
{
    QStringList bands;
    for (int i = 0; i < fil.channels; ++i) {
        const int channel = fil.bandStep < 0 ? fil.channels - 1 - i : i;
        bands << numberText(fil.firstBand + channel * fil.bandStep);
    }
    // Its own lines come first, so that the key is found at the begin however many bands follow.
    QStringList lines = {
        "made_of " + input,
        "made_by " + key,
        "npoints " + QString::number(npoints),
        "nbands " + QString::number(fil.channels),
        "fbands " + bands.join(' '),
        "modulus 1",
        "rays 1",
        "tresolution " + numberText(fil.step * 1000),
    };
    const QDateTime begin = dateOfModifiedJulian(fil.begin);
    if (begin.isValid()) {
        lines << "date_begin " + textOfTime(begin, "dd.MM.yyyy");
        lines << "time_begin " + textOfTime(begin, "h:mm:ss.zzz") + " UTC";
        lines << "mjd_begin " + QString::number(fil.begin, 'f', 12);
    }
    lines << "source " + fil.source.simplified();
    return passportText(lines);
}

// What a reader would have against the passport of an imported recording; empty: nothing.
QString passportProblem(const QByteArray &passport)
{
    if (passport.size() > passportSizeLimit)
        return "the frequencies of so many channels make a longer passport than readers take";
    return recordingHeader(parsePassport(passport), {}).problem;
}

// Values of one sample of the file, lowest band first, and their mean as the extra channel.
void convertSample(const char *bytes, const FilterbankHeader &fil, float *values)
{
    double sum = 0;
    for (int i = 0; i < fil.channels; ++i) {
        const int channel = fil.bandStep < 0 ? fil.channels - 1 - i : i;
        float value = 0;
        if (fil.bits == 8)
            value = float(quint8(bytes[channel]));
        else if (fil.bits == 16)
            value = float(qFromLittleEndian<quint16>(bytes + 2 * qint64(channel)));
        else
            value = qFromLittleEndian<float>(bytes + 4 * qint64(channel));
        values[i] = value;
        sum += double(value);
    }
    values[fil.channels] = float(sum / fil.channels);
}

Failure importFilterbank(const QString &input, const QString &output, const QString &key,
                         const Control &control)
{
    QFile file(input);
    if (Failure failure = openInput(file))
        return failure;
    FilterbankHeader fil;
    if (const QString problem = readFilterbank(file, fil); !problem.isEmpty())
        return {ExitCode::BadData, input + " cannot be imported: " + problem + "."};
    const qint64 sampleBytes = qint64(fil.channels) * fil.bits / 8;
    const qint64 available = file.size() - file.pos();
    const qint64 npoints = available / sampleBytes;
    if (npoints < 1 || npoints > std::numeric_limits<int>::max())
        return {ExitCode::BadData,
                input + QString(" cannot be imported: it holds %1 samples.").arg(npoints)};
    if (available % sampleBytes != 0)
        control.remark(input + ": the last sample is not whole and was left out.");

    const QByteArray passport = importedPassport(fil, int(npoints), input, key);
    if (const QString problem = passportProblem(passport); !problem.isEmpty())
        return {ExitCode::BadData, input + " cannot be imported: " + problem + "."};
    RecordingWriter writer;
    if (Failure failure = makeFolderOf(output))
        return failure;
    if (Failure failure = failureOf(writer.open(output, passport)))
        return failure;
    const qint64 valuesPerPoint = qint64(fil.channels) + 1;
    const qint64 step = std::clamp<qint64>(mostImportBlock / (valuesPerPoint * 4), 1, blockPoints);
    std::vector<float> values(std::size_t(step * valuesPerPoint));
    for (qint64 first = 0; first < npoints; first += step) {
        if (control.isStopped())
            return stopped();
        const qint64 count = std::min(step, npoints - first);
        const QByteArray bytes = file.read(count * sampleBytes);
        if (bytes.size() != count * sampleBytes)
            return {ExitCode::InputOutput, input + " cannot be read: " + file.errorString() + "."};
        for (qint64 i = 0; i < count; ++i)
            convertSample(bytes.constData() + i * sampleBytes, fil,
                          values.data() + i * valuesPerPoint);
        if (Failure failure = failureOf(writer.write(values.data(), count * valuesPerPoint)))
            return failure;
        control.progress(int(100 * (first + count) / npoints));
    }
    return failureOf(writer.commit());
}

} // namespace

Work exportWork(const ExportRequest &request)
{
    const std::vector<HeaderLine> parameters = exportParameters(request);
    const auto outputs = [request](const QString &input) { return exportPaths(request, input); };
    // The description of a series stands behind its samples.
    Work work = keyedWork("export", parameters, outputs,
                          [outputs](const QString &input) { return outputs(input).constLast(); });
    work.memory = [request](const QString &input) {
        RecordingFile file;
        if (!file.open(input))
            return qint64(0);
        return memoryOfRay(file, request.kind == "fil" ? blockPoints : file.header().npoints) * 2;
    };
    work.run = [=](const QString &input, const Control &control) {
        const QString key = requestKey(requestOf("export", input, parameters));
        RecordingFile file;
        if (Failure failure = openRecordingFile(file, input, control))
            return failure;
        ExportRequest found = request;
        if (Failure failure = findRequested(file, found))
            return failure;
        const QStringList paths = outputs(input);
        return found.kind == "fil" ? exportFilterbank(found, key, file, paths[0], control)
                                   : exportSeries(found, key, file, paths, control);
    };
    return work;
}

Work importWork(const OutputOptions &output)
{
    const auto recordingOf = [output](const QString &input) {
        return besideOrIn(input, output, QFileInfo(input).fileName() + ".pnt");
    };
    Work work = keyedWork(
        "import", {},
        [recordingOf](const QString &input) { return QStringList(recordingOf(input)); },
        recordingOf);
    work.memory = [](const QString &) { return 2 * mostImportBlock; };
    work.run = [recordingOf](const QString &input, const Control &control) {
        return importFilterbank(input, recordingOf(input),
                                requestKey(requestOf("import", input, {})), control);
    };
    return work;
}

} // namespace Batch
