#pragma once

#include "calc/pulsar/pulsarresult.h"
#include "forms/recordingform.h"

class BandView;
class PulsarGrafik;
class PulsarGrafikInfo;
namespace Ui {
class PulsarForm;
}

/// The analysis of one long recording: the parameters on the left, the plot in the middle,
/// the information panel on the right. Choosing an action, a start mode or a noise method
/// computes at once.
///
/// Construction empties the central widget, reads the file and installs the form. A file
/// that cannot be used is reported in a box; the central widget then stays empty and the
/// form deletes itself. The same, without a box, when the user stops the reading.
class PulsarForm : public RecordingForm {
    Q_OBJECT

public:
    /// Recordings of fewer points are refused.
    static constexpr int shortestRecording = 40000;

    /// @param filePath  full path of a recording
    /// @param parent  the main window
    PulsarForm(const QString &filePath, QWidget *parent);
    ~PulsarForm() override;

public slots:
    /// Runs the chosen action on the chosen parameters. A refused action is reported in a
    /// box and leaves the picture as it was.
    void redraw();

protected:
    void run() override { redraw(); }
    QString command() override;

private:
    /// What was computed last, and on what.
    struct Shown {
        PulsarResult result;
        PulsarParameters parameters;
        QString action;
        QStringList unread; ///< fields without a number
    };

    QStringList fitPresets();
    void connectInputs();
    void takeHarmonicOfPeriod();
    void compute(const QString &action, int points);
    QString chosenAction();
    std::optional<PulsarParameters> readParameters(std::vector<FieldProblem> &problems);
    void readDispersions(PulsarParameters &parameters);
    void readStart(PulsarParameters &parameters, std::vector<FieldProblem> &problems);
    QWidget *startField() const;
    QStringList unreadTexts();
    void changeDispersions(const QVector<double> &dispersions);
    void changePoints(int points);
    void showResult();
    void showMultiResult(int index);
    void showCurves(const std::vector<std::vector<float>> &curves, const QStringList &names,
                    int firstColour);
    QStringList computedOnLines() const;
    void showTexts(const Results::Report &report, const QStringList &names, int firstColour);
    void followLink(const QUrl &link);

    const std::unique_ptr<Ui::PulsarForm> ui;
    BandView *bands = nullptr;
    PulsarGrafik *grafik = nullptr;
    PulsarGrafikInfo *info = nullptr;

    std::optional<std::array<double, 4>> chosenDispersions; // by the user; none: from the DM
    bool dispersionsAreTyped = false;                       // and that in the field "Dispersion"
    QString lastDispersionText;
    int wantedPoints = 0; // 0: what the action gives

    std::optional<Shown> shown;
    std::optional<int> shownMulti; // index of the one result that is shown alone
};
