#include "forms/native/nativegrafik.h"

#include "app/shell/channelswitches.h"
#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/progresstask.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "data/recordingwriter.h"
#include "data/truenumbers.h"
#include "fields/fieldstyles.h"
#include "forms/days/recordingspectrum.h"
#include "forms/native/nativeinfo.h"
#include "forms/native/nativeloader.h"
#include "forms/native/nativestatistics.h"
#include "forms/native/nativetexts.h"
#include "forms/native/nativeview.h"
#include "forms/native/passportmodel.h"
#include "forms/native/waterfallview.h"
#include "ui_nativegrafik.h"

#include <QFileDialog>
#include <QFileInfo>
#include <algorithm>
#include <cmath>

namespace {

constexpr int statisticsDelay = 60;  // ms after the last change
constexpr int sumDelay = 400;        // ms
constexpr int surroundings = 5000;   // points beside one that is looked at
constexpr double marginFactor = 1.5; // of the dispersion whose delays are kept beside a part

} // namespace

NativeGrafik::NativeGrafik(const QString &filePath, int withoutStep, QWidget *parent)
    : FileForm(filePath, parent), ui(std::make_unique<Ui::NativeGrafik>()),
      deletesSteps(withoutStep == 0)
{
    ui->setupUi(this);
    if (!open([this] { return read(); }))
        return;
    channelsOff = ChannelSwitches::load(path, file.header().channels);
    info = new NativeInfo(this);
    info->setObjectName("nativeInfo");
    info->setFrequencies(file.header().fbands);
    info->setChannelsOff(channelsOff);
    view = new NativeView(file, this);
    loader = new NativeLoader(worker, file, this);
    fillPassport();
    offerChoices();
    install(view, info, Progress::OncePercentIsKnown);

    for (QTimer *timer : {&drawTimer, &statisticsTimer, &sumTimer})
        timer->setSingleShot(true);
    statisticsTimer.setInterval(statisticsDelay);
    sumTimer.setInterval(sumDelay);
    connectChoices();
    connectWaterfall();
    connectPictures();
    view->showMessage("Reading...");
    request(loader->domainFor({0, double(file.completePoints())}));
    ui->dispersion->setFocus();
}

NativeGrafik::~NativeGrafik() = default;

std::optional<FileForm::Refusal> NativeGrafik::read()
{
    const QString text = "Bad file!\nFile without data";
    if (!file.open(path))
        return Refusal{text, file.reason()};
    if (file.completePoints() >= 1 && file.header().channels >= 1)
        return std::nullopt;
    return Refusal{text, QString("%1 ends before its first point: %2.")
                             .arg(path, NativeTexts::sizeCheck(file).text)};
}

void NativeGrafik::fillPassport()
{
    ui->passport->showTable(new PassportModel(file.passport(), this));
    ui->passport->resizeColumnToContents(0);
    const NativeTexts::SizeCheck check = NativeTexts::sizeCheck(file);
    ui->fileSize->setText(check.text);
    if (!check.isRight)
        FieldStyles::setStyle(ui->fileSize, FieldStyles::failing);
    describe(file.header());
}

void NativeGrafik::offerChoices()
{
    const ObservationData &header = file.header();
    ui->module->setMaximum(header.modules);
    ui->ray->setMaximum(header.rays);
    ui->channel->setMaximum(header.channels);
    if (header.channels < 2) {
        for (QRadioButton *button : {ui->showWaterfall, ui->showSum, ui->showStack})
            button->setEnabled(false);
        ui->showChannel->setChecked(true);
    }
    ui->dispersion->setValue(header.dispersion);
    ui->dispersionSlider->setValue(header.dispersion);
}

