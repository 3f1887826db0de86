#include "batch/filework.h"

#include "batch/filterbank.h"
#include "batch/outputfiles.h"
#include "batch/picture.h"
#include "calc/stretchsum.h"
#include "data/recordingtime.h"
#include "data/resulttotext.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace Batch {

namespace {

constexpr int blockPoints = 16384;
constexpr qint64 mostImportBlock = qint64(64) << 20; // bytes
// A result is far smaller; what is not is no result.
constexpr qint64 largestResult = qint64(1) << 30;

Failure stopped()
{
    return {ExitCode::TryLater, "Stopped."};
}

// Work whose outputs have no room for what they were made with: their names tell it, and they
// count as done when they are not older than the input.
Work plainWork(const QString &command, const std::function<QStringList(const QString &)> &outputs)
{
    Work work;
    work.command = command;
    work.outputs = outputs;
    work.isDone = [outputs](const QString &input) {
        const QFileInfo source(input);
        const QStringList paths = outputs(input);
        return source.exists() && std::all_of(paths.begin(), paths.end(), [&](const QString &path) {
                   const QFileInfo info(path);
                   return info.exists() && info.lastModified() >= source.lastModified();
               });
    };
    work.memory = [](const QString &) { return qint64(0); };
    return work;
}

QString besideOrIn(const QString &input, const OutputOptions &output, const QString &name)
{
    const QDir folder(output.folder.isEmpty() ? QFileInfo(input).absolutePath() : output.folder);
    return QDir::cleanPath(folder.absoluteFilePath(name));
}

// Rows of a table have texts among them, curves only numbers.
bool holdsCurves(const ResultTable &table)
{
    return table.rows() > 0 &&
           std::none_of(table.columns.begin(), table.columns.end(), [](const Column &column) {
               return std::holds_alternative<QStringList>(column.values);
           });
}

// A file that must be there and open; the failure says what is wrong.
Failure openInput(QFile &file)
{
    const QFileInfo info(file.fileName());
    if (info.exists() && !info.isFile())
        return {ExitCode::NoInput, QString("%1 is not an ordinary file.").arg(file.fileName())};
    if (!file.open(QIODevice::ReadOnly))
        return {ExitCode::NoInput, QString("%1 cannot be opened: %2. Check the path and the "
                                           "permissions.")
                                       .arg(file.fileName(), file.errorString())};
    return {};
}

bool isResultFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && Tools::readResultHeader(file).isUsable();
}

Failure recordingToText(const QString &input, const QString &output, const Control &control)
{
    RecordingFile file;
    if (Failure failure = openRecordingFile(file, input, control))
        return failure;
    SampleReadingHooks hooks;
    hooks.keepAlive = [&control] { return !control.isStopped(); };
    Stretch all;
    all.count = file.header().npoints;
    const StretchReading reading = file.read(all, hooks);
    if (!reading.whole())
        return failureOf(reading.end(), reading.reason());
    const QString problem =
        Tools::observationToText(*reading.whole(), output, control.progress, control.isStopped);
    return problem.isEmpty() ? Failure() : Failure{ExitCode::InputOutput, problem};
}

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

Failure exportFilterbank(const ExportRequest &request, RecordingFile &file, const QString &path,
                         const Control &control)
{
    const ObservationData &header = file.header();
    const std::vector<int> order = descendingBands(header);
    if (order.empty())
        return {ExitCode::BadData, QString("%1: its bands are missing in the passport or not "
                                           "equally spaced, which a .fil cannot say.")
                                       .arg(file.path())};
    FilterbankHeader fil;
    fil.source = QFileInfo(file.path()).completeBaseName();
    fil.begin = header.beginTime.isValid() ? modifiedJulianDate(exactBegin(header)) : 0;
    fil.step = header.tresolution;
    fil.channels = int(order.size());
    fil.firstBand = header.fbands[std::size_t(order.front())];
    fil.bandStep = order.size() > 1 ? (header.fbands[std::size_t(order.back())] - fil.firstBand) /
                                          double(order.size() - 1)
                                    : -1;
    if (const QString problem = filterbankProblem(fil); !problem.isEmpty())
        return {ExitCode::BadData,
                QString("%1 cannot be exported as a .fil: %2.").arg(file.path(), problem)};
    OutputWriter writer;
    if (Failure failure = writer.open(path))
        return failure;
    if (Failure failure = writer.write(filterbankBytes(fil)))
        return failure;

    std::vector<float> row(std::size_t(blockPoints) * order.size());
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
        if (Failure failure = writer.write(reinterpret_cast<const char *>(row.data()),
                                           count * qint64(sizeof(float))))
            return failure;
        control.progress(int(100 * (qint64(first) + stretch.count) / header.npoints));
    }
    return writer.commit();
}

