#pragma once

#include "calc/pulsar/pulsarcalculate.h"
#include "data/observationdata.h"

#include <QStringList>
#include <QWidget>
#include <memory>
#include <optional>

class LastValues;
class PulsarGrafik;
class PulsarGrafikInfo;
class QLineEdit;
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
class PulsarForm : public QWidget {
    Q_OBJECT

public:
    /// Recordings of fewer points are refused.
    static constexpr int shortestRecording = 40000;

    /// @param path    full path of a recording
    /// @param parent  the main window
    PulsarForm(const QString &path, QWidget *parent);
    ~PulsarForm() override;

public slots:
    /// Runs the chosen action on the chosen parameters. A refused action is reported in a
    /// box and leaves the picture as it was.
    void redraw();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool readRecording(const QString &path);
    void connectInputs();
    void copyCommand();
    void takeHarmonicOfPeriod();
    void compute(const QString &action, int points);
    bool runShowingProgress(PulsarCalculate &calculation, const QString &action);
    std::optional<PulsarParameters> readParameters();
    double readNumber(QLineEdit *field, const QString &name, const QString &allowed);
    void markUnreadable(QLineEdit *field, const QString &name, const QString &allowed);
    void readDispersions(PulsarParameters &parameters);
    bool readStart(PulsarParameters &parameters);
    void markFailing(QWidget *field);
    void clearMarks();
    void reportFailure(const PulsarCalculate &calculate);
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
    const QString recordingPath;
    std::unique_ptr<LastValues> lastValues;
    PulsarGrafik *grafik = nullptr;
    PulsarGrafikInfo *info = nullptr;
    ObservationData data;

    QStringList unreadableFields; // what each counts as, and what it takes
    QString readProblem;          // of a file that ends early
    std::optional<std::array<double, 4>> chosenDispersions; // by the user; none: from the DM
    bool dispersionsAreTyped = false;                       // and that in the field "Dispersion"
    QString lastDispersionText;
    int wantedPoints = 0; // 0: what the action gives

    // The last successful calculation, what it was made with, and its fields without a number.
    std::unique_ptr<PulsarCalculate> calculate;
    PulsarParameters shownParameters;
    QString shownAction;
    QStringList shownUnreadable;
    QString shownLeftOut;          // a note on the channels that are switched off
    std::optional<int> shownMulti; // index of the one result that is shown alone
};
