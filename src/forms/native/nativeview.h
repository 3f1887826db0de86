#pragma once

#include "data/recordingfile.h"
#include "forms/native/nativecurves.h"

#include <QPointF>
#include <QWidget>

class OverviewStrip;
class PulsarGrafik;
class WaterfallView;

/// The pictures of the viewer, one above the other: time against frequency, the plot, and the
/// whole recording with a frame around what is in sight.
class NativeView : public QWidget {
    Q_OBJECT

public:
    /// @param recording  is open and outlives the view
    explicit NativeView(const RecordingFile &recording, QWidget *parent = nullptr);

    using Picture = std::shared_ptr<const NativePicture>;

    void showMessage(const QString &message);
    /// Draws a picture so that this part of the recording is in sight.
    void draw(const Picture &picture, const NativeChoice &choice, const NativeRange &part);
    /// Draws one row of the whole recording in the strip.
    void drawWhole(const NativePicture &whole, const NativeChoice &choice);

    /// The part in sight.
    NativeRange visible() const;
    /// The selected points, or else those in sight.
    struct Part {
        NativeRange range;
        bool isSelected = false;
    };
    Part shownPart() const;
    const NativeCurves &curves() const { return drawn; }

    /// Brings a part of the drawn picture into sight.
    void goTo(const NativeRange &part);
    /// Frames a part that is not there yet.
    void frame(const NativeRange &part);
    /// Fits Y to what is in sight.
    void fitHeight();
    /// What is in sight becomes a step to go back to.
    void noteView();

    WaterfallView *timeAndFrequency() const { return waterfall; }

signals:
    /// The user has brought another part into sight.
    void viewChanged();
    void selectionChanged();
    /// The user wants a part that may reach beyond the drawn one.
    void partWanted(const NativeRange &part);
    /// The pointer stands on a point; what to tell of it.
    void pointed(const QString &text);

private:
    void connectPictures();
    void followView();
    void drawCurves(const NativeRange &part);
    void drawWaterfall();

    const RecordingFile &file;
    PulsarGrafik *plot = nullptr;
    WaterfallView *waterfall = nullptr;
    OverviewStrip *overview = nullptr;

    Picture picture;
    NativeChoice chosen;
    ObservationData means; // of a picture without its samples
    NativeCurves drawn;    // without its curves: the plot has them
    bool isSettingData = false;
};
