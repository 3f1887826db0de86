#include "forms/bintotext/bintotext.h"

#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/progresstask.h"
#include "app/shell/settings.h"
#include "base/wholefile.h"
#include "data/passport.h"
#include "data/reader.h"
#include "data/resulttotext.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QStorageInfo>

namespace {

constexpr qint64 gigabyte = 1000000000;
constexpr int messageMs = 15000; // that a line stays in the status bar

QString sizeText(qint64 bytes)
{
    return QLocale::c().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

// A file that can be turned into text.
struct Binary {
    QString path;
    bool isRecording = false; // else a result file
    QString problem;          // why it is neither
};

Binary recognise(const QString &path)
{
    Binary binary;
    binary.path = path;
    const QString shown = QDir::toNativeSeparators(path);
    QFile file(path);
    // A pipe is refused before it is opened, for opening one waits for a writer.
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
        binary.problem = shown + " is not an ordinary file.";
    } else if (!file.open(QIODevice::ReadOnly)) {
        binary.problem = shown + " cannot be opened: " + file.errorString() + ".";
    } else {
        const bool isResult = Tools::isResultFile(path);
        const Passport passport = readPassport(file);
        binary.isRecording = !isResult && passport.entries.contains("npoints");
        if (!isResult && !binary.isRecording)
            binary.problem = shown + " is neither a recording (no \"npoints\" in a passport) nor a "
                                     "result file (no \"points:\" in a header).";
    }
    return binary;
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
    const QDir place = folder.isEmpty() ? in.dir() : QDir(folder);
    const QString ending = in.suffix() == "txt" ? "_text.txt" : ".txt";
    return place.filePath(in.completeBaseName() + ending);
}

// One conversion with its progress and its end by Esc.
class Conversion {
public:
    explicit Conversion(const Binary &input) : binary(input) {}

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

    const Binary binary;
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

void convert(const Binary &binary, const QString &outPath, QWidget *window)
{
    QString failure;
    QString message;
    {
        Conversion conversion(binary);
        failure = conversion.run(outPath);
        message = conversion.wasCancelled()
                      ? "Cancelled; nothing was written."
                      : QString("%1 was written (%2).%3")
                            .arg(QDir::toNativeSeparators(outPath),
                                 sizeText(QFileInfo(outPath).size()), conversion.remark());
        if (conversion.wasCancelled())
            failure.clear();
    }
    if (failure.isEmpty())
        Settings::instance()->ui().statusbar->showMessage(message, messageMs);
    else
        showError(window, failure,
                  QString("%1No text was made of %2.")
                      .arg(whyNotWritable(outPath), QDir::toNativeSeparators(binary.path)));
}

} // namespace

void convertBinaryToText(const QString &path, QWidget *window)
{
    const Binary binary = recognise(path);
    if (!binary.problem.isEmpty()) {
        showError(window, binary.problem, "Choose a recording (.pnt or .pnthr) or a result file.");
        return;
    }
    const QString refusal = binary.isRecording ? QString() : Tools::resultProblem(path);
    if (!refusal.isEmpty()) {
        showError(
            window, refusal,
            "It is damaged or of another kind, and no text can be made of it. Copy it again.");
        return;
    }
    const QString outPath =
        QFileDialog::getSaveFileName(window, "Saving text", proposedPath(path), "");
    if (outPath.isEmpty())
        return;
    Settings::instance()->setLastSavePath(directoryOf(outPath));
    if (QFileInfo(path) == QFileInfo(outPath)) {
        showError(window, "The text would take the place of the file it is made of.",
                  QDir::toNativeSeparators(path) + " was left as it is. Choose another name.");
        return;
    }
    const qint64 bytes =
        binary.isRecording ? Tools::recordingTextBytes(path) : Tools::resultTextBytes(path);
    if (isSizeWanted(bytes, outPath, window))
        convert(binary, outPath, window);
}
