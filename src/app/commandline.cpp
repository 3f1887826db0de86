#include "app/commandline.h"

#include "app/shell/settings.h"
#include "base/version.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

constexpr char usage[] =
    "Usage: zrt-analytics-2 [FILE]\n"
    "\n"
    "The workbench for recordings of the ZRT. With a FILE, a recording, a text file of numbers or\n"
    "a folder of them, it opens in the form that shows it; without one, the window is empty and\n"
    "the menus open files.\n"
    "\n"
    "  -h, --help     prints this\n"
    "  -v, --version  prints the version, its date, and where settings and caches are kept\n"
    "\n"
    "zrt-batch does the same analyses without a window; zrt-simulate writes recordings to try.\n";

QString versionText()
{
    const QString settings = Settings::store().fileName();
    const QString cache =
        QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/zrt";
    return QString("ZRT-Analytics-2 %1, %2\nSettings: %3\nBeam declinations of your own: %4\n"
                   "Caches: %5, where a folder of data cannot be written\n")
        .arg(Version::number, Version::date, settings,
             QFileInfo(settings).path() + "/ray-declinations.txt", cache);
}

// Options that the toolkit takes for itself, each with one dash or two.
QStringList withoutToolkitOptions(const QStringList &arguments)
{
    const QStringList alone = {"reverse", "widgetcount", "dograb", "nograb", "sync"};
    const QStringList withValue = {"platform",        "platformpluginpath",
                                   "platformtheme",   "plugin",
                                   "qwindowgeometry", "geometry",
                                   "qwindowicon",     "icon",
                                   "qwindowtitle",    "title",
                                   "session",         "display",
                                   "fontengine",      "style",
                                   "stylesheet",      "qmljsdebugger",
                                   "visual",          "name"};
    QStringList rest;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (argument == "--") // what follows are files
            return rest + arguments.mid(i);
        const int dashes = argument.startsWith("--") ? 2 : argument.startsWith('-') ? 1 : 0;
        const QString name = argument.mid(dashes).section('=', 0, 0);
        const bool takesValue = dashes > 0 && withValue.contains(name);
        if (takesValue && !argument.contains('='))
            ++i;
        if (!takesValue && !(dashes > 0 && alone.contains(name)))
            rest << argument;
    }
    return rest;
}

} // namespace

CommandLine readCommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    const QCommandLineOption help(QStringList{"h", "help"});
    const QCommandLineOption version(QStringList{"v", "version"});
    parser.addOptions({help, version});
    CommandLine line;
    if (!parser.parse(withoutToolkitOptions(arguments)))
        line.error = parser.errorText() + "\n\n" + usage;
    else if (parser.isSet(help))
        line.answer = usage;
    else if (parser.isSet(version))
        line.answer = versionText();
    for (const QString &path : parser.positionalArguments())
        line.paths << QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    return line;
}
