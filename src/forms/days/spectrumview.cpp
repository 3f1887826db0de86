#include "forms/days/spectrumview.h"

#include "base/timetext.h"
#include "forms/days/daysview.h"
#include "forms/days/fouriergrafikinfo.h"
#include "forms/days/stacktexts.h"
#include "forms/savefolder.h"
#include "picture/periodmarks.h"
#include "picture/stackplot.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double pointerAccuracy = 2; // pixels
constexpr int digits = 8;             // significant, of frequencies and periods
constexpr double shownHarmonics = 4;  // of a line that is gone to

QString number(double value)
{
    return QString::number(value, 'g', digits);
}

} // namespace

SpectrumView::SpectrumView(const StackTexts &texts, QWidget *parent)
    : QSplitter(Qt::Horizontal, parent)
{
    setObjectName("splitter");
    setChildrenCollapsible(false);
    auto *const middle = new QSplitter(Qt::Vertical, this);
    middle->setObjectName("pictures");
    middle->setChildrenCollapsible(false);
    picture = new DaysView(texts, middle);
    picture->setObjectName("dayPicture");
    grafik = new PulsarGrafik(middle);
    grafik->setObjectName("grafik");
    picture->setPlot(grafik);
    info = new FourierGrafikInfo(this);
    info->setTexts(texts);
    shareSaveFolder(grafik);
    shareSaveFolder(new PictureMenu(picture));
    middle->setSizes({260, 320});
    setStretchFactor(0, 1);
    setStretchFactor(1, 0);
    setSizes({620, 300});

    connect(grafik, &PulsarGrafik::coordsChanged, this,
            [this](const QPointF &coords) { pointAt(coords.x(), -1); });
    connect(picture, &DaysView::pointed, this,
            [this](int day, double index) { pointAt(index, day); });
    connect(picture, &DaysView::dayClicked, this, &SpectrumView::dayClicked);
    connect(grafik, &PulsarGrafik::fundamentalChanged, this, &SpectrumView::markedFrequencyChanged);
    connect(info, &FourierGrafikInfo::lineChosen, this, &SpectrumView::goTo);

    leaveOut = new QAction("Leave this frequency out\tX", this);
    leaveOut->setObjectName("leaveOutHere");
    leaveOut->setEnabled(false);
    connect(leaveOut, &QAction::triggered, this, &SpectrumView::toggleLeftOut);
    for (QWidget *const shown : std::initializer_list<QWidget *>{picture, grafik}) {
        shown->setToolTip(
            "Ctrl and a click, or X: leave the frequency here out, or count it again");
        shown->addAction(leaveOut);
        shown->installEventFilter(this);
    }
}

void SpectrumView::showStack(const DayList &days, const std::vector<bool> &chosen,
                             const Days::FourierStack &newStack, const QStringList &source)
{
    shownDays = days;
    stack = newStack;
    if (stack.sigma.empty())
        grafik->showMessage(stack.problem);
    else
        grafik->setData(Plot::stackPlot(stack, source));
    markPeriod();
    std::vector<DaysView::Row> rows;
    for (std::size_t i = 0; i < days->size(); ++i) {
        const Days::FourierDay &day = (*days)[i];
        const std::vector<float> &row = rowOf(int(i));
        if (!row.empty())
            rows.push_back({int(i),
                            day.begin,
                            {row.data(), int(row.size()), stack.ffa ? 1 : ratioOf(day)},
                            chosen[i]});
    }
    picture->setRows(std::move(rows), days);
    info->setStack(stack);
    leaveOut->setEnabled(!isOnlyLines && !stack.sigma.empty());
}

void SpectrumView::showMessage(const QString &message)
{
    shownDays = nullptr;
    stack = {};
    cursorBin.reset();
    cursorDay = -1;
    markedPeriod.reset();
    grafik->showMessage(message);
    picture->setRows({}, nullptr);
    info->setStack(stack);
    leaveOut->setEnabled(false);
}

void SpectrumView::showOnlyLines()
{
    isOnlyLines = true;
    leaveOut->setVisible(false);
    grafik->setToolTip({});
    picture->hide();
    info->showOnlyLines();
}

// Where the axis of the stack is that of the barycentre, a day has its line elsewhere.
double SpectrumView::ratioOf(const Days::FourierDay &day) const
{
    return stack.isTurned && std::isfinite(day.ratio) ? day.ratio : 1;
}

// The values of a day over the axis; of the FFA those of its nearest trials, turned already.
const std::vector<float> &SpectrumView::rowOf(int day) const
{
    const Days::FourierDay &own = (*shownDays)[std::size_t(day)];
    if (stack.rows)
        return (*stack.rows)[std::size_t(day)];
    return stack.ffa ? own.periodogram.best : own.powers;
}

