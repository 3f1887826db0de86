#include "forms/days/savestack.h"

#include "analyses/days/stacktables.h"
#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "forms/days/stacktexts.h"
#include "plot/savedialog.h"

#include <QDir>
#include <QFileInfo>
#include <QWidget>

namespace SaveStack {

namespace {

Results::Format formatOf(const QString &suffix)
{
    if (suffix.compare("csv", Qt::CaseInsensitive) == 0)
        return Results::Format::Csv;
    return suffix.compare("json", Qt::CaseInsensitive) == 0 ? Results::Format::Json
                                                            : Results::Format::Text;
}

} // namespace

void saveSpectra(QWidget *form, const StackTexts &words, const Days::DaySpectra &spectra)
{
    const QString path = Plot::askForPath(form, QString(words.saveProducts).remove("..."),
                                          startFolder(Settings::instance()->lastSavePath()),
                                          Days::spectraFileName(spectra.days(), spectra.parameters),
                                          "Result file (*.txt)");
    if (path.isEmpty())
        return;
    const WriteFailure failure =
        writeWhole(path, Days::spectraBytes(spectra.days(), spectra.parameters));
    if (failure) {
        showError(form->window(), "The result file was not saved.", failure.text());
        return;
    }
    Settings::instance()->setLastSavePath(QFileInfo(path).path());
    StatusLine::showSaved(path);
}

void saveTables(QWidget *form, const StackTexts &words, const Stack &stack)
{
    const Days::FourierDaysParameters &used = stack.outcome->parameters;
    const QString path = Plot::askForPath(
        form, words.saveTables, startFolder(Settings::instance()->lastSavePath()),
        QString("stack%1_m%2_r%3.txt").arg(used.isFfa ? "-ffa" : "").arg(used.module).arg(used.ray),
        "Text (*.txt);;Comma separated (*.csv);;JSON (*.json)");
    if (path.isEmpty())
        return;
    const QFileInfo file(path);
    std::vector<Results::HeaderLine> request = {
        {"program", "zrt-analytics-2"}, {"command", "stack"}, {"folder", stack.directory}};
    for (const Results::HeaderLine &line : Days::parameterLines(used))
        request.push_back(line);
    for (const Days::Interference &entry : stack.outcome->choice.leftOut)
        request.push_back({"interference", entry.text()});
    std::vector<FileContent> files;
    for (const auto &[what, table] :
         Days::stackTables(request, *stack.spectra, *stack.outcome, *stack.recordings))
        files.push_back({file.dir().filePath(file.completeBaseName() + "_" + what + "." +
                                             Results::extensionOf(formatOf(file.suffix()))),
                         table.toBytes(formatOf(file.suffix()))});
    if (const WriteFailure failure = writeTogether(files)) {
        showError(form->window(), "The tables were not saved.", failure.text());
        return;
    }
    Settings::instance()->setLastSavePath(file.path());
    QStringList names;
    for (const FileContent &written : files)
        names << QFileInfo(written.path).fileName();
    StatusLine::showSaved(file.dir().filePath(names.join(", ")));
}

} // namespace SaveStack
