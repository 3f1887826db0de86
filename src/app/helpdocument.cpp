#include "app/helpdocument.h"

#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

namespace {

constexpr int askMs = 3000;

QString manual()
{
    return "README_zrt2_visual.pdf";
}

// Name of the desktop entry of the user's viewer, for example "org.gnome.Evince.desktop".
QString desktopViewer()
{
    QProcess process;
    process.start("xdg-mime", {"query", "default", "application/pdf"});
    if (!process.waitForFinished(askMs))
        return {};
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

} // namespace

HelpChapter helpOn(const QString &key)
{
    struct Row {
        const char *key;
        HelpChapter help;
    };
    const Row rows[] = {{"PulsarForm", {manual(), "the-pulsar-form"}},
                        {"FfaForm", {manual(), "the-ffa-form"}},
                        {"TransientForm", {manual(), "the-transients-form"}},
                        {"NativeGrafik", {manual(), "the-viewer-of-native-data"}},
                        {"FourierForm", {manual(), "spectra-of-many-days"}},
                        {"NativeMultiForm", {manual(), "days-under-each-other"}},
                        {"SearchNativeForm", {manual(), "days-under-each-other"}},
                        {"ProfileForm", {manual(), "average-profiles-of-many-days"}},
                        {"FourierForm folds", {manual(), "folds-of-many-days"}},
                        {"FourierForm sky", {manual(), "maps-and-searches-over-many-days"}},
                        {"ArraysForm", {manual(), "text-files-of-numbers"}},
                        {"ArraysDirForm", {manual(), "text-files-of-numbers"}},
                        {"CalculatorForm", {"README_zrt2_visual_calc.pdf", "the-calculator-form"}}};
    for (const Row &row : rows) {
        if (key == row.key)
            return row.help;
    }
    return {manual(), {}};
}

int pageOfChapter(const QString &documentPath, const QString &chapter)
{
    const QFileInfo document(documentPath);
    QFile list(document.path() + "/" + document.completeBaseName() + ".chapters");
    if (!list.open(QIODevice::ReadOnly))
        return 1;
    for (const QString &line : QString::fromUtf8(list.readAll()).split('\n')) {
        if (line.section(' ', 1) == chapter && !chapter.isEmpty())
            return qMax(1, line.section(' ', 0, 0).toInt());
    }
    return 1;
}

QStringList viewerCommand(const QString &desktopEntry, const QString &path, int page)
{
    const QString number = QString::number(page);
    const QString address = QUrl::fromLocalFile(path).toString() + "#page=" + number;
    const struct {
        const char *program;
        QStringList arguments;
    } viewers[] = {{"evince", {"--page-index=" + number, path}},
                   {"atril", {"--page-index=" + number, path}},
                   {"xreader", {"--page-index=" + number, path}},
                   {"okular", {"--page", number, path}},
                   {"zathura", {"--page=" + number, path}},
                   {"qpdfview", {path + "#" + number}},
                   {"mupdf", {path, number}},
                   {"firefox", {address}},
                   {"chromium", {address}}};
    for (const auto &viewer : viewers) {
        if (desktopEntry.contains(viewer.program, Qt::CaseInsensitive))
            return QStringList(viewer.program) + viewer.arguments;
    }
    return {};
}

bool openDocument(const QString &path, int page)
{
    const QStringList command =
        page > 1 ? viewerCommand(desktopViewer(), path, page) : QStringList();
    if (!command.isEmpty() && QProcess::startDetached(command[0], command.mid(1)))
        return true;
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}
