#include "forms/ffa/ffaresults.h"

#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/settings.h"
#include "base/bytetext.h"
#include "base/wholefile.h"
#include "forms/ffa/candidatesmodel.h"
#include "forms/savefolder.h"
#include "plot/picturemenu.h"
#include "ui_ffaresults.h"

#include <QFileDialog>
#include <QItemSelectionModel>
#include <QSignalBlocker>

FfaResults::FfaResults(QWidget *parent)
    : QWidget(parent), ui(new Ui::FfaResults), model(new CandidatesModel(this))
{
    ui->setupUi(this);
    ui->candidates->showSorted(model);
    connect(ui->candidates->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &current) {
                if (current.isValid())
                    emit candidateChosen(ui->candidates->tableRow(current));
            });
    connect(ui->candidates, &QTableView::clicked, this, [this](const QModelIndex &clicked) {
        emit candidateChosen(ui->candidates->tableRow(clicked));
    });
    connect(ui->widthChoice, QOverload<int>::of(&QComboBox::activated), this,
            [this] { emit widthChosen(shownWidth()); });
    connect(ui->copyButton, &QPushButton::clicked, ui->candidates, &TableView::copy);
    connect(ui->saveButton, &QPushButton::clicked, this, &FfaResults::saveTable);
    connect(ui->refineButton, &QPushButton::clicked, this, &FfaResults::refineRequested);
    shareSaveFolder(new PictureMenu(ui->foldView));
}

FfaResults::~FfaResults() = default;

void FfaResults::showSearch(const std::vector<FfaCandidate> &candidates,
                            const std::vector<quint64> &widths, const QString &noise,
                            const QStringList &source, const QString &path)
{
    sourceLines = source;
    savePath = path;
    ui->noiseMaximum->setText(noise);
    fillTable(candidates);

    const int before = shownWidth();
    ui->widthChoice->clear();
    ui->widthChoice->addItem("best width");
    for (const quint64 width : widths)
        ui->widthChoice->addItem(QString("%1 bins").arg(width));
    ui->widthChoice->setCurrentIndex(before + 1 < ui->widthChoice->count() ? before + 1 : 0);

    ui->foldText->setText("Click a peak of the plot or a row of the table to fold");
    ui->foldView->clear();
    hasFold = false;
    allowRefining();
    ui->copyButton->setEnabled(!candidates.empty());
    ui->saveButton->setEnabled(true);
}

void FfaResults::fillTable(const std::vector<FfaCandidate> &candidates)
{
    model->setCandidates(candidates);
    ui->candidates->resizeColumnsToContents();
    ui->candidates->scrollToTop();
}

void FfaResults::showCandidate(int row, const FfaCandidate &candidate)
{
    model->setCandidate(row, candidate);
    ui->candidates->resizeColumnsToContents();
}

void FfaResults::selectRow(int row)
{
    QItemSelectionModel *const selection = ui->candidates->selectionModel();
    const QSignalBlocker blocker(this); // nothing is chosen
    if (row < 0)
        return selection->clearSelection();
    ui->candidates->setCurrentIndex(ui->candidates->shownIndex(row));
    ui->candidates->selectRow(ui->candidates->shownIndex(row).row());
}

void FfaResults::showFold(const FfaFold &fold, double length, const QString &text)
{
    ui->foldText->setText(text);
    ui->foldView->showFold(fold, length);
    hasFold = true;
    allowRefining();
}

void FfaResults::setBusy(bool isBusy)
{
    busy = isBusy;
    allowRefining();
}

void FfaResults::allowRefining()
{
    ui->refineButton->setEnabled(hasFold && !busy);
}

int FfaResults::shownWidth() const
{
    return std::max(ui->widthChoice->currentIndex(), 0) - 1;
}

void FfaResults::saveTable()
{
    const QString path = QFileDialog::getSaveFileName(this, "Saving file", savePath,
                                                      "Text files (*.txt);;All files (*)");
    if (path.isEmpty())
        return;
    Settings::instance()->setLastSavePath(directoryOf(path));
    savePath = path;
    QString text;
    for (const QString &line : std::as_const(sourceLines))
        text += "# " + line + "\n";
    text += model->allText();
    if (const WriteFailure failure = writeWhole(path, bytesOfText(text)))
        showError(this, "The table cannot be saved.",
                  failure.text() + "\nChoose another folder or free some room.");
}
