#include "forms/bintotext/bintotext.h"

#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/progresstask.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "base/wholefile.h"
#include "data/binaryfile.h"
#include "data/reader.h"
#include "data/resulttotext.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QStorageInfo>

namespace {

constexpr qint64 gigabyte = 1000000000;

QString sizeText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

// Whether the user wants a text of that size; asked for large ones only.
bool isSizeWanted(qint64 bytes, const QString &outPath, QWidget *window)
{
    if (bytes <= gigabyte)
        return true;
    const QString folder = QFileInfo(outPath).absolutePath();
    const QString text = QString("The text will take about %1. %2 are free in %3.\nWrite it?")
                             .arg(sizeText(bytes), sizeText(QStorageInfo(folder).bytesAvailable()),
                                  QDir::toNativeSeparators(folder));
    return QMessageBox::question(window, "Read binary to text", text,
                                 QMessageBox::Yes | QMessageBox::Cancel,
                                 QMessageBox::Cancel) == QMessageBox::Yes;
}

// Beside the input, or where a text was saved last; never the input itself.
QString proposedPath(const QString &path)
{
    const QString folder = Settings::instance()->lastSavePath();
    const QFileInfo in(path);
    const bool isThere = !folder.isEmpty() && QDir(folder).exists();
    const QDir place = isThere ? QDir(folder) : in.dir();
    const QString ending = in.suffix() == "txt" ? "_text.txt" : ".txt";
    return place.filePath(in.completeBaseName() + ending);
}

// One conversion with its progress and its end by Esc.
class Conversion {
public:
    explicit Conversion(const Tools::BinaryFile &input) : binary(input) {}

    // Empty on success, else what went wrong.
    QString run(const QString &outPath)
    {
        if (!binary.isRecording)
            return Tools::resultToText(binary.path, outPath, progress(), cancelled()).text;
        const ObservationData data = read();
        if (task.isCancelled() || !problem.isEmpty())
            return problem;
        return Tools::observationToText(data, outPath, progress(), cancelled()).text;
    }

    bool wasCancelled() const { return task.isCancelled(); }
    QString remark() const { return shortness; }

private:
    // Only the points whose samples are all there: zeros are no samples.
    ObservationData read()
    {
        Reader reader;
        QObject::connect(&reader, &Reader::progress, &task, &ProgressTask::show);
        QObject::connect(&task, &ProgressTask::cancelRequested, &reader, &Reader::cancel);
        ObservationData data = Reader::readDataFile(&reader, binary.path);
        if (reader.outcome() == ReadOutcome::Short) {
            const int whole = completePoints(data);
            shortness = QString(" It holds the first %1 of %2 points: the recording ends early.")
                            .arg(whole)
                            .arg(data.npoints);
            data.npoints = whole;
            data.missingPoints = 0;
        }
        if (data.npoints < 1 || data.samples == nullptr)
            problem = "Bad file!\nFile without data\n" + reader.reason();
        return data;
    }

    Tools::TextProgress progress()
    {
        return [this](int percent) { task.show(percent); };
    }

    Tools::TextCancelled cancelled()
    {
        return [this] { return !task.goesOn(); };
    }

    const Tools::BinaryFile binary;
    ProgressTask task;
    QString problem;
    QString shortness;
};

// What the system says about writing there; empty where nothing speaks against it.
QString whyNotWritable(const QString &path)
{
    WholeFile file;
    const WriteFailure failure = file.open(path);
    return failure ? failure.text() + " " : QString();
}

bool convert(const Tools::BinaryFile &binary, const QString &outPath, QWidget *window)
{
    QString failure;
    QString message;
    bool isWritten = false;
    {
        Conversion conversion(binary);
        failure = conversion.run(outPath);
        message = conversion.wasCancelled()
                      ? "Cancelled; nothing was written."
                      : QString("%1 was written (%2).%3")
                            .arg(QDir::toNativeSeparators(outPath),
                                 sizeText(QFileInfo(outPath).size()), conversion.remark());
        isWritten = failure.isEmpty() && !conversion.wasCancelled();
        if (conversion.wasCancelled())
            failure.clear();
    }
    if (failure.isEmpty())
        StatusLine::show(message);
    else
        showError(window, failure,
                  QString("%1No text was made of %2.")
                      .arg(whyNotWritable(outPath), QDir::toNativeSeparators(binary.path)));
    return isWritten;
}

} // namespace

bool convertBinaryToText(const QString &path, QWidget *window)
{
    const Tools::BinaryFile binary = Tools::recogniseBinary(path);
    if (!binary.problem.isEmpty()) {
        showError(window, binary.problem, "Choose a recording (.pnt or .pnthr) or a result file.");
        return false;
    }
    const QString refusal = binary.isRecording ? QString() : Tools::resultProblem(path);
    if (!refusal.isEmpty()) {
        showError(
            window, refusal,
            "It is damaged or of another kind, and no text can be made of it. Copy it again.");
        return false;
    }
    const QString outPath =
        QFileDialog::getSaveFileName(window, "Saving text", proposedPath(path), "");
    if (outPath.isEmpty())
        return false;
    Settings::instance()->setLastSavePath(directoryOf(outPath));
    if (QFileInfo(path) == QFileInfo(outPath)) {
        showError(window, "The text would take the place of the file it is made of.",
                  QDir::toNativeSeparators(path) + " was left as it is. Choose another name.");
        return false;
    }
    const qint64 bytes =
        binary.isRecording ? Tools::recordingTextBytes(path) : Tools::resultTextBytes(path);
    return isSizeWanted(bytes, outPath, window) && convert(binary, outPath, window);
}
