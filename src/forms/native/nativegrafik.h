#pragma once

#include "data/recordingfile.h"
#include "forms/native/nativecurves.h"
#include "jobs/worker.h"
#include "plot/pulsargrafik.h"

#include <QTimer>
#include <QWidget>
#include <memory>
#include <optional>

class LastValues;
class NativeInfo;
class OverviewStrip;
class QProgressBar;
class QShortcut;
class WaterfallView;
namespace Ui {
class NativeGrafik;
}

/// The viewer of native data: the passport and the choice of what to show on the left, the plot
/// with the whole recording in a strip below it in the middle, statistics and bandpass on the
/// right. Opens recordings of any length; of one that is too long to be kept, the part in sight
/// is read as soon as it is looked at.
///
/// Construction empties the central widget, reads the passport and installs the form; samples
/// come while the window lives. A file that cannot be used is reported in a box; the central
/// widget then stays empty and the form deletes itself.
class NativeGrafik : public QWidget {
    Q_OBJECT

public:
    /// @param path         full path of a recording
    /// @param withoutStep  0: jumps of the level are taken out of every channel and marked;
    ///                     1: the samples are shown as recorded
    /// @param parent       the main window
    NativeGrafik(const QString &path, int withoutStep, QWidget *parent);
    ~NativeGrafik() override;

    /// Shows the surroundings of a point as soon as they are read; of a point beyond the recording
    /// nothing but a line in the status bar.
    void lookAt(int point);

private:
    bool openRecording(const QString &path);
    QWidget *makeMiddle();
    void fillPassport();
    void connectInputs();
    void connectWaterfall();
    void setDispersion(double dispersion);
    NativeChoice choice() const;

    void request(const NativeDomain &domain, bool isRepeated = false);
    void requestOverview();
    void load(const NativeRequest &wanted);
    void showFailure(const Jobs::Ending &ending);
    void takePicture(const std::shared_ptr<const NativePicture> &delivered);
    void showOverview();
    void showProgress(double share);
    void stop();
    void endLoading();

    void selectRay();
    void changeDispersion();
    void changeSwitches(const std::vector<bool> &off);
    void toggleChannel(int channel);
    void draw();
    void draw(const NativeRange &part);
    void drawCurves(const NativeRange &part);
    void drawWaterfall();
    void fitHeight();
    void showStatistics();
    void showBandpass();
    void showNotes();

    NativeRange visible() const;
    NativeRange shownPart(bool &isSelected) const;
    void followView();
    void showPoints(double first, double points);
    void showCoords(QPointF coords);
    void showWaterfallCoords(double point, int band, float value);
    void saveSelection();
    void showSpectrum();

    const std::unique_ptr<Ui::NativeGrafik> ui;
    const bool deletesSteps;
    std::unique_ptr<LastValues> lastValues;
    QProgressBar *progressBar = nullptr;
    PulsarGrafik *grafik = nullptr;
    WaterfallView *waterfall = nullptr;
    OverviewStrip *overview = nullptr;
    NativeInfo *info = nullptr;

    RecordingFile file;
    int npoints = 0; // that the file holds whole
    std::vector<bool> channelsOff;

    Jobs::Worker loader;
    QShortcut *escape = nullptr;                  // stops the reading
    NativeDomain asked;                           // the newest request
    std::optional<NativeRange> pending;           // to be shown once it is there
    std::shared_ptr<const NativePicture> picture; // what is shown
    std::shared_ptr<const NativePicture> whole;   // of the whole recording, for the strip
    ObservationData means;                        // of a picture without its samples
    NativeCurves drawn;                           // without its curves: the plot has them
    bool isSettingData = false;
    bool isStopped = false; // by the user; goes on with the next request
    QString loadFailure;    // of the newest request

    QTimer drawTimer{this};
    QTimer statisticsTimer{this};
    QTimer sumTimer{this}; // reads again for a sum at another dispersion
};
