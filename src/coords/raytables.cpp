#include "coords/raytables.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <algorithm>
#include <cmath>

// A resource of a static library is linked and registered only where this is called, and it
// must be called outside of namespaces.
static void registerRayTables()
{
    Q_INIT_RESOURCE(coords);
}

namespace Tools {

namespace {

constexpr int modules = 6;
constexpr int rays = 8;
constexpr qint64 largestFile = 1 << 20; // bytes; all beams take some thousand

QString keyOf(int module, int ray, const QString &plosh)
{
    return QString("m%1_r%2_p%3").arg(module).arg(ray).arg(plosh.right(1));
}

bool isBetween(double value, double least, double most)
{
    return value >= least && value <= most;
}

// Adds the beam of one line. Returns what is wrong with it, or nothing.
QString addBeam(const QStringList &fields, RayTables &tables)
{
    if (fields.size() != 4)
        return "is not of the form \"site module ray declination\"";
    const QString &site = fields[0];
    const int module = fields[1].toInt();
    const int ray = fields[2].toInt();
    bool isDeclination = false;
    const double declination = fields[3].toDouble(&isDeclination);

    if (site != "N0" && site != "N1" && site != "N2" && site != "N4")
        return QString("names the site \"%1\", which is none of N0, N1, N2 and N4").arg(site);
    if (!isBetween(module, 1, modules))
        return QString("names the module \"%1\", which is not among 1 to 6").arg(fields[1]);
    if (!isBetween(ray, 1, rays))
        return QString("names the ray \"%1\", which is not among 1 to 8").arg(fields[2]);
    if (!isDeclination || !isBetween(declination, -90, 90))
        return QString("gives the declination \"%1\", which is no number of degrees")
            .arg(fields[3]);
    if (deltaFromRay(tables, module, ray, site) != noDeclination)
        return QString("gives module %1, ray %2 of %3 a second time")
            .arg(module)
            .arg(ray)
            .arg(site);

    if (site == "N4")
        tables.n4.push_back({module, ray, declination});
    else
        tables.byKey.insert(keyOf(module, ray, site), declination);
    return {};
}

RayTables withProblem(const QString &problem)
{
    RayTables tables;
    tables.problem = problem;
    return tables;
}

RayTables nominalRayTables()
{
    registerRayTables();
    QFile file(":/coords/ray-declinations.txt");
    if (!file.open(QIODevice::ReadOnly))
        return withProblem("The program was built without its ray declinations.");
    return parseRayTables(file.readAll());
}

RayTables parseFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return withProblem("it cannot be opened: " + file.errorString());
    if (file.size() > largestFile)
        return withProblem(QString("it is longer than %1 bytes").arg(largestFile));
    return parseRayTables(file.read(largestFile));
}

} // namespace

RayTables parseRayTables(const QByteArray &text)
{
    RayTables tables;
    int number = 0;
    for (const QByteArray &line : text.split('\n')) {
        ++number;
        // With its size: a zero byte would end the text, and the rest go unnoticed.
        const QString whole = QString::fromUtf8(line.constData(), line.size());
        const QString content = whole.section('#', 0, 0).simplified();
        if (content.isEmpty())
            continue;
        const QString wrong = addBeam(content.split(' '), tables);
        if (!wrong.isEmpty())
            return withProblem(QString("line %1 %2").arg(QString::number(number), wrong));
    }
    if (tables.byKey.isEmpty() && tables.n4.empty())
        return withProblem("it gives no beam at all");
    return tables;
}

RayTables readRayTables(const QString &path)
{
    if (!QFile::exists(path))
        return nominalRayTables();
    RayTables tables = parseFile(path);
    if (tables.problem.isEmpty())
        return tables;
    RayTables nominal = nominalRayTables();
    nominal.problem =
        QString("The ray declinations of \"%1\" are not used: %2. Nominal values take "
                "their place.")
            .arg(QDir::toNativeSeparators(path), tables.problem);
    return nominal;
}

QString rayTablesPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           "/zrt/ray-declinations.txt";
}

const RayTables &rayTables()
{
    static const RayTables tables = readRayTables(rayTablesPath());
    return tables;
}

double deltaFromRay(const RayTables &tables, int module, int ray, const QString &plosh)
{
    if (plosh == "N1" || plosh == "N2" || plosh == "N0")
        return tables.byKey.value(keyOf(module, ray, plosh), noDeclination);
    if (plosh == "N4") {
        const auto beam =
            std::find_if(tables.n4.begin(), tables.n4.end(), [&](const RayDeclination &entry) {
                return entry.module == module && entry.ray == ray;
            });
        if (beam != tables.n4.end())
            return beam->declination;
    }
    return noDeclination;
}

double deltaFromRay(int module, int ray, const QString &plosh)
{
    return deltaFromRay(rayTables(), module, ray, plosh);
}

} // namespace Tools
