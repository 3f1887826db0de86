#pragma once

#include "analyses/pulses/pulsepicture.h"
#include "jobs/worker.h"

#include <QTimer>
#include <QWidget>
#include <memory>

class PulseImage;
class SmallPlot;

/// What pictures of a pulse are made of.
struct PulseRequest {
    ObservationData data;
    Pulses::PulseParameters parameters;
    Pulses::PulsePlan plan;
    Pulses::Pulse pulse;
};

/// Five linked pictures of a pulse: the bands over time as recorded and less their delays, the
/// profile, dispersion against time, S/N over dispersion with its fit, and the channels. They are
/// made beside the window, once the user stays at a pulse.
class PulseView : public QWidget {
    Q_OBJECT

public:
    explicit PulseView(QWidget *parent = nullptr);
    ~PulseView() override;

    /// A text in place of a pulse.
    void showMessage(const QString &message);
    void showPulse(const PulseRequest &wanted);
    /// The data, or what of them is left out, are others now.
    void forgetData();

signals:
    void shown(); ///< all pictures of the pulse

private:
    using Prepared = std::shared_ptr<const Pulses::PreparedRay>;
    struct Made {
        Prepared ray;
        Pulses::PulsePicture picture;
    };

    void make();
    void take(const Made &made);
    void linkPointers();

    PulseImage *const dispersed;
    PulseImage *const dedispersed;
    PulseImage *const overTime;
    SmallPlot *const channels;
    SmallPlot *const profile;
    SmallPlot *const overDispersion;
    PulseRequest request;
    Prepared prepared; // of the last pulse
    QTimer delay{this};
    Jobs::Worker maker;
};
