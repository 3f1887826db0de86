#include "forms/native/nativegrafik.h"

#include "app/shell/centralwidget.h"
#include "app/shell/channelswitches.h"
#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/lastvalues.h"
#include "app/shell/progresstask.h"
#include "app/shell/settings.h"
#include "calc/finitesamples.h"
#include "data/recordingsummary.h"
#include "data/recordingwriter.h"
#include "data/truenumbers.h"
#include "fields/fieldstyles.h"
#include "forms/native/nativeinfo.h"
#include "forms/native/nativeplot.h"
#include "forms/native/nativestatistics.h"
#include "forms/native/nativetexts.h"
#include "forms/native/overviewstrip.h"
#include "forms/native/passportmodel.h"
#include "forms/native/waterfallview.h"
#include "forms/savefolder.h"
#include "ui_nativegrafik.h"

#include <QFileDialog>
#include <QProgressBar>
#include <QScopedValueRollback>
#include <QShortcut>
#include <QStatusBar>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

namespace {

constexpr int statisticsDelay = 60; // ms after the last change
constexpr int sumDelay = 400;       // ms
constexpr int messageMs = 15000;

} // namespace

NativeGrafik::NativeGrafik(const QString &path, int withoutStep, QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::NativeGrafik>()), deletesSteps(withoutStep == 0)
{
    ui->setupUi(this);
    emptyCentralWidget();
    progressBar = Settings::instance()->progressBar();
    if (!openRecording(path)) {
        deleteLater();
        return;
    }
    ui->filePath->showFile(path);
    channelsOff = ChannelSwitches::load(path, file.header().channels);
    info = new NativeInfo(this);
    info->setObjectName("nativeInfo");
    info->setFrequencies(file.header().fbands);
    info->setChannelsOff(channelsOff);
    QWidget *const middle = makeMiddle();
    fillPassport();
    fillCentralWidget(this, middle, info);

    for (QTimer *timer : {&drawTimer, &statisticsTimer, &sumTimer})
        timer->setSingleShot(true);
    statisticsTimer.setInterval(statisticsDelay);
    sumTimer.setInterval(sumDelay);
    connectInputs();
    // The shortcut counts in the whole window: the plot and the panels are not within the form.
    escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, &NativeGrafik::stop);
    lastValues = std::make_unique<LastValues>(this);
    grafik->showMessage("Reading...");
    request(wantedDomain(npoints, mostDetailedPoints(file), 0, npoints, {0, npoints, false}));
    ui->dispersion->setFocus();
}

NativeGrafik::~NativeGrafik()
{
    if (loader.isBusy())
        progressBar->hide();
}

bool NativeGrafik::openRecording(const QString &path)
{
    if (!file.open(path)) {
        showError(parentWidget(), "Bad file!\nFile without data", file.reason());
        return false;
    }
    npoints = file.completePoints();
    if (npoints < 1 || file.header().channels < 1) {
        showError(parentWidget(), "Bad file!\nFile without data",
                  QString("%1 ends before its first point: %2.")
                      .arg(path, NativeTexts::sizeCheck(file).text));
        return false;
    }
    return true;
}

QWidget *NativeGrafik::makeMiddle()
{
    auto *const middle = new QWidget(this);
    auto *const layout = new QVBoxLayout(middle);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    waterfall = new WaterfallView;
    grafik = new PulsarGrafik;
    overview = new OverviewStrip;
    waterfall->setObjectName("waterfall");
    grafik->setObjectName("grafik");
    overview->setObjectName("overview");
    waterfall->setPlot(grafik);
    shareSaveFolder(grafik);
    waterfall->setFrequencies(file.header().fbands, file.header().channels - 1);
    overview->setRecording(npoints);
    layout->addWidget(waterfall, 3);
    layout->addWidget(grafik, 2);
    layout->addWidget(overview);
    return middle;
}

