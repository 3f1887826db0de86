#include "forms/transient/pulseview.h"

#include "data/truenumbers.h"
#include "forms/savefolder.h"
#include "forms/sky/smallplot.h"
#include "forms/transient/pulseimage.h"
#include "plot/picturemenu.h"

#include <QGridLayout>
#include <cmath>

namespace {

constexpr int viewDelay = 80; // ms
constexpr double msPerSecond = 1000;

bool isOfRay(const Pulses::PreparedRay &ray, const Pulses::Pulse &pulse)
{
    return moduleNumber(ray.data, 0) == pulse.module && rayNumber(ray.data, 0) == pulse.ray;
}

// Place of a pulse's ray in the plan; without one it is the first.
Pulses::RayPlace placeOf(const Pulses::PulsePlan &plan, const Pulses::Pulse &pulse)
{
    for (const Pulses::RayPlace &place : plan.rays) {
        if (place.moduleNumber == pulse.module && place.rayNumber == pulse.ray)
            return place;
    }
    return plan.rays.front();
}

QString dispersionText(const Pulses::Pulse &pulse)
{
    return std::isfinite(pulse.dispersion.value)
               ? QString::number(pulse.dispersion.value, 'f', 2) + " pc/cm^3"
               : QString("one dispersion only");
}

} // namespace

PulseView::PulseView(QWidget *parent)
    : QWidget(parent), dispersed(new PulseImage("Bands as recorded")),
      dedispersed(new PulseImage("Bands less their delays")),
      overTime(new PulseImage("Dispersion against time")), channels(new SmallPlot("Channels")),
      profile(new SmallPlot("Profile")), overDispersion(new SmallPlot("S/N over dispersion"))
{
    auto *const grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(2);
    const std::pair<const char *, QWidget *> pictures[] = {
        {"dispersed", dispersed}, {"dedispersed", dedispersed}, {"overTime", overTime},
        {"channels", channels},   {"profile", profile},         {"overDispersion", overDispersion}};
    int cell = 0;
    constexpr int columns = 3;
    for (const auto &[name, picture] : pictures) {
        picture->setObjectName(name);
        grid->addWidget(picture, cell / columns, cell % columns);
        shareSaveFolder(new PictureMenu(picture));
        ++cell;
    }
    grid->setRowStretch(0, 3);
    grid->setRowStretch(1, 2);
    linkPointers();
    delay.setSingleShot(true);
    delay.setInterval(viewDelay);
    connect(&delay, &QTimer::timeout, this, &PulseView::make);
    connect(&maker, &Jobs::Worker::ended, this, [this](const Jobs::Ending &ending) {
        if (ending.kind == Jobs::Ending::Failed)
            showMessage(ending.problem);
    });
}

PulseView::~PulseView() = default;

// One time in all pictures of time. The profile counts in ms.
void PulseView::linkPointers()
{
    const auto follow = [this](std::optional<double> time) {
        for (PulseImage *const image : {dispersed, dedispersed, overTime})
            image->setPointer(time);
        profile->setPointer(time ? std::optional(msPerSecond * *time) : std::nullopt);
    };
    for (const PulseImage *const image : {dispersed, dedispersed, overTime})
        connect(image, &PulseImage::pointed, this, follow);
    connect(profile, &SmallPlot::pointed, this, [follow](std::optional<double> ms) {
        follow(ms ? std::optional(*ms / msPerSecond) : std::nullopt);
    });
}

void PulseView::showMessage(const QString &message)
{
    delay.stop();
    maker.stop();
    for (PulseImage *const image : {dispersed, dedispersed, overTime})
        image->showMessage(message);
    for (SmallPlot *const plot : {channels, profile, overDispersion})
        plot->showMessage(message);
}

void PulseView::showPulse(const PulseRequest &wanted)
{
    request = wanted;
    delay.start();
}

void PulseView::forgetData()
{
    delay.stop();
    maker.stop();
    prepared.reset();
}

void PulseView::make()
{
    maker.start<Made>(
        [asked = request, known = prepared](const Jobs::Control &control,
                                            const Jobs::Deliver<Made> &deliver) {
            Made made;
            made.ray = known;
            if (!made.ray || !isOfRay(*made.ray, asked.pulse))
                made.ray = std::make_shared<const Pulses::PreparedRay>(
                    Pulses::prepareRay(asked.data, placeOf(asked.plan, asked.pulse), asked.plan,
                                       asked.parameters, control));
            if (control.isStopped())
                return;
            if (made.ray->problem.isEmpty())
                made.picture = Pulses::pictureOf(*made.ray, asked.plan, asked.pulse);
            deliver(made);
        },
        [this](const Made &made) { take(made); });
}

void PulseView::take(const Made &made)
{
    if (!made.ray->problem.isEmpty()) {
        showMessage(made.ray->problem);
        return;
    }
    prepared = made.ray;
    const Pulses::PulsePicture &picture = made.picture;
    const QString dispersion = dispersionText(request.pulse);
    dispersed->setContent(
        {"Bands as recorded", picture.dispersed, "MHz", picture.arrival, std::nullopt});
    dedispersed->setContent(
        {"Bands less their delays, " + dispersion, picture.dedispersed, "MHz", {}, std::nullopt});
    if (picture.overTime.isEmpty())
        overTime->showMessage("Dispersion cannot be told from these bands");
    else
        overTime->setContent({"Dispersion against time",
                              picture.overTime,
                              "DM",
                              {},
                              request.pulse.dispersion.value});
    SmallPlot::Content curve;
    curve.title = "Profile, sigma";
    curve.xName = "ms";
    curve.curves = {{{}, picture.profile}};
    curve.isSteps = true;
    for (int i = 0; i < picture.dedispersed.columns; ++i)
        curve.x.push_back(msPerSecond *
                          (picture.dedispersed.firstTime + i * picture.dedispersed.timeStep));
    profile->setContent(curve);
    SmallPlot::Content spectrum;
    spectrum.title = "S/N of the channels within the pulse";
    spectrum.xName = "MHz";
    spectrum.x = picture.dedispersed.rows;
    spectrum.curves = {{{}, picture.channels}};
    channels->setContent(spectrum);
    if (picture.curve.dispersions.empty()) {
        overDispersion->showMessage("Dispersion cannot be told from these bands");
    } else {
        SmallPlot::Content trials;
        trials.title = "S/N over dispersion";
        trials.xName = "pc/cm^3";
        trials.x = picture.curve.dispersions;
        trials.curves = {{"S/N", picture.curve.snr}, {"fit", picture.curve.fitted}};
        trials.mark = request.pulse.dispersion.value;
        trials.hasMark = std::isfinite(trials.mark);
        overDispersion->setContent(trials);
    }
    emit shown();
}