void NativeGrafik::connectChoices()
{
    const auto spinChanged = QOverload<int>::of(&QSpinBox::valueChanged);
    const auto drawSoon = [this] { drawTimer.start(0); };
    for (QSpinBox *field : {ui->module, ui->ray})
        connect(field, spinChanged, this, [this] {
            loader->forgetWhole();
            request(loader->asked());
        });
    connect(ui->channel, spinChanged, this, [this] {
        ui->showChannel->setChecked(ui->showChannel->isChecked() || !ui->showStack->isChecked());
        drawTimer.start(0);
    });
    for (QRadioButton *button : {ui->showWaterfall, ui->showSum, ui->showStack, ui->showChannel})
        connect(button, &QRadioButton::toggled, this, drawSoon);
    for (QCheckBox *box : {ui->baselinePerChannel, ui->zeroDm})
        connect(box, &QCheckBox::toggled, this, drawSoon);
    connect(ui->average, spinChanged, this, drawSoon);
    connect(ui->dispersion, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &NativeGrafik::setDispersion);
    connect(ui->dispersionSlider, &QSlider::valueChanged, this, &NativeGrafik::setDispersion);
    connect(ui->wholeButton, &QPushButton::clicked, this, [this] {
        view->noteView();
        showPart({0, double(file.completePoints())});
    });
    connect(ui->fitButton, &QPushButton::clicked, view, &NativeView::fitHeight);
    connect(ui->saveButton, &QPushButton::clicked, this, &NativeGrafik::saveSelection);
    connect(ui->spectrumButton, &QPushButton::clicked, this, &NativeGrafik::showSpectrum);
    connect(info, &NativeInfo::channelToggled, this, &NativeGrafik::toggleChannel);
    connect(info, &NativeInfo::allOnWanted, this, [this] { changeSwitches({}); });
}

// How the picture of time against frequency is coloured.
void NativeGrafik::connectWaterfall()
{
    WaterfallView *const waterfall = view->timeAndFrequency();
    for (QDoubleSpinBox *field : {ui->darkest, ui->lightest})
        connect(field, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                [this, waterfall] {
                    const double most = ui->lightest->value() - ui->darkest->singleStep();
                    ui->darkest->setMaximum(most);
                    waterfall->setScale(float(ui->darkest->value()), float(ui->lightest->value()));
                });
    connect(ui->byPercentiles, &QCheckBox::toggled, waterfall, &WaterfallView::setPercentiles);
    for (QWidget *field : {ui->darkest, ui->lightest})
        connect(ui->byPercentiles, &QCheckBox::toggled, field, &QWidget::setDisabled);
    connect(ui->colours, QOverload<int>::of(&QComboBox::currentIndexChanged), waterfall,
            [waterfall](int index) { waterfall->setGrey(index == 1); });
}

