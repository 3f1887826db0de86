#include "forms/days/savestack.h"

#include "analyses/days/stacktables.h"
#include "forms/days/stacktexts.h"
#include "forms/savefolder.h"

#include <QDir>
#include <QFileInfo>
#include <QWidget>

namespace SaveStack {

void saveSpectra(QWidget *form, const StackTexts &words, const Days::DaySpectra &spectra)
{
    const QString path = askSavePath(form, QString(words.saveProducts).remove("..."),
                                     Days::spectraFileName(spectra.days(), spectra.parameters),
                                     "Result file (*.txt)");
    if (path.isEmpty())
        return;
    endSave(form, path, "The result file was not saved.",
            writeWhole(path, Days::spectraBytes(spectra.days(), spectra.parameters)).text());
}

void saveTables(QWidget *form, const StackTexts &words, const Stack &stack)
{
    const Days::FourierDaysParameters &used = stack.outcome->parameters;
    const QString path = askSavePath(
        form, words.saveTables,
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
        files.push_back(
            {file.dir().filePath(file.completeBaseName() + "_" + what + "." +
                                 Results::extensionOf(Results::formatOf(file.suffix()))),
             table.toBytes(Results::formatOf(file.suffix()))});
    QStringList names;
    for (const FileContent &one : files)
        names << QFileInfo(one.path).fileName();
    endSave(form, file.dir().filePath(names.join(", ")), "The tables were not saved.",
            writeTogether(files).text());
}

} // namespace SaveStack