double SpectrumView::powerOf(int day, double bin) const
{
    const std::vector<float> &row = rowOf(day);
    const double ratio = stack.ffa ? 1 : ratioOf((*shownDays)[std::size_t(day)]);
    const double own = std::round(bin * ratio);
    return own >= 0 && own < double(row.size()) ? double(row[std::size_t(own)])
                                                : -std::numeric_limits<double>::infinity();
}

// A pixel may hold many bins.
SpectrumView::Bins SpectrumView::binsAround(double index) const
{
    const double reach = std::max(0.5, pointerAccuracy * grafik->dataPerPixel().x());
    const auto last = double(stack.sigma.size() - 1);
    return {std::size_t(std::clamp(std::ceil(index - reach), 0.0, last)),
            std::size_t(std::clamp(std::floor(index + reach), 0.0, last))};
}

// The pointer means the highest bin, or one that is left out.
void SpectrumView::pointAt(double index, int day)
{
    if (stack.sigma.empty())
        return;
    const Bins around = binsAround(index);
    std::size_t best = around.begin;
    for (std::size_t bin = around.begin; bin <= around.last; ++bin) {
        const auto valueAt = [&](std::size_t place) {
            return day >= 0 ? powerOf(day, double(place)) : double(stack.sigma[place]);
        };
        if (valueAt(bin) > valueAt(best))
            best = bin;
    }
    cursorIndex = index;
    cursorDay = day;
    const std::optional<std::size_t> left = leftOutBin();
    cursorBin = double(left.value_or(best));
    leaveOut->setText(left ? "Count this frequency again\tX" : "Leave this frequency out\tX");
    info->setCoords(coordsText(*cursorBin, day));
    emit cursorMoved();
}

// Near the pointer, if there is any.
std::optional<std::size_t> SpectrumView::leftOutBin() const
{
    const Bins around = binsAround(cursorIndex);
    for (std::size_t bin = around.begin; bin <= around.last && bin < stack.leftOut.size(); ++bin)
        if (stack.leftOut[bin])
            return bin;
    return {};
}

// Interference stands still at the telescope, where a day has its own frequency.
void SpectrumView::toggleLeftOut()
{
    if (!cursorBin || stack.sigma.empty() || !leaveOut->isEnabled())
        return;
    const double mean = stack.isTurned && std::isfinite(stack.ratio) ? stack.ratio : 1;
    if (const std::optional<std::size_t> bin = leftOutBin()) {
        const double widening = stack.ffa ? 2.5 : 1.5; // bins
        constexpr double earthMotion = 2e-4;           // from one end of a year to the other
        const double frequency = stack.frequency(double(*bin));
        emit countAgainWanted(frequency * mean, widening * stack.binWidth +
                                                    (stack.isTurned ? earthMotion * frequency : 0));
        return;
    }
    for (std::size_t line = 0; line < stack.lines.size(); ++line)
        if (std::abs(stack.lines[line].bin - *cursorBin) <= 1) {
            emit lineLeftOut(int(line));
            return;
        }
    const double ratio = cursorDay >= 0 ? ratioOf((*shownDays)[std::size_t(cursorDay)]) : mean;
    emit frequencyLeftOut(stack.frequency(*cursorBin) * ratio);
}

// A click with Ctrl in either picture.
bool SpectrumView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::MouseButtonPress || !leaveOut->isEnabled())
        return QSplitter::eventFilter(watched, event);
    const auto *const press = static_cast<QMouseEvent *>(event);
    if (press->button() != Qt::LeftButton || press->modifiers() != Qt::ControlModifier)
        return QSplitter::eventFilter(watched, event);
    QMouseEvent move(QEvent::MouseMove, press->localPos(), press->screenPos(), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(watched, &move);
    grafik->setFocus(Qt::MouseFocusReason);
    toggleLeftOut();
    return true;
}

void SpectrumView::keyPressEvent(QKeyEvent *event)
{
    constexpr int cyrillicKeyX = 0x0427; // what X gives in a Russian keyboard layout
    if (event->modifiers() == Qt::NoModifier &&
        (event->key() == Qt::Key_X || event->key() == cyrillicKeyX))
        toggleLeftOut();
    else
        QSplitter::keyPressEvent(event);
}