void NativeGrafik::connectPictures()
{
    connect(&drawTimer, &QTimer::timeout, this, &NativeGrafik::draw);
    connect(&statisticsTimer, &QTimer::timeout, this, &NativeGrafik::showStatistics);
    connect(&sumTimer, &QTimer::timeout, this, [this] { request(loader->asked(), true); });
    connect(loader, &NativeLoader::pictureRead, this, &NativeGrafik::takePicture);
    connect(loader, &NativeLoader::wholeRead, this,
            [this] { view->drawWhole(*loader->whole(), choice()); });
    connect(view, &NativeView::viewChanged, this, [this] {
        if (pending) // what the user does meanwhile counts
            pending = view->visible();
        follow();
    });
    connect(view, &NativeView::partWanted, this, &NativeGrafik::showPart);
    connect(view, &NativeView::selectionChanged, this, [this] { statisticsTimer.start(); });
    connect(view, &NativeView::pointed, info, &NativeInfo::setCoords);
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
    chosen.average = ui->average->value();
    chosen.isPerChannel = ui->baselinePerChannel->isChecked();
    chosen.isZeroDm = ui->zeroDm->isChecked();
    return chosen;
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

void NativeGrafik::changeDispersion()
{
    if (!loader->picture())
        return;
    const NativePicture &picture = *loader->picture();
    const double dispersion = ui->dispersion->value();
    drawTimer.start(0);
    const bool needsReading = picture.window.samples
                                  ? !reachesWithin(picture, dispersion, file.completePoints())
                                  : picture.request.dispersion != dispersion;
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
    ChannelSwitches::save(path, channelsOff);
    info->setChannelsOff(channelsOff);
    drawTimer.start(0);
    if (loader->picture() && !loader->picture()->window.samples)
        sumTimer.start();
}

void NativeGrafik::request(const NativeDomain &domain, bool isRepeated)
{
    sumTimer.stop();
    NativeRequest wanted;
    wanted.module = ui->module->value() - 1;
    wanted.ray = ui->ray->value() - 1;
    wanted.domain = domain;
    wanted.dispersion = ui->dispersion->value();
    wanted.marginDispersion = marginFactor * wanted.dispersion;
    wanted.deletesSteps = deletesSteps;
    wanted.channelsOff = channelsOff;
    wanted.isRepeated = isRepeated;
    loader->request(wanted);
}

void NativeGrafik::takePicture()
{
    if (!pending)
        draw();
    else
        view->draw(loader->picture(), choice(), *pending);
    if (loader->picture()->isLast)
        pending.reset();
    showNotes();
    follow();
}

// What is shown stays, in as far as it was read.
void NativeGrafik::endWork(const Jobs::Ending &ending)
{
    loader->end(ending);
    if (loader->isStopped() && !loader->picture())
        view->showMessage("Reading was stopped; \"Whole recording\" begins it again.");
    showNotes();
}

// The same part of the recording as before; at first all of it.
void NativeGrafik::draw()
{
    if (!loader->picture())
        return;
    const bool isFirst = view->curves().count == 0;
    const NativeRange part =
        isFirst ? NativeRange{0, double(file.completePoints())} : view->visible();
    view->draw(loader->picture(), choice(), part);
    if (loader->whole())
        view->drawWhole(*loader->whole(), choice());
    showNotes();
    statisticsTimer.start();
}

// Reads what is in sight, where it was not asked for yet.
void NativeGrafik::follow()
{
    statisticsTimer.start();
    const NativeRange part = view->visible();
    const NativeDomain domain = loader->domainFor(part);
    if (loader->isAsked(domain))
        return;
    pending = part;
    request(domain);
}

void NativeGrafik::showPart(const NativeRange &part)
{
    if (loader->isStopped())
        request(loader->asked());
    if (!loader->picture())
        return;
    view->frame(part);
    if (contains(loader->picture()->request.domain, part.first, part.points)) {
        pending.reset();
        view->goTo(part);
        return;
    }
    pending = part;
    const NativeDomain wanted = loader->domainFor(part);
    if (!loader->isAsked(wanted))
        request(wanted);
}

void NativeGrafik::lookAt(int point)
{
    if (!view) // the file was refused
        return;
    const int npoints = file.completePoints();
    if (point >= npoints) {
        StatusLine::show(QString("The recording ends before point %1.").arg(point));
        return;
    }
    const double points = std::min(surroundings, npoints);
    pending = NativeRange{std::clamp(point - points / 2, 0.0, npoints - points), points};
    view->frame(*pending);
}

void NativeGrafik::showStatistics()
{
    if (!loader->picture())
        return;
    const bool isStack = choice().show == NativeShow::Stack;
    const QString name =
        isStack ? QString("channel %1").arg(ui->channel->value()) : view->curves().names.value(0);
    info->showPart(*loader->picture(), *view, name, file.header().tresolution);
}

void NativeGrafik::showNotes()
{
    QStringList notes;
    if (loader->picture())
        notes = nativeNotes(*loader->picture(), view->curves(), channelsOff);
    if (!loader->failure().isEmpty())
        notes << loader->failure();
    info->setNotes(notes.join("\n"));
}

void NativeGrafik::saveSelection()
{
    if (!loader->picture())
        return;
    const NativeRange part = view->shownPart().range;
    Settings *const settings = Settings::instance();
    const QString saved = settings->lastSavePath();
    const bool isThere = !saved.isEmpty() && QFileInfo(saved).isDir();
    const QString folder = isThere ? saved : directoryOf(path);
    const QString proposal = folder + "/" + QFileInfo(path).completeBaseName() +
                             QString("_%1.pnthr").arg(qint64(part.first));
    const QString target = QFileDialog::getSaveFileName(this, "Save selection", proposal,
                                                        "Stretch of a recording (*.pnthr)");
    if (target.isEmpty())
        return;
    settings->setLastSavePath(directoryOf(target));
    QString failure;
    bool isCancelled = false;
    {
        ProgressTask task;
        failure = saveStretch(file, int(part.first), int(part.points), ui->dispersion->value(),
                              target, [&](int percent) { return task.advance(percent); });
        isCancelled = task.isCancelled();
    }
    if (!failure.isEmpty())
        showError(this, "The selection was not saved.", failure);
    else if (!isCancelled)
        StatusLine::show(QString("Points %1 to %2 saved in %3")
                             .arg(qint64(part.first))
                             .arg(qint64(part.first + part.points) - 1)
                             .arg(target));
}

void NativeGrafik::showSpectrum()
{
    const ObservationData &header = file.header();
    new RecordingSpectrum({path, moduleNumber(header, ui->module->value() - 1),
                           rayNumber(header, ui->ray->value() - 1), ui->dispersion->value()},
                          this);
}
