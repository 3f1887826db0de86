#pragma once

#include "calc/ffacandidates.h"
#include "calc/pulsarcalculate.h"
#include "data/observationdata.h"

#include <QWidget>
#include <memory>
#include <vector>

class FfaResults;
class LastValues;
class PulsarGrafik;
class QLineEdit;
class QProgressBar;
namespace Ui {
class FfaForm;
}

/// The fast folding search of one recording: parameters on the left, S/N over period in the
/// middle, the candidates and the fold at the chosen period on the right. While the parameters
/// are edited, the size of the search or what is wrong with them stands beside them.
///
/// Construction empties the central widget, reads the file and installs the form. A file that
/// cannot be used is reported in a box; the central widget then stays empty and the form
/// deletes itself. The same, without a box, when the user stops the reading.
class FfaForm : public QWidget {
    Q_OBJECT

public:
    /// @param path    full path of a recording
    /// @param parent  the main window
    FfaForm(const QString &path, QWidget *parent);
    ~FfaForm() override;

public slots:
    /// Runs the search. Parameters with problems are not searched: the first such field gets
    /// the focus. A refused or cancelled search leaves the results as they were.
    void search();
    /// Makes the chosen period more precise and folds there.
    void refine();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    static constexpr int mostCandidates = 50;

    void connectInputs();
    void copyCommand();
    void fillPresets();
    void showEstimate();
    void showWholeFactors(const FfaParameters *ffa, int points);
    void takeOffer();
    PulsarParameters readParameters(std::vector<FfaProblem> &problems);
    double readNumber(QLineEdit *field, std::vector<FfaProblem> &problems);
    int readCount(QLineEdit *field, std::vector<FfaProblem> &problems);
    std::vector<FfaProblem> findProblems(PulsarParameters &parameters);
    void showProblems(const std::vector<FfaProblem> &problems);
    void focusField(const QString &name);
    template <typename Work>
    void runShowingProgress(const Work &work);
    bool showPercent(int percent);
    void showResult();
    void showSpectrum(int width);
    void choosePeak(QPointF coords);
    void chooseCandidate(int row);
    void choosePeriod(double period, int bins, const QString &refined = {});
    std::vector<int> markers() const;
    QStringList sourceLines() const;
    const FfaResult &result() const { return *calculate->result().ffa; }
    double seconds() const { return double(result().series.size()) * result().tsamp; }

    const std::unique_ptr<Ui::FfaForm> ui;
    std::unique_ptr<LastValues> lastValues;
    QProgressBar *progressBar = nullptr;
    PulsarGrafik *grafik = nullptr;
    FfaResults *results = nullptr;
    const QString recordingPath;
    ObservationData data;
    QString readProblem; // of a file that ends early

    double offeredPeriod = 0; // s, a shortest one without whole factors
    bool running = false;
    bool cancelled = false;

    // The last successful search, and what is shown of it.
    std::unique_ptr<PulsarCalculate> calculate;
    PulsarParameters searched;
    QString leftOut;      // a note on the channels that are switched off
    FfaEstimate estimate; // of it
    std::vector<FfaCandidate> candidates;
    std::shared_ptr<const FfaSpectrum> spectrum;
    double chosenPeriod = 0; // s; 0: none
    int chosenBins = 0;
    int chosenRow = -1; // of the candidate there; -1: none
};