// Frequency and period, whichever the axis has first.
QStringList SpectrumView::placeText(double bin) const
{
    const double frequency = stack.frequency(bin);
    const QString side = stack.isTurned ? "barycentre" : "telescope";
    const double atTelescope =
        stack.isTurned && std::isfinite(stack.ratio) ? frequency * stack.ratio : 0;
    QStringList lines;
    if (stack.ffa) {
        lines << QString("Period %1 s, %2").arg(number(1 / frequency), side);
        if (atTelescope > 0)
            lines << QString("At the telescope %1 s").arg(number(1 / atTelescope));
        return lines << QString("Frequency %1 Hz").arg(number(frequency));
    }
    lines << QString("Frequency %1 Hz, %2").arg(number(frequency), side);
    if (atTelescope > 0)
        lines << QString("At the telescope %1 Hz").arg(number(atTelescope));
    return lines << (frequency > 0 ? QString("Period %1 s").arg(number(1 / frequency)) : QString());
}

QString SpectrumView::coordsText(double bin, int day) const
{
    QStringList lines = placeText(bin);
    const auto place = std::size_t(bin);
    const double sigma = double(stack.sigma[place]);
    const double power = double(stack.powers[place]);
    lines << (stack.ffa
                  ? QString("Stack: S/N %1 a day, width %2, %3 sigma")
                        .arg(power, 0, 'f', 2)
                        .arg(stack.widths[place])
                        .arg(sigma, 0, 'f', 1)
                  : QString("Stack: P %1, %2 sigma").arg(power, 0, 'f', 3).arg(sigma, 0, 'f', 1));
    if (day >= 0)
        lines << QString("Day %1: %2 %3")
                     .arg(textOfTime((*shownDays)[std::size_t(day)].begin, "yyyy-MM-dd hh:mm"),
                          stack.ffa ? "S/N" : "P")
                     .arg(powerOf(day, bin), 0, 'f', 2);
    if (place < stack.leftOut.size() && stack.leftOut[place])
        lines << "Left out; Ctrl+click or X counts it again";
    else if (!stack.ffa && place < std::size_t(Days::lowestBin))
        lines << "Leftovers of the base line, not ranked";
    return lines.join('\n');
}

std::vector<double> SpectrumView::powersUnderCursor() const
{
    std::vector<double> powers;
    if (!shownDays)
        return powers;
    for (int day = 0; day < int(shownDays->size()); ++day)
        powers.push_back(cursorBin ? powerOf(day, *cursorBin)
                                   : -std::numeric_limits<double>::infinity());
    return powers;
}

double SpectrumView::frequencyUnderCursor() const
{
    return cursorBin ? stack.frequency(*cursorBin) : 0;
}

double SpectrumView::markedFrequency() const
{
    const double marked = grafik->fundamental().value_or(0);
    return stack.isTurned && std::isfinite(stack.ratio) ? marked * stack.ratio : marked;
}

void SpectrumView::goTo(int line)
{
    if (line < 0 || line >= int(stack.lines.size()))
        return;
    const Days::FourierLine &found = stack.lines[std::size_t(line)];
    if (stack.ffa) {
        goToPeriod(found);
        return;
    }
    const double wanted = found.bin * std::min(shownHarmonics, double(found.harmonics)) * 1.2;
    const PulsarGrafik::VisibleRange shown = grafik->visibleRange();
    if (found.bin < shown.first || found.bin > shown.first + shown.points)
        grafik->setVisibleX(0, std::min(wanted, double(stack.sigma.size())));
    moveCursor(std::round(found.bin));
    grafik->setFundamental(stack.frequency(found.bin));
    emit cursorMoved();
}

// To a bin of the stack, wherever the pointer is.
void SpectrumView::moveCursor(double bin)
{
    cursorIndex = bin;
    cursorDay = -1;
    cursorBin = bin;
    info->setCoords(coordsText(bin, -1));
}

// A line out of sight comes into the middle of as much as was shown.
void SpectrumView::goToPeriod(const Days::FourierLine &line)
{
    const PulsarGrafik::VisibleRange shown = grafik->visibleRange();
    if (line.bin < shown.first || line.bin > shown.first + shown.points)
        grafik->setVisibleX(line.bin - shown.points / 2, shown.points);
    moveCursor(line.bin);
    markedPeriod = 1 / stack.frequency(line.bin);
    markPeriod();
    emit cursorMoved();
}

void SpectrumView::markPeriod()
{
    if (!stack.ffa || !markedPeriod || stack.sigma.empty())
        return;
    PlotData plot = grafik->data();
    Plot::markPeriods(plot, *markedPeriod);
    grafik->setData(std::move(plot));
    picture->update();
}

void SpectrumView::markDay(int day)
{
    picture->markDay(day);
}