void NativeGrafik::fillPassport()
{
    ui->passport->showTable(new PassportModel(file.passport(), this));
    ui->passport->resizeColumnToContents(0);
    const NativeTexts::SizeCheck check = NativeTexts::sizeCheck(file);
    ui->fileSize->setText(check.text);
    if (!check.isRight)
        FieldStyles::setStyle(ui->fileSize, FieldStyles::failing);

    const ObservationData &header = file.header();
    ui->recording->setText(recordingSummary(header).join('\n'));
    const int bands = header.channels - 1;
    ui->module->setMaximum(header.modules);
    ui->ray->setMaximum(header.rays);
    ui->channel->setMaximum(header.channels);
    if (bands < 1) {
        for (QRadioButton *button : {ui->showWaterfall, ui->showSum, ui->showStack})
            button->setEnabled(false);
        ui->showChannel->setChecked(true);
    }
    ui->dispersion->setValue(header.dispersion);
    ui->dispersionSlider->setValue(header.dispersion);
}

void NativeGrafik::connectInputs()
{
    const auto spinChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    const auto numberChanged = QOverload<double>::of(&QDoubleSpinBox::valueChanged);
    const auto drawSoon = [this] { drawTimer.start(0); };
    for (QSpinBox *field : {ui->module, ui->ray})
        connect(field, spinChanged, this, &NativeGrafik::selectRay);
    connect(ui->channel, spinChanged, this, [this] {
        ui->showChannel->setChecked(ui->showChannel->isChecked() || !ui->showStack->isChecked());
        drawTimer.start(0);
    });
    for (QRadioButton *button : {ui->showWaterfall, ui->showSum, ui->showStack, ui->showChannel})
        connect(button, &QRadioButton::toggled, this, drawSoon);
    connect(ui->dispersion, numberChanged, this, &NativeGrafik::setDispersion);
    connect(ui->dispersionSlider, &QSlider::valueChanged, this, &NativeGrafik::setDispersion);
    connect(ui->average, spinChanged, this, drawSoon);
    connect(ui->wholeButton, &QPushButton::clicked, this, [this] {
        grafik->noteView();
        showPoints(0, npoints);
    });
    connect(ui->fitButton, &QPushButton::clicked, this, &NativeGrafik::fitHeight);
    connect(ui->saveButton, &QPushButton::clicked, this, &NativeGrafik::saveSelection);
    connect(ui->spectrumButton, &QPushButton::clicked, this, &NativeGrafik::showSpectrum);

    connect(&drawTimer, &QTimer::timeout, this, qOverload<>(&NativeGrafik::draw));
    connect(&statisticsTimer, &QTimer::timeout, this, [this] {
        showStatistics();
        showBandpass();
    });
    connect(&sumTimer, &QTimer::timeout, this, [this] { request(asked, true); });
    connect(&loader, &Jobs::Worker::ended, this, &NativeGrafik::showFailure);
    connect(grafik, &PulsarGrafik::viewChanged, this, [this] {
        if (pending && !isSettingData) // what the user does meanwhile counts
            pending = visible();
        followView();
    });
    connect(grafik, &PulsarGrafik::partWanted, this, [this](double first, double points) {
        showPoints(drawn.first + first * drawn.step, points * drawn.step);
    });
    connect(grafik, &PulsarGrafik::selectionChanged, this, [this] { statisticsTimer.start(); });
    connect(grafik, &PulsarGrafik::coordsChanged, this,
            [this](QPointF coords) { showCoords(coords); });
    connectWaterfall();
    connect(overview, &OverviewStrip::rangeWanted, this, [this](double first, double points) {
        grafik->noteView();
        showPoints(first, points);
    });
    connect(info, &NativeInfo::channelToggled, this, &NativeGrafik::toggleChannel);
    connect(info, &NativeInfo::allOnWanted, this, [this] { changeSwitches({}); });
}

// Field and slider follow each other; what is typed beyond the slider's range stays.
void NativeGrafik::setDispersion(double dispersion)
{
    const QSignalBlocker fieldIsSilent(ui->dispersion);
    const QSignalBlocker sliderIsSilent(ui->dispersionSlider);
    if (sender() == ui->dispersionSlider)
        ui->dispersion->setValue(dispersion);
    else
        ui->dispersionSlider->setValue(int(std::lround(dispersion)));
    changeDispersion();
}

NativeChoice NativeGrafik::choice() const
{
    NativeChoice chosen;
    chosen.show = ui->showChannel->isChecked() ? NativeShow::Channel
                  : ui->showStack->isChecked() ? NativeShow::Stack
                  : ui->showSum->isChecked()   ? NativeShow::Sum
                                               : NativeShow::Waterfall;
    chosen.channel = ui->channel->value() - 1;
    chosen.dispersion = ui->dispersion->value();
    chosen.channelsOff = channelsOff;
    return chosen;
}

