#pragma once

#include "forms/sky/celldays.h"
#include "forms/sky/skycandidatesmodel.h"
#include "forms/sky/skypage.h"

#include <QTimer>
#include <functional>

class GrowthView;
class MapView;
class PulsarGrafik;
class QLabel;
class QLayout;
class QSplitter;
class SmallPlot;
class TableView;

/// What a search gives.
struct SearchFound {
    QByteArray table; ///< as it is written
    std::vector<Sky::SkyCandidate> candidates;
    QString path; ///< where it is kept
    QStringList remarks;
};

/// What takes time of a candidate, in the order in which it comes.
struct CandidateDetails {
    int row = 0;
    std::shared_ptr<const Sky::SkyMap> map;
    std::vector<double> overDispersion; ///< sigma over the dispersions of the plan
    bool hasDays = false;
    std::vector<Days::GrowthPoint> growth;
    std::vector<DayProfile> profiles;
};

/// The candidates of a search: their table, and of the chosen one its stack, its place on the map,
/// its significance against dispersion and days, and its folded profile. Verdicts and notes are
/// written at once beside the stacks, and shown again when the directory is opened anew.
class SearchPage : public SkyPage {
    Q_OBJECT

public:
    SearchPage(const Sky::SkyAnalysis &skyAnalysis, const QString &path, Jobs::Worker &jobs,
               QWidget *form);
    ~SearchPage() override;

    QWidget *view() const override;

protected:
    void showMessage(const QString &message) override;
    void showStacks() override;
    void planChanged() override;

private:
    QWidget *makeTable();
    QWidget *makeButtons();
    QWidget *makeDetails();
    void addButton(QLayout *layout, const QString &text, const QString &toolTip,
                   const QKeySequence &key, const std::function<void()> &action);
    void takeFound(const SearchFound &found);
    void showTable(Sky::CandidatesTable next, const QString &kept);
    void restoreTable();
    void saveTable();
    void saveTableAs();
    int chosenRow() const;
    void step(int way);
    void decide(Sky::Verdict verdict);
    void writeNote();
    void showCandidate();
    void clearDetails(const QString &message);
    void readDetails();
    void takeDetails(const CandidateDetails &details);

    QSplitter *const splitter;
    SkyCandidatesModel *const model;
    TableView *table = nullptr;
    QLabel *told = nullptr;
    PulsarGrafik *grafik = nullptr;
    MapView *map = nullptr;
    SmallPlot *overDispersion = nullptr;
    GrowthView *overDays = nullptr;
    SmallPlot *profile = nullptr;
    std::vector<QWidget *> needRow; // switched off without a candidate
    QString keptPath;               // of the table that is shown; empty: it was not written
    bool hasStacks = false;         // of the candidates that are shown
    bool wasRestored = false;       // what an earlier run left was looked for
    QTimer detailsTimer{this};      // until the user stays at a row
    Jobs::Worker searcher;
    Jobs::Worker reader; // of details
};
