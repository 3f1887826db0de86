// The menu of the right mouse button: what is read out, pictures and samples, to the clipboard or
// to a file.

#include "picture/plotexport.h"
#include "plot/plotlegend.h"
#include "plot/pulsargrafik.h"
#include "plot/savedialog.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QProgressDialog>

namespace {

const char tableFilter[] = "Table, comma separated (*.csv)";

} // namespace

void PulsarGrafik::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu(this);
    const bool hasCurves = !plotData.messageMode;
    const auto add = [&](const QString &text, void (PulsarGrafik::*slot)(), bool enabled) {
        QAction *const action = menu.addAction(text, this, slot);
        action->setEnabled(enabled);
    };
    add("Copy value\tCtrl+C", &PulsarGrafik::copyValue, hasCurves);
    add("Copy picture", &PulsarGrafik::copyPicture, true);
    menu.addSeparator();
    add("Save picture...", &PulsarGrafik::askAndSavePicture, hasCurves);
    add(selectedRange() ? "Save selected data..." : "Save visible data...",
        &PulsarGrafik::askAndSaveSamples, hasCurves);
    menu.addSeparator();
    const auto addSwitch = [&](const QString &text, void (PulsarGrafik::*slot)(bool), bool isOn,
                               bool enabled) {
        QAction *const action = menu.addAction(text, this, slot);
        action->setCheckable(true);
        action->setChecked(isOn);
        action->setEnabled(hasCurves && enabled);
    };
    addSwitch("Logarithmic scale\tL", &PulsarGrafik::setLogarithmic, wantsLogarithm,
              Plot::isSpectrum(plotData));
    addSwitch("Powers over the noise around\tW", &PulsarGrafik::setWhitened, wantsWhitening,
              Plot::isAmplitudeSpectrum(plotData));
    menu.addSeparator();
    add("Zoom to rectangle\tEnter", &PulsarGrafik::zoomToSelection,
        hasCurves && selectedRange().has_value());
    add("Previous view\tBackspace", &PulsarGrafik::showPrevious, hasCurves && !history.isEmpty());
    add("Show all\tHome", &PulsarGrafik::showAll, isZoomed() || hasMoreX());
    if (!actions().isEmpty()) {
        menu.addSeparator();
        menu.addActions(actions());
    }
    menu.exec(event->globalPos());
}

void PulsarGrafik::copyValue()
{
    const auto sample = Plot::nearestSample(plotData, view(), pointed);
    if (!sample)
        return;
    constexpr int floatDigits = 9;
    QApplication::clipboard()->setText(
        Plot::axisText(plotData, sample->index) + "\t" +
        QString::number(Plot::valueAt(plotData, *sample), 'g', floatDigits));
}

void PulsarGrafik::copyPicture()
{
    QApplication::clipboard()->setPixmap(grab());
}

QString PulsarGrafik::savePicture(const QString &path) const
{
    Plot::PictureContent content = {plotData, blocks, size(), zoom, shownMarks()};
    content.marks.readOut.reset();
    content.marks.hover.clear();
    content.marks.asksForNumber = false;
    content.hasLegend = true;
    if (legend->wasDragged())
        content.marks.legend = legend->pos();
    return Plot::savePicture(path, content);
}

void PulsarGrafik::askAndSavePicture()
{
    const QString path =
        Plot::askForPath(this, "Save picture", saveFolder, "plot.png", Plot::pictureFilters);
    if (!path.isEmpty())
        report(path, savePicture(path));
}

void PulsarGrafik::askAndSaveSamples()
{
    const auto selection = selectedRange();
    const QString path = Plot::askForPath(this, "Save data", saveFolder, "plot.csv", tableFilter);
    if (path.isEmpty())
        return;
    QProgressDialog progress("Writing " + QFileInfo(path).fileName(), "Cancel", 0, 100, this);
    progress.setWindowModality(Qt::WindowModal);
    const auto goOn = [&](int percent) {
        progress.setValue(percent);
        return !progress.wasCanceled();
    };
    const Plot::Range x = selection ? selection->x : view().x();
    const QString failure = Plot::saveSamples(path, plotData, Plot::wholePoints(plotData, x), goOn);
    if (!progress.wasCanceled())
        report(path, failure);
}

void PulsarGrafik::report(const QString &path, const QString &failure)
{
    if (!failure.isEmpty()) {
        QMessageBox::warning(this, "Error", failure);
        return;
    }
    saveFolder = QFileInfo(path).path();
    emit fileSaved(path);
}
