#include "calculators/calculators.h"

#include "base/numbertext.h"
#include "base/shellword.h"
#include "base/typednumber.h"
#include "coords/alfa2000.h"
#include "coords/angletext.h"
#include "coords/coordinates.h"
#include "coords/raytables.h"
#include "coords/sourcenames.h"
#include "ffa/ffaplan.h"
#include "ffa/periodogram.h"

#include <QLocale>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>
#include <limits>

namespace Calculator {

namespace {

constexpr int timeZone = 4;         // hours; files are named in it
constexpr double leastTres = 1e-05; // s
constexpr int secondsPerHour = 3600;
constexpr int columnsOfPeriods = 8;
constexpr int digitsOfPeriods = 7; // of the shortest period; fewer would not tell neighbours apart

const char badDelta[] = "Bad delta! Type delta in format hh:mm:ss or hh°mm′ss″";

QString title(const QString &name)
{
    return QString("<p class='blue'><b>Calculator: %1</b></p><p>&nbsp;</p>").arg(name);
}

// A problem that leaves a part of the results.
void addError(const QString &text, Answer &answer)
{
    answer.report += "<p><span class='red'>Error:</span> " + text.toHtmlEscaped();
    answer.problems << text;
}

// Collects what is wrong with the inputs of one calculator.
class Checks {
public:
    explicit Checks(const QString &calculator) : name(calculator) {}

