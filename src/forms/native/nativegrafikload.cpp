// What is read of the recording, and when: beside the window, the newest request first.

#include "app/shell/settings.h"
#include "forms/native/nativegrafik.h"

#include "data/truenumbers.h"
#include "forms/days/recordingspectrum.h"
#include "forms/native/nativeload.h"
#include "forms/native/overviewstrip.h"
#include "ui_nativegrafik.h"

#include <QProgressBar>
#include <QShortcut>
#include <QStatusBar>
#include <algorithm>

namespace {

constexpr int surroundings = 5000;   // points beside one that is looked at
constexpr double marginFactor = 1.5; // of the dispersion whose delays are kept beside a part

} // namespace

// The same part again, for another sum, replaces what is shown only once it is complete.
void NativeGrafik::request(const NativeDomain &domain, bool isRepeated)
{
    sumTimer.stop();
    asked = domain;
    isStopped = false;
    loadFailure.clear();
    escape->setEnabled(true);
    NativeRequest wanted;
    wanted.path = file.path();
    wanted.module = ui->module->value() - 1;
    wanted.ray = ui->ray->value() - 1;
    wanted.domain = domain;
    wanted.dispersion = ui->dispersion->value();
    wanted.marginDispersion = marginFactor * wanted.dispersion;
    wanted.deletesSteps = deletesSteps;
    wanted.channelsOff = channelsOff;
    wanted.isRepeated = isRepeated;
    load(wanted);
}

void NativeGrafik::load(const NativeRequest &wanted)
{
    using Picture = std::shared_ptr<const NativePicture>;
    const auto work = [wanted](const Jobs::Control &control,
                               const Jobs::Deliver<Picture> &deliver) {
        loadNative(
            wanted, [&control] { return !control.isStopped(); }, deliver);
    };
    loader.start<Picture>(work, [this](const Picture &delivered) { takePicture(delivered); });
}

void NativeGrafik::lookAt(int point)
{
    if (!grafik) // the file was refused
        return;
    if (point >= npoints) {
        Settings::instance()->ui().statusbar->showMessage(
            QString("The recording ends before point %1.").arg(point));
        return;
    }
    const double points = std::min(surroundings, npoints);
    pending = NativeRange{std::clamp(point - points / 2, 0.0, npoints - points), points};
    overview->setPart(pending->first, pending->points);
}

// What is shown stays, in as far as it was read.
void NativeGrafik::showFailure(const Jobs::Ending &ending)
{
    if (ending.kind != Jobs::Ending::Failed)
        return;
    stop();
    loadFailure = ending.problem;
    showNotes();
}

// A glance at the whole recording is made up for once nothing else is to be read.
void NativeGrafik::requestOverview()
{
    NativeRequest wanted = picture->request;
    wanted.domain = {0, npoints, false};
    wanted.isRepeated = false;
    escape->setEnabled(true);
    load(wanted);
}

void NativeGrafik::showProgress(double share)
{
    progressBar->setValue(int(100 * share));
    progressBar->show();
}

void NativeGrafik::takePicture(const std::shared_ptr<const NativePicture> &delivered)
{
    const NativeDomain &domain = delivered->request.domain;
    if (delivered->request.isRepeated && !delivered->isLast) {
        showProgress(delivered->share);
        return;
    }
    if (domain.first == 0 && domain.count == npoints) {
        whole = delivered;
        showOverview();
    }
    const bool isAsked = domain.first == asked.first && domain.count == asked.count &&
                         domain.detailed == asked.detailed;
    if (isAsked) {
        const NativeRange part = pending   ? *pending
                                 : picture ? visible()
                                           : NativeRange{0, double(npoints)};
        picture = delivered;
        means = ObservationData();
        if (delivered->isLast)
            pending.reset();
        draw(part);
        followView();
    }
    if (!delivered->isLast) {
        showProgress(delivered->share);
        return;
    }
    endLoading();
    if (isAsked && (!whole || whole->isGlance))
        requestOverview();
}

void NativeGrafik::stop()
{
    loader.stop();
    isStopped = true;
    endLoading();
    if (!picture)
        grafik->showMessage("Reading was stopped; \"Whole recording\" begins it again.");
}

void NativeGrafik::endLoading()
{
    escape->setEnabled(false); // the plot has a use for it
    progressBar->hide();
    showNotes();
}

void NativeGrafik::selectRay()
{
    whole.reset();
    request(asked);
}

void NativeGrafik::showSpectrum()
{
    const ObservationData &header = file.header();
    new RecordingSpectrum({file.path(), moduleNumber(header, ui->module->value() - 1),
                           rayNumber(header, ui->ray->value() - 1), ui->dispersion->value()},
                          this);
}
