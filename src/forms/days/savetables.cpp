#include "forms/days/savetables.h"

#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "plot/savedialog.h"

#include <QDir>
#include <QFileInfo>
#include <QWidget>

namespace {

Results::Format formatOf(const QString &suffix)
{
    if (suffix.compare("csv", Qt::CaseInsensitive) == 0)
        return Results::Format::Csv;
    return suffix.compare("json", Qt::CaseInsensitive) == 0 ? Results::Format::Json
                                                            : Results::Format::Text;
}

} // namespace

void askAndSaveTables(QWidget *form, const QString &title, const QString &name,
                      const std::vector<std::pair<QString, Results::ResultTable>> &tables)
{
    const QString path =
        Plot::askForPath(form, title, startFolder(Settings::instance()->lastSavePath()), name,
                         "Text (*.txt);;Comma separated (*.csv);;JSON (*.json)");
    if (path.isEmpty())
        return;
    const QFileInfo file(path);
    std::vector<FileContent> files;
    for (const auto &[what, table] : tables)
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