    void require(bool isGood, const QString &field, const QString &line)
    {
        if (isGood)
            return;
        failing << field;
        lines << line;
    }
    void requireRead(const QMap<QString, QString> &unread)
    {
        for (auto line = unread.begin(); line != unread.end(); ++line)
            require(false, line.key(), line.value());
    }
    bool areGood() const { return failing.isEmpty(); }
    Answer refusal() const
    {
        QString report = title(name) + "<p><b>Error:</b><br>";
        for (const QString &line : lines)
            report += line.toHtmlEscaped() + "<br>";
        return {report, lines, failing, {}, {}};
    }

private:
    const QString name;
    QStringList failing;
    QStringList lines;
};

// NaN when the text is no number.
double numberOf(const QString &text)
{
    return Tools::typedNumber(text).value_or(qQNaN());
}

bool isWhole(const QString &text, const QString &pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

QDate dateOf(const QString &text)
{
    return QDate::fromString(text, "dd.MM.yyyy");
}

QTime timeOf(const QString &text)
{
    return QTime::fromString(text.left(8), "hh:mm:ss");
}

void checkDelta(Checks &checks, const QString &delta, const QString &field)
{
    if (delta.isEmpty())
        checks.require(false, field, "No delta! Type delta in format hh:mm:ss or hh°mm′ss″");
    else
        checks.require(isWhole(delta.left(8), "\\d{2}.\\d{2}.\\d{2}"), field, badDelta);
}

void checkDate(Checks &checks, const QString &date, const QString &field)
{
    checks.require(dateOf(date).isValid(), field, "Bad date! Type date in the format dd.mm.yyyy");
}

void checkTres(Checks &checks, const QString &tres)
{
    checks.require(numberOf(tres) >= leastTres, "tres", "Bad tres!");
}

// Warns when hours, minutes or seconds are two digits but too large.
QString carriedNote(const QString &name, const QString &text, int mostUnits)
{
    if (text.left(2).toInt() <= mostUnits && text.mid(3, 2).toInt() < 60 &&
        text.mid(6, 2).toInt() < 60)
        return {};
    return QString("<p><span class='red'>Note:</span> %1 has more than 59 minutes or seconds, or "
                   "more than %2 before them.")
        .arg(name)
        .arg(mostUnits);
}

QString tableOf(const QStringList &cells)
{
    QString html = "<table border=1 cellpadding=4 cellspacing=0><tr><td bgcolor=#fff></td>";
    for (int column = 0; column < columnsOfPeriods; ++column)
        html += QString("<td bgcolor=#fff>+%1</td>").arg(column);
    for (int i = 0; i < cells.size(); ++i) {
        if (i % columnsOfPeriods == 0)
            html += QString("</tr><tr><td bgcolor=#fff>%1</td>").arg(i);
        html += "<td><nobr>" + cells[i] + "</nobr></td>";
    }
    return html + "</tr></table>";
}

// A call of the batch program with these words.
QString commandOf(const QStringList &words)
{
    QString command = "zrt-batch";
    for (const QString &word : words)
        command += " " + shellWord(word);
    return command;
}

} // namespace

QString helpText()
{
    return "Введите параметры в калькулятор, и нажмите на кнопку запуска вычислений."
           "<p>- Изменить <b>размер шрифта</b> можно, нажав на кнопки «+» / «-» в форме.</p>"
           "<p>- Значение <b>tresolution</b> в общем блоке используется во всех калькуляторах, "
           "кроме тех, где оно есть отдельно.</p>"
           "<p>- Кнопка <b>«Show periods»</b> в калькуляторе «FFA info» выводит все периоды и "
           "бины периодограммы для заданных параметров."
           "<dd>Из-за большого объёма информации их вывод может потребовать некоторого времени."
           "<br>При большом числе периодов (Periodogram rows > 10 000) их вывод по кнопке "
           "«Show periods» блокируется."
           // The first letter of "cначала" is Latin.
           "<br>Рекомендуем cначала воспользоваться кнопкой «Show info», и только потом, если "
           "можно и нужно — кнопкой «Show periods».</dd></p>";
}

Answer deltaFromRay(const RayInput &input, const Tools::RayTables &tables)
{
    const QString name = "Get delta from ray";
    Checks checks(name);
    checks.require(!input.plosh.isEmpty(), "calcdelta_plosh", "Select plosh in form!");
    checks.require(input.module >= 1, "calcdelta_module", "Select module in form!");
    checks.require(input.ray >= 1, "calcdelta_ray", "Select ray in form!");
    checks.requireRead(input.unread);
    if (!checks.areGood())
        return checks.refusal();

    Answer answer;
    answer.command = commandOf(
        {"ray", QString::number(input.module), QString::number(input.ray), "--plosh", input.plosh});
    answer.report = title(name) + QString("<p><b>Parameters:</b><p>"
                                          "plosh = <span class='green'>%1</span><br>"
                                          "module = <span class='green'>%2</span><br>"
                                          "ray = <span class='green'>%3</span>\n")
                                      .arg(input.plosh.toHtmlEscaped())
                                      .arg(input.module)
                                      .arg(input.ray);
    const double delta = Tools::deltaFromRay(tables, input.module, input.ray, input.plosh);
    const bool isFound = delta >= -100;
    const QString text = isFound ? Tools::degreesToText(delta) : QString();
    answer.outputs = {
        {"calcdelta_delta", text},
        {"calcdelta_deltaD", isFound ? QString::number(delta, 'f', 3) : QString()},
    };
    if (isFound)
        answer.report += QString("<p><b>Result:</b><p>delta = <span class='blue'>%1</span><br>"
                                 "delta = <span class='blue'>%2</span>")
                             .arg(text, exactText(delta));
    else
        addError("no delta for these module and beam!", answer);
    if (!tables.problem.isEmpty())
        addError(tables.problem, answer);
    return answer;
}

Answer catalogToZrt(const CatalogInput &input)
{
    const QString name = "From catalog to ZRT";
    Checks checks(name);
    if (input.alfa.isEmpty())
        checks.require(false, "cat2zrt_alfa", "No alfa! Type alfa in format hh:mm:ss");
    else
        checks.require(isWhole(input.alfa, "\\d{2}:\\d{2}:\\d{2}"), "cat2zrt_alfa",
                       "Bad alfa! Type alfa in format hh:mm:ss");
    checkDelta(checks, input.delta, "cat2zrt_delta");
    checkDate(checks, input.date, "cat2zrt_date");
    checkTres(checks, input.tres);
    if (!checks.areGood())
        return checks.refusal();

    const double tres = numberOf(input.tres);
    Answer answer;
    answer.command = commandOf({"cat2zrt", input.alfa, input.delta, input.date, "--plosh",
                                input.plosh, "--tres", exactText(tres)});
    answer.report = title(name) + QString("<p><b>Parameters:</b><p>"
                                          "alfa = <span class='green'>%1</span><br>"
                                          "delta = <span class='green'>%2</span><br>"
                                          "date = <span class='green'>%3</span><br>"
                                          "tres = <span class='green'>%4</span><br>"
                                          "time_zone=%5")
                                      .arg(input.alfa, input.delta.toHtmlEscaped(), input.date,
                                           exactText(tres), QString::number(timeZone));
    const QString date = QLocale::c().toString(dateOf(input.date), "yyyy.MM.dd");
    const Tools::CulminationResult found = Tools::culminationFromCatalog(
        input.alfa, input.delta, date, input.plosh.right(1).toInt(), tres, timeZone, 0);
    if (!found.isReached) {
        for (const char *field :
             {"cat2zrt_time", "cat2zrt_sec", "cat2zrt_fileName", "cat2zrt_culmPoint"})
            answer.outputs.insert(field, {});
        addError("no source of this delta crosses the beam plane!", answer);
        return answer;
    }
    const int seconds = found.time.mid(3, 2).toInt() * 60 + found.time.right(2).toInt();
    answer.outputs = {
        {"cat2zrt_time", found.time},
        {"cat2zrt_sec", QString::number(seconds)},
        {"cat2zrt_fileName", found.fileName},
        {"cat2zrt_culmPoint", QString::number(found.culminationPoint)},
    };
    const QString shownDate =
        QString("%1.%2.%3").arg(found.date.right(2), found.date.mid(5, 2), found.date.left(4));
    answer.report += QString("<p><b>Results:</b><p>UTC date: %1<br>UTC time: %2<br>"
                             "Seconds from hour: %3 sec<br>File name: %4<br>Culmination point: %5")
                         .arg(shownDate, found.time, QString::number(seconds), found.fileName,
                              QString::number(found.culminationPoint)) +
                     carriedNote("alfa", input.alfa, 23) + carriedNote("delta", input.delta, 90);
    return answer;
}

Answer zrtToCatalog(const ZrtInput &input)
{
    const QString name = "From ZRT to catalog";
    const Tools::HourAngleValue time = Tools::hourAngleFromText(input.time);
    const Tools::AngleValue delta = Tools::angleFromText(input.delta);
    const qint64 point = Tools::typedWhole(input.point).value_or(-1);

    Checks checks(name);
    checkDelta(checks, input.delta, "zrt2cat_deltaZrt");
    if (checks.areGood()) // decimals of the seconds, and what else follows
        checks.require(std::isfinite(delta.seconds), "zrt2cat_deltaZrt", badDelta);
    checkDate(checks, input.date, "zrt2cat_date");
    checks.require(timeOf(input.time).isValid() && std::isfinite(time.seconds), "zrt2cat_time",
                   "Bad time: " + input.time + " Type time in the format hh:mm:ss");
    checks.require(point >= 0 && point <= std::numeric_limits<int>::max(), "zrt2cat_culmPoint",
                   "Bad point! Type a whole number, 0 or more");
    checkTres(checks, input.tres);
    if (!checks.areGood())
        return checks.refusal();

    const double tres = numberOf(input.tres);
    const QDate date = dateOf(input.date);
    const Tools::CoordinatePair found =
        Tools::catalogFromCulmination({date.day(), date.month(), date.year()}, time, delta);
    const QString alfa = Tools::hourAngleText(found.alfa);
    const QString delta2000 = Tools::angleText(found.delta);
    const QString pulsar = Tools::pulsarNameFromCoords(alfa, delta2000);
    const QString estimate = Tools::getAlfa2000(QDateTime(date, timeOf(input.time), Qt::UTC),
                                                int(point), tres, input.delta);
    Answer answer;
    answer.command = commandOf({"zrt2cat", input.date, input.time, QString::number(point),
                                input.delta, "--tres", exactText(tres)});
    answer.outputs = {
        {"zrt2cat_alfa", alfa},
        {"zrt2cat_delta", delta2000},
        {"zrt2cat_pulsarName", pulsar},
        {"zrt2cat_alfaKest", estimate},
    };
    answer.report = title(name) +
                    QString("<p><b>Parameters:</b><p>"
                            "date = <span class='green'>%1</span><br>"
                            "time = <span class='green'>%2</span><br>"
                            "point = <span class='green'>%3</span><br>"
                            "tres = <span class='green'>%4</span><br>"
                            "time_zone=%5")
                        .arg(input.date, input.time, QString::number(point), exactText(tres),
                             QString::number(timeZone)) +
                    QString("<p><b>Results:</b><p>alfa 2000:   %1 (alfa Kest: %2)<br>"
                            "delta 2000: %3<br>Pulsar name: %4")
                        .arg(alfa, estimate, delta2000, pulsar);
    if (!Tools::isNumber(found))
        addError("the declination is outside the range of the conversion, 0 to about 62 degrees!",
                 answer);
    else
        answer.report += carriedNote("delta", input.delta, 90);
    if (point > 0 && pointOfTime(input.time, input.tres) == QString::number(point))
        answer.report +=
            "<p><span class='red'>alfa Kest takes the time as that of point 0 and adds "
            "the point: here the time is that of the point already, which counts "
            "twice!</span>";
    return answer;
}

QString pointOfTime(const QString &time, const QString &tres)
{
    const double step = numberOf(tres);
    const double seconds = Tools::hourAngleFromText(time).seconds;
    if (!timeOf(time).isValid() || !std::isfinite(seconds) || !(step >= leastTres))
        return {};
    return QString::number(std::round((timeOf(time).minute() * 60 + seconds) / step), 'f', 0);
}

QString timeOfPoint(const QString &time, const QString &point, const QString &tres)
{
    const double step = numberOf(tres);
    const std::optional<qint64> number = Tools::typedWhole(point);
    if (!timeOf(time).isValid() || !number || *number < 0 || !(step >= leastTres))
        return {};
    const double seconds = double(*number) * step;
    // A last decimal below half a step leads back to the same point.
    const int decimals = std::max(2, int(std::ceil(-std::log10(step))));
    const double scale = std::pow(10, decimals);
    const double rounded = std::round(seconds * scale) / scale;
    if (!(rounded < secondsPerHour))
        return {};
    const int minutes = int(rounded / 60);
    return QString("%1:%2:%3")
        .arg(time.left(2))
        .arg(minutes, 2, 10, QChar('0'))
        .arg(rounded - minutes * 60, decimals + 3, 'f', decimals, QChar('0'));
}

namespace {

// Field of a parameter of the engine.
QString fieldOf(const QString &parameter)
{
    static const QMap<QString, QString> fields = {
        {"size", "ffa_poins"},
        {"tsamp", "ffa_tres"},
        {"period_min", "ffa_period_min"},
        {"period_max", "ffa_period_max"},
        {"bins_min", "ffa_bin_min"},
        {"bins_max", "ffa_bin_max"},
    };
    return fields.value(parameter);
}

// The parameters of a search as numbers.
struct PeriodSearch {
    quint64 size = 0;
    double tres = 0;
    double periodMin = 0;
    double periodMax = 0;
};

QString periodTables(const PeriodSearch &search, const FfaInput &input, quint64 rows)
{
    if (rows > quint64(mostRowsShown))
        return QString("<p>Sorry, there are more than %1 periods in the periodogram - this is too "
                       "much text of too much volume. We will not take it out.")
            .arg(mostRowsShown);
    std::vector<double> periods(rows);
    std::vector<quint32> foldbins(rows);
    Ffa::trialPeriods(search.size, search.tres, search.periodMin, search.periodMax, input.binsMin,
                      input.binsMax, periods.data(), foldbins.data());
    const int wholeDigits = int(std::floor(std::log10(search.periodMin))) + 1;
    const int decimals = std::clamp(digitsOfPeriods - wholeDigits, 0, 15);
    QStringList periodCells;
    QStringList binCells;
    for (quint64 i = 0; i < rows; ++i) {
        periodCells << QString::number(periods[i], 'f', decimals);
        binCells << QString::number(foldbins[i]);
    }
    return "<br>&nbsp;<p><b>Periods:</b></p>" + tableOf(periodCells) +
           "&nbsp;<p><b>Foldbins:</b></p>" + tableOf(binCells);
}

} // namespace

Answer ffaInfo(const FfaInput &input, bool withPeriods)
{
    const QString name = "FFA info (periodogram size)";
    const std::optional<qint64> size = Tools::typedWhole(input.points);
    const PeriodSearch search = {quint64(std::max<qint64>(0, size.value_or(0))),
                                 numberOf(input.tres), numberOf(input.periodMin),
                                 numberOf(input.periodMax)};
    Checks checks(name);
    checks.require(size && *size >= 0, "ffa_poins", "Bad points! Type a whole number");
    checks.require(!std::isnan(search.tres), "ffa_tres", "Bad tres!");
    // The field is empty when it follows a tres that is no number.
    const bool isFollower = input.periodMin.isEmpty() && std::isnan(search.tres);
    checks.require(isFollower || !std::isnan(search.periodMin), "ffa_period_min",
                   "Bad period min! Type a number of seconds");
    checks.require(!std::isnan(search.periodMax), "ffa_period_max",
                   "Bad period max! Type a number of seconds");
    checks.requireRead(input.unread);
    if (checks.areGood()) {
        const Ffa::Refusal refusal =
            Ffa::findRefusal(search.size, search.tres, search.periodMin, search.periodMax,
                             input.binsMin, input.binsMax);
        checks.require(refusal.text.isEmpty(), fieldOf(refusal.parameter), refusal.text);
    }
    if (!checks.areGood())
        return checks.refusal();

    const std::size_t cols = Ffa::trialWidths(input.binsMin, input.ducyMax, input.wtsp).size();
    const quint64 rows = Ffa::periodogramLength(search.size, search.tres, search.periodMin,
                                                search.periodMax, input.binsMin, input.binsMax);
    Answer answer;
    answer.outputs = {{"ffa_cols", QString::number(cols)}, {"ffa_rows", QString::number(rows)}};
    answer.report =
        title(name) +
        QString("<p><b>Parameters:</b><p><table border=0 cellpadding=3 cellspacing=0>"
                "<tr><td>period min - max:&nbsp;&nbsp;</td><td><nobr>%1 - %2 sec</nobr></td></tr>"
                "<tr><td>bin min - max:</td><td>%3 - %4</td></tr>"
                "<tr><td>ducy_max:</td><td>%5</td></tr>"
                "<tr><td>wtsp:</td><td>%6</td></tr>"
                "<tr><td> </td><td> </td></tr>"
                "<tr><td>points:</td><td>%7</td></tr>"
                "<tr><td>tres:</td><td>%8</td></tr></table><br>&nbsp;<p><b>Results:</b>")
            .arg(exactText(search.periodMin), exactText(search.periodMax),
                 QString::number(input.binsMin), QString::number(input.binsMax),
                 exactText(input.ducyMax), exactText(input.wtsp), QString::number(search.size),
                 exactText(search.tres));
    if (rows == 0) {
        answer.report += QString("<p>Error: periodogram.rows = %1").arg(rows);
        return answer;
    }
    answer.report += QString("<p><table border=0 cellpadding=3 cellspacing=0>"
                             "<tr><td>cols = %1</td><td> - number of SNR graphics in periodogram "
                             "(= size of widths)</td></tr>"
                             "<tr><td>rows = %2</td><td> - number of periods (and bins) in "
                             "periodogram</td></tr></table>")
                         .arg(cols)
                         .arg(rows);
    if (withPeriods)
        answer.report += periodTables(search, input, rows);
    return answer;
}

QString shortestPeriod(int binsMin, const QString &tres)
{
    const double period = binsMin * numberOf(tres);
    return std::isfinite(period) ? exactText(period) : QString();
}

} // namespace Calculator
