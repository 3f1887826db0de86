#pragma once

#include "calc/ffasearch.h"
#include "calc/pulsar/searchffa.h"
#include "jobs/worker.h"

#include <QWidget>
#include <memory>
#include <vector>

class FfaResults;
class JobProgress;
class LastValues;
class PulsarGrafik;
class QLineEdit;
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
    /// Starts a search beside the window and ends the one that runs. Parameters with problems are
    /// not searched: the first such field gets the focus. A refused or stopped search leaves the
    /// results as they were.
    void search();
    /// Makes the chosen period more precise, beside the window too, and folds there.
    void refine();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    static constexpr int mostCandidates = 50;

    // What a search was asked for.
    struct Searched {
        PulsarParameters parameters;
        QString leftOut; // a note on the channels that are switched off
        FfaEstimate estimate;
    };

    void connectInputs();
    void copyCommand();
    void fillPresets();
    void showEstimate();
    void showWholeFactors(const FfaParameters *ffa, int points);
    void takeOffer();
    PulsarParameters readParameters(std::vector<FieldProblem> &problems);
    double readNumber(QLineEdit *field, std::vector<FieldProblem> &problems);
    int readCount(QLineEdit *field, std::vector<FieldProblem> &problems);
    std::vector<FieldProblem> findProblems(PulsarParameters &parameters);
    void showProblems(const std::vector<FieldProblem> &problems);
    void focusField(const QString &name);
    void takeOutcome(const std::shared_ptr<const FfaSearchOutcome> &outcome,
                     const Searched &request);
    void takeRefined(int row, double period, const FfaCandidate &candidate);
    void showResult();
    void showSpectrum(int width);
    void choosePeak(QPointF coords);
    void chooseCandidate(int row);
    void choosePeriod(double period, int bins, const QString &refined = {});
    void setMarkers(struct PlotData &plot) const;
    QStringList textAt(const QPointF &coords) const;
    QStringList sourceLines() const;
    const FfaResult &result() const { return *found->result.ffa; }
    double seconds() const { return double(result().series.size()) * result().tsamp; }

    const std::unique_ptr<Ui::FfaForm> ui;
    std::unique_ptr<LastValues> lastValues;
    PulsarGrafik *grafik = nullptr;
    FfaResults *results = nullptr;
    const QString recordingPath;
    ObservationData data;
    QString readProblem; // of a file that ends early

    double offeredPeriod = 0; // s, a shortest one without whole factors

    // The last successful search, and what is shown of it.
    std::shared_ptr<const FfaSearchOutcome> found;
    Searched searched;
    std::vector<FfaCandidate> candidates;
    std::shared_ptr<const FfaSpectrum> spectrum;
    double chosenPeriod = 0; // s; 0: none
    int chosenBins = 0;
    int chosenRow = -1; // of the candidate there; -1: none

    Jobs::Worker worker; // of searches and refinements
    std::unique_ptr<JobProgress> progress;
};