void NativeGrafik::showOverview()
{
    if (!whole)
        return;
    const Tools::Reduction &reduction = whole->reduction;
    const int row =
        choice().show == NativeShow::Channel ? ui->channel->value() - 1 : reduction.channels;
    const auto rowOf = [&](const std::vector<float> &values) {
        const auto begin = values.begin() + std::ptrdiff_t(reduction.index(row, 0));
        return std::vector<float>(begin, begin + reduction.columns);
    };
    overview->setExtremes(rowOf(reduction.low), rowOf(reduction.high));
}

void NativeGrafik::changeDispersion()
{
    if (!picture)
        return;
    const double dispersion = ui->dispersion->value();
    drawTimer.start(0);
    const bool needsReading = picture->window.samples
                                  ? !reachesWithin(*picture, dispersion, npoints)
                                  : picture->request.dispersion != dispersion;
    if (needsReading)
        sumTimer.start();
}

void NativeGrafik::toggleChannel(int channel)
{
    std::vector<bool> off = channelsOff;
    off.resize(std::size_t(file.header().channels), false);
    off[std::size_t(channel)] = !off[std::size_t(channel)];
    changeSwitches(off);
}

void NativeGrafik::changeSwitches(const std::vector<bool> &off)
{
    const bool isAnyOff = std::find(off.begin(), off.end(), true) != off.end();
    channelsOff = isAnyOff ? off : std::vector<bool>();
    ChannelSwitches::save(file.path(), channelsOff);
    info->setChannelsOff(channelsOff);
    drawTimer.start(0);
    if (picture && !picture->window.samples)
        sumTimer.start();
}

void NativeGrafik::draw()
{
    if (picture)
        draw(visible());
}

void NativeGrafik::draw(const NativeRange &part)
{
    waterfall->setVisible(ui->showWaterfall->isChecked());
    drawCurves(part);
    drawWaterfall();
    showOverview();
    showNotes();
    statisticsTimer.start();
}

// Shows the same points as before, however many curves or values there were.
void NativeGrafik::drawCurves(const NativeRange &part)
{
    const NativeChoice chosen = choice();
    const NativeCurves before = std::move(drawn);
    drawn = nativeCurves(*picture, chosen);
    if (!drawn.problem.isEmpty()) {
        grafik->showMessage(drawn.problem);
        return;
    }
    PlotData plot = nativePlot(drawn, chosen, *picture, file);
    const QScopedValueRollback<bool> isSetting(isSettingData, true);
    const double first = drawn.first;
    const double step = drawn.step;
    const double firstX = (part.first - first) / step;
    const double pointsX = part.points / step;
    const PlotData &shown = grafik->data();
    const bool isOtherPart = before.first != first || before.step != step;
    if (isOtherPart && !shown.messageMode && shown.yName == plot.yName) {
        const Plot::IndexMap moved = {(before.first - first) / step, before.step / step};
        grafik->setPart(std::move(plot), moved, firstX, pointsX);
    } else {
        if (isOtherPart)
            grafik->clearSelection();
        grafik->setData(std::move(plot));
        grafik->setVisibleX(firstX, pointsX);
    }
    overview->setPart(visible().first, visible().points);
}

NativeRange NativeGrafik::visible() const
{
    const PulsarGrafik::VisibleRange range = grafik->visibleRange();
    return {drawn.first + range.first * drawn.step, range.points * drawn.step};
}

// The selected points, or else those in sight.
NativeRange NativeGrafik::shownPart(bool &isSelected) const
{
    const double end = drawn.first + drawn.count * drawn.step;
    NativeRange part = visible();
    const auto selected = grafik->selectedRange();
    isSelected = selected.has_value();
    if (selected) {
        part.first = drawn.first + std::ceil(selected->x.min) * drawn.step;
        part.points = (std::floor(selected->x.max) - std::ceil(selected->x.min) + 1) * drawn.step;
    }
    const double first = std::clamp(std::floor(part.first), drawn.first, end - 1);
    const double last = std::clamp(std::ceil(part.first + part.points), first + 1, end);
    return {first, last - first};
}

