#pragma once

#include "calc/ffasearch.h"
#include "calc/pulsar/searchffa.h"
#include "forms/recordingform.h"

class FfaResults;
class PulsarGrafik;
namespace Ui {
class FfaForm;
}

/// The fast folding search of one recording: parameters on the left, S/N over period in the
/// middle, the candidates and the fold at the chosen period on the right. While the parameters
/// are edited, the size of the search or what is wrong with them stands below them.
///
/// Construction empties the central widget, reads the file and installs the form. A file that
/// cannot be used is reported in a box; the central widget then stays empty and the form
/// deletes itself. The same, without a box, when the user stops the reading.
class FfaForm : public RecordingForm {
    Q_OBJECT

public:
    /// @param filePath  full path of a recording
    /// @param parent  the main window
    FfaForm(const QString &filePath, QWidget *parent);
    ~FfaForm() override;

public slots:
    /// Starts a search beside the window and ends the one that runs. Parameters with problems are
    /// not searched: the first such field gets the focus. A refused or stopped search leaves the
    /// results as they were.
    void search();
    /// Makes the chosen period more precise, beside the window too, and folds there.
    void refine();

protected:
    void run() override { search(); }
    QString command() override;

private:
    static constexpr int mostCandidates = 50;

    // What a search was asked for.
    struct Searched {
        PulsarParameters parameters;
        FfaEstimate estimate;

        QString leftOut() const // empty where all channels are summed
        {
            const QString &off = parameters.channelsOff;
            return off.isEmpty() ? QString() : "channels left out: " + off;
        }
    };

    void connectInputs();
    void fillPresets();
    bool presetPeriods(const PulsarParameters &parameters, int points);
    void showEstimate();
    void showWholeFactors(const FfaParameters *ffa, int points);
    void takeOffer();
    std::vector<FieldProblem> readParameters(PulsarParameters &parameters);
    bool showProblems(const std::vector<FieldProblem> &problems);
    void takeOutcome(const std::shared_ptr<const FfaSearchOutcome> &outcome,
                     const Searched &request);
    void takeRefined(int row, double period, const FfaCandidate &candidate);
    void showResult();
    void showSpectrum(int width);
    void choosePeak(QPointF coords);
    void chooseCandidate(int row);
    void choosePeriod(double period, int bins, const QString &refined = {});
    void foldBands();
    QStringList textAt(const QPointF &coords) const;
    QStringList sourceLines() const;
    const FfaResult &result() const { return *found->result.ffa; }
    double seconds() const { return double(result().series.size()) * result().tsamp; }

    const std::unique_ptr<Ui::FfaForm> ui;
    PulsarGrafik *grafik = nullptr;
    FfaResults *results = nullptr;

    QString presetMin; // of the periods, as the form has filled them in
    QString presetMax;
    double offeredPeriod = 0; // s, a shortest one without whole factors

    // The last successful search, and what is shown of it.
    std::shared_ptr<const FfaSearchOutcome> found;
    Searched searched;
    std::vector<FfaCandidate> candidates;
    std::shared_ptr<const FfaSpectrum> spectrum;
    Jobs::Worker bandWorker; // folds of bands beside a search
    double chosenPeriod = 0; // s; 0: none
    int chosenBins = 0;
    int foldBins = 0;   // of the fold there
    QString chosenText; // the period with its error; empty where it is not refined
    int chosenRow = -1; // of the candidate there; -1: none
};