QByteArray seriesDescription(const ExportRequest &request, const RecordingFile &file,
                             const QString &path)
{
    const ObservationData &header = file.header();
    const int bands = header.channels - 1;
    const double first = header.fbands.front();
    const double last = header.fbands[std::size_t(bands - 1)];
    const double spacing = bands > 1 ? std::abs(last - first) / (bands - 1) : 0;
    const double begin = header.beginTime.isValid() ? modifiedJulianDate(exactBegin(header)) : 0;
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
        {"Data analyzed by", "zrt-batch " ZRT_VERSION},
    };
    QString text;
    for (const auto &[key, value] : lines)
        text += QString(" %1 =  %2\n").arg(key, -38).arg(value);
    text += QString(" Any additional notes:\n    Module %1, ray %2 of %3; position not known.\n"
                    "    Delays refer to %4 MHz and wrap round the end of the recording.\n")
                .arg(request.module)
                .arg(request.ray)
                .arg(QFileInfo(file.path()).fileName(), QString(numberText(last)));
    return text.toUtf8();
}

// Sums as little-endian floats, a block at a time: all of them may be more than one array of bytes
// can hold.
Failure writeFloats(const std::vector<double> &sums, OutputWriter &writer)
{
    std::vector<float> block;
    for (std::size_t first = 0; first < sums.size(); first += blockPoints) {
        const std::size_t end = std::min(first + blockPoints, sums.size());
        block.assign(sums.begin() + std::ptrdiff_t(first), sums.begin() + std::ptrdiff_t(end));
        const qint64 count = qint64(block.size());
        qToLittleEndian<quint32>(block.data(), count, block.data());
        if (Failure failure = writer.write(reinterpret_cast<const char *>(block.data()),
                                           count * qint64(sizeof(float))))
            return failure;
    }
    return {};
}

Failure exportSeries(const ExportRequest &request, RecordingFile &file, const QStringList &paths,
                     const Control &control)
{
    SampleReadingHooks hooks;
    hooks.keepAlive = [&control] { return !control.isStopped(); };
    const Tools::StretchSum sum =
        Tools::sumChannels(file, request.dispersion, request.module - 1, request.ray - 1, 0,
                           file.header().npoints, hooks);
    if (!sum.whole())
        return sum.end() == StretchEnd::Refused ? Failure{ExitCode::BadData, sum.reason()}
                                                : failureOf(sum.end(), sum.reason());
    if (!sum.whole()->remark.isEmpty())
        control.remark(QString("%1: %2 They count as the median of their channel.")
                           .arg(file.path(), sum.whole()->remark));
    const std::vector<double> &sums = sum.whole()->sums;
    return writeTogether(
        {{paths[1], seriesDescription(request, file, paths[0])},
         {paths[0], {}, [&sums](OutputWriter &writer) { return writeFloats(sums, writer); }}});
}

QStringList exportPaths(const ExportRequest &request, const QString &input)
{
    QString name =
        QString("%1.m%2_r%3").arg(QFileInfo(input).fileName()).arg(request.module).arg(request.ray);
    if (request.kind == "fil")
        return {besideOrIn(input, request.output, name + ".fil")};
    name += "_DM" + numberText(request.dispersion);
    return {besideOrIn(input, request.output, name + ".dat"),
            besideOrIn(input, request.output, name + ".inf")};
}

QByteArray importedPassport(const FilterbankHeader &fil, int npoints)
{
    QStringList bands;
    for (int i = 0; i < fil.channels; ++i) {
        const int channel = fil.bandStep < 0 ? fil.channels - 1 - i : i;
        bands << numberText(fil.firstBand + channel * fil.bandStep);
    }
    QStringList lines = {
        "npoints " + QString::number(npoints),
        "nbands " + QString::number(fil.channels),
        "fbands " + bands.join(' '),
        "modulus 1",
        "rays 1",
        "tresolution " + numberText(fil.step * 1000),
    };
    const QDateTime begin = dateOfModifiedJulian(fil.begin);
    if (begin.isValid()) {
        lines << "date_begin " + begin.toString("dd.MM.yyyy");
        lines << "time_begin " + begin.toString("h:mm:ss.zzz") + " UTC";
        lines << "mjd_begin " + QString::number(fil.begin, 'f', 12);
    }
    lines << "source " + fil.source.simplified();
    return QString("numpar %1\n").arg(lines.size() + 1).toLatin1() +
           (lines.join('\n') + '\n').toUtf8();
}