void NativeGrafik::followView()
{
    if (!picture || isSettingData)
        return;
    const NativeRange part = visible();
    overview->setPart(part.first, part.points);
    drawWaterfall();
    statisticsTimer.start();
    const NativeDomain domain =
        wantedDomain(npoints, mostDetailedPoints(file), part.first, part.points, asked);
    if (domain.first == asked.first && domain.count == asked.count)
        return;
    pending = part;
    request(domain);
}

void NativeGrafik::showPoints(double first, double points)
{
    if (isStopped)
        request(asked);
    if (!picture)
        return;
    const NativeDomain &domain = picture->request.domain;
    overview->setPart(first, points);
    if (contains(domain, first, points)) {
        pending.reset();
        grafik->setVisibleX((first - drawn.first) / drawn.step, points / drawn.step);
        return;
    }
    pending = NativeRange{first, points};
    const NativeDomain wanted =
        wantedDomain(npoints, mostDetailedPoints(file), first, points, asked);
    if (wanted.first != asked.first || wanted.count != asked.count)
        request(wanted);
}

void NativeGrafik::fitHeight()
{
    const PulsarGrafik::VisibleRange range = grafik->visibleRange();
    const Extremes y = extremesInSight(grafik->data().graphs, range.first, range.points);
    if (y.max > y.min)
        grafik->setVisibleY(y.min, y.max);
}

void NativeGrafik::showStatistics()
{
    if (!picture)
        return;
    bool isSelected = false;
    const NativeRange range = shownPart(isSelected);
    NativeTexts::StatisticsPart part =
        nativeStatistics(*picture, drawn, range, isSelected, file.header().tresolution);
    part.name = choice().show == NativeShow::Stack ? QString("channel %1").arg(ui->channel->value())
                                                   : drawn.names.value(0);
    info->setStatistics(NativeTexts::statisticsHtml(part));
}

void NativeGrafik::showBandpass()
{
    if (!picture)
        return;
    NativeBandpass bandpass = nativeBandpass(*picture, visible());
    info->setBandpass(std::move(bandpass.mean), std::move(bandpass.sigma));
}

void NativeGrafik::showNotes()
{
    QStringList notes;
    if (picture)
        notes = nativeNotes(*picture, drawn, channelsOff);
    if (!loadFailure.isEmpty())
        notes << loadFailure;
    info->setNotes(notes.join("\n"));
}

void NativeGrafik::showCoords(QPointF coords)
{
    const QPointF perPixel = grafik->dataPerPixel();
    const double point = std::floor(drawn.first + std::floor(coords.x()) * drawn.step);
    info->setCoords(NativeTexts::coordsText(
        file.header(), point, "value " + Plot::coordinateText(coords.y(), perPixel.y())));
}

void NativeGrafik::saveSelection()
{
    if (!picture)
        return;
    bool isSelected = false;
    const NativeRange part = shownPart(isSelected);
    Settings *const settings = Settings::instance();
    const QString saved = settings->lastSavePath();
    const bool isThere = !saved.isEmpty() && QFileInfo(saved).isDir();
    const QString folder = isThere ? saved : directoryOf(file.path());
    const QString proposal = folder + "/" + QFileInfo(file.path()).completeBaseName() +
                             QString("_%1.pnthr").arg(qint64(part.first));
    const QString path = QFileDialog::getSaveFileName(this, "Save selection", proposal,
                                                      "Stretch of a recording (*.pnthr)");
    if (path.isEmpty())
        return;
    settings->setLastSavePath(directoryOf(path));
    QString failure;
    bool isCancelled = false;
    {
        ProgressTask task;
        failure = saveStretch(file, int(part.first), int(part.points), ui->dispersion->value(),
                              path, [&](int percent) { return task.advance(percent); });
        isCancelled = task.isCancelled();
    }
    if (!failure.isEmpty())
        showError(this, "The selection was not saved.", failure);
    else if (!isCancelled)
        settings->ui().statusbar->showMessage(QString("Points %1 to %2 saved in %3")
                                                  .arg(qint64(part.first))
                                                  .arg(qint64(part.first + part.points) - 1)
                                                  .arg(path),
                                              messageMs);
}
