#include "forms/days/savetables.h"

#include "forms/savefolder.h"

#include <QDir>
#include <QFileInfo>
#include <QWidget>

void askAndSaveTables(QWidget *form, const QString &title, const QString &name,
                      const std::vector<std::pair<QString, Results::ResultTable>> &tables)
{
    const QString path =
        askSavePath(form, title, name, "Text (*.txt);;Comma separated (*.csv);;JSON (*.json)");
    if (path.isEmpty())
        return;
    const QFileInfo file(path);
    std::vector<FileContent> files;
    for (const auto &[what, table] : tables)
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