// What a reader would have against the passport of an imported recording; empty: nothing.
QString passportProblem(const QByteArray &passport)
{
    if (passport.size() > passportSizeLimit)
        return "the frequencies of so many channels make a longer passport than readers take";
    const RecordingHeader header = recordingHeader(parsePassport(passport), {});
    if (header.problem.isEmpty() && !(header.data.tresolution > 0))
        return "its sampling interval is none that a passport can hold";
    return header.problem;
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

Failure importFilterbank(const QString &input, const QString &output, const Control &control)
{
    QFile file(input);
    if (Failure failure = openInput(file))
        return failure;
    FilterbankHeader fil;
    if (const QString problem = readFilterbank(file, fil); !problem.isEmpty())
        return {ExitCode::BadData, QString("%1 cannot be imported: %2.").arg(input, problem)};
    const qint64 sampleBytes = qint64(fil.channels) * fil.bits / 8;
    const qint64 available = file.size() - file.pos();
    const qint64 npoints = available / sampleBytes;
    if (npoints < 1 || npoints > std::numeric_limits<int>::max())
        return {ExitCode::BadData,
                QString("%1 cannot be imported: it holds %2 samples.").arg(input).arg(npoints)};
    if (available % sampleBytes != 0)
        control.remark(QString("%1: the last sample is not whole and was left out.").arg(input));

    const QByteArray passport = importedPassport(fil, int(npoints));
    if (const QString problem = passportProblem(passport); !problem.isEmpty())
        return {ExitCode::BadData, QString("%1 cannot be imported: %2.").arg(input, problem)};
    OutputWriter writer;
    if (Failure failure = writer.open(output))
        return failure;
    if (Failure failure = writer.write(passport))
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
            return {ExitCode::InputOutput,
                    QString("%1 cannot be read: %2.").arg(input, file.errorString())};
        for (qint64 i = 0; i < count; ++i)
            convertSample(bytes.constData() + i * sampleBytes, fil,
                          values.data() + i * valuesPerPoint);
        const qint64 all = count * valuesPerPoint;
        qToLittleEndian<quint32>(values.data(), all, values.data());
        if (Failure failure = writer.write(reinterpret_cast<const char *>(values.data()),
                                           all * qint64(sizeof(float))))
            return failure;
        control.progress(int(100 * (first + count) / npoints));
    }
    return writer.commit();
}

} // namespace

Work textWork(const OutputOptions &output)
{
    const auto outputs = [output](const QString &input) {
        return QStringList(besideOrIn(input, output, QFileInfo(input).fileName() + ".txt"));
    };
    Work work = plainWork("totext", outputs);
    work.memory = [](const QString &input) {
        RecordingFile file;
        if (isResultFile(input) || !file.open(input))
            return qint64(0);
        const ObservationData &header = file.header();
        return std::max<qint64>(
            0, memoryToRead({header.npoints, header.modules, header.channels, header.rays}));
    };
    work.run = [outputs](const QString &input, const Control &control) {
        const QString path = outputs(input).constFirst();
        // Makes the folder, and tells of one that cannot be written to.
        OutputWriter probe;
        QFile file(input);
        if (Failure failure = openInput(file))
            return failure;
        if (Failure failure = probe.open(path))
            return failure;
        if (!isResultFile(input))
            return recordingToText(input, path, control);
        const QString problem =
            Tools::resultToText(input, path, control.progress, control.isStopped);
        return problem.isEmpty() ? Failure()
                                 : Failure{ExitCode::InputOutput,
                                           input + ": " + QString(problem).replace('\n', ' ')};
    };
    return work;
}

Work plotWork(const OutputOptions &output)
{
    const auto outputs = [output](const QString &input) {
        return QStringList(
            besideOrIn(input, output, QFileInfo(input).completeBaseName() + "." + output.picture));
    };
    Work work = plainWork("plot", outputs);
    work.run = [outputs, output](const QString &input, const Control &control) -> Failure {
        QFile file(input);
        if (Failure failure = openInput(file))
            return failure;
        const ReadTable read = file.size() > largestResult ? ReadTable{{}, "it is too long"}
                                                           : readTable(file.readAll());
        if (!read.problem.isEmpty())
            return {ExitCode::BadData, QString("%1 cannot be drawn: %2.").arg(input, read.problem)};
        if (!holdsCurves(read.table))
            return {ExitCode::BadData,
                    QString("%1 cannot be drawn: it is a table, not a curve. The "
                            "picture of a search comes from ffa --plot.")
                        .arg(input)};
        const PlotData plot = plotOf(read.table);
        control.progress(50);
        return writeTogether({{outputs(input).constFirst(),
                               pictureBytes(plot, output.picture, output.pictureSize)}});
    };
    return work;
}

Work exportWork(const ExportRequest &request)
{
    const auto outputs = [request](const QString &input) { return exportPaths(request, input); };
    Work work = plainWork("export", outputs);
    work.memory = [request](const QString &input) {
        RecordingFile file;
        if (!file.open(input))
            return qint64(0);
        return memoryOfRay(file, request.kind == "fil" ? blockPoints : file.header().npoints) * 2;
    };
    work.run = [request, outputs](const QString &input, const Control &control) {
        RecordingFile file;
        if (Failure failure = openRecordingFile(file, input, control))
            return failure;
        if (Failure failure = findRay(file, request.module, request.ray))
            return failure;
        const QStringList paths = outputs(input);
        return request.kind == "fil" ? exportFilterbank(request, file, paths[0], control)
                                     : exportSeries(request, file, paths, control);
    };
    return work;
}

Work importWork(const OutputOptions &output)
{
    const auto outputs = [output](const QString &input) {
        return QStringList(besideOrIn(input, output, QFileInfo(input).fileName() + ".pnt"));
    };
    Work work = plainWork("import", outputs);
    work.memory = [](const QString &) { return 2 * mostImportBlock; };
    work.run = [outputs](const QString &input, const Control &control) {
        return importFilterbank(input, outputs(input).constFirst(), control);
    };
    return work;
}

} // namespace Batch
