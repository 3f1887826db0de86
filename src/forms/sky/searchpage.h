#pragma once

#include "forms/sky/searchjobs.h"
#include "forms/sky/skycandidatesmodel.h"
#include "forms/sky/skypage.h"

class CandidateView;
class PulsarGrafik;
class QLabel;
class QSplitter;
class TableView;
class VerdictBar;

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

    QSplitter *const splitter;
    SkyCandidatesModel *const model;
    TableView *table = nullptr;
    QLabel *told = nullptr;
    PulsarGrafik *grafik = nullptr;
    CandidateView *details = nullptr;
    VerdictBar *buttons = nullptr;
    QString keptPath;         // of the table that is shown; empty: it was not written
    bool hasStacks = false;   // of the candidates that are shown
    bool wasRestored = false; // what an earlier run left was looked for
    Jobs::Worker searcher;
};
