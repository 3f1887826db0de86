#pragma once

#include "calc/ffacandidates.h"
#include "calc/ffafold.h"
#include "calc/pulsar/bandfold.h"

#include <QStringList>
#include <QWidget>
#include <memory>

class CandidatesModel;
namespace Ui {
class FfaResults;
}

/// The panel at the right of the FFA form: the candidates of a search with what noise alone
/// reaches, and the fold at the chosen period. It asks for folds; the form makes them.
class FfaResults : public QWidget {
    Q_OBJECT

public:
    explicit FfaResults(QWidget *parent = nullptr);
    ~FfaResults() override;

    /// Replaces the table, its widths and the fold.
    ///
    /// @param noise   HTML, what noise reaches, shown above the table
    /// @param source  lines that a saved table begins with
    /// @param path    where a saved table goes unless the user changes it
    void showSearch(const std::vector<FfaCandidate> &candidates, const std::vector<quint64> &widths,
                    const QString &noise, const QStringList &source, const QString &path);

    /// Replaces one candidate of the table.
    void showCandidate(int row, const FfaCandidate &candidate);

    /// Selects a candidate without choosing it again; below 0: none.
    void selectRow(int row);

    /// @param length  s, of the series
    /// @param text    HTML
    void showFold(const FfaFold &fold, double length, const QString &text);

    /// Whether the user wants phase against frequency below the profile.
    bool wantsBands() const;
    void showBands(const std::shared_ptr<const BandFold> &fold);

    /// While a search or a refinement runs no other one can be asked for.
    void setBusy(bool isBusy);

    /// Index of the width that the plot shall show; -1: the best of each period.
    int shownWidth() const;

public slots:
    void saveTable();
    /// The fold as numbers, a line per phase bin: the profile, and the bands where they are shown.
    void copyProfile();
    void saveProfile();

signals:
    /// Phase against frequency, or against time again.
    void rowsChosen();
    void candidateChosen(int row);
    void widthChosen(int index);
    void refineRequested();

private:
    void allowRefining();
    void fillTable(const std::vector<FfaCandidate> &candidates);
    void addFoldCommand(const QString &text, void (FfaResults::*run)());
    QString profileText() const;
    void saveText(const QString &path, const QString &text, const QString &what);

    const std::unique_ptr<Ui::FfaResults> ui;
    CandidatesModel *const model;
    QStringList sourceLines;
    QString savePath;
    bool hasFold = false;
    bool busy = false;
};
