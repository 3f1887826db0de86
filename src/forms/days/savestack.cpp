#include "forms/days/savestack.h"

#include "analyses/days/stacktables.h"
#include "forms/days/savetables.h"
#include "forms/days/stacktexts.h"
#include "forms/savefolder.h"

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
    std::vector<Results::HeaderLine> request = {
        {"program", "zrt-analytics-2"}, {"command", "stack"}, {"folder", stack.directory}};
    for (const Results::HeaderLine &line : Days::parameterLines(used))
        request.push_back(line);
    for (const Days::Interference &entry : stack.outcome->choice.leftOut)
        request.push_back({"interference", entry.text()});
    askAndSaveTables(
        form, words.saveTables,
        QString("stack%1_m%2_r%3.txt").arg(used.isFfa ? "-ffa" : "").arg(used.module).arg(used.ray),
        Days::stackTables(request, *stack.spectra, *stack.outcome, *stack.recordings));
}

} // namespace SaveStack
