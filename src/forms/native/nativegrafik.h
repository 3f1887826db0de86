#pragma once

#include "data/recordingfile.h"
#include "forms/fileform.h"
#include "forms/native/nativecurves.h"

#include <QTimer>

class NativeInfo;
class NativeLoader;
class NativeView;
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
class NativeGrafik : public FileForm {
    Q_OBJECT

public:
    /// @param filePath     full path of a recording
    /// @param withoutStep  0: jumps of the level are taken out of every channel and marked;
    ///                     1: the samples are shown as recorded
    /// @param parent       the main window
    NativeGrafik(const QString &filePath, int withoutStep, QWidget *parent);
    ~NativeGrafik() override;

    /// Shows the surroundings of a point as soon as they are read; of a point beyond the recording
    /// nothing but a line in the status bar.
    void lookAt(int point);

protected:
    void endWork(const Jobs::Ending &ending) override;

private:
    std::optional<Refusal> read();
    void fillPassport();
    void offerChoices();
    void connectChoices();
    void connectWaterfall();
    void connectPictures();
    NativeChoice choice() const;

    void setDispersion(double dispersion);
    void changeDispersion();
    void toggleChannel(int channel);
    void changeSwitches(const std::vector<bool> &off);

    void request(const NativeDomain &domain, bool isRepeated = false);
    void takePicture();
    void draw();
    void follow();
    void showPart(const NativeRange &part);
    void showStatistics();
    void showNotes();
    void saveSelection();
    void showSpectrum();

    const std::unique_ptr<Ui::NativeGrafik> ui;
    const bool deletesSteps;
    RecordingFile file;
    std::vector<bool> channelsOff;
    NativeLoader *loader = nullptr;
    NativeView *view = nullptr;
    NativeInfo *info = nullptr;
    std::optional<NativeRange> pending; // to be shown once it is there

    QTimer drawTimer{this};
    QTimer statisticsTimer{this};
    QTimer sumTimer{this}; // reads again for a sum at another dispersion
};
