#include "forms/ffa/ffaresults.h"

#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "base/bytetext.h"
#include "base/numbertext.h"
#include "base/wholefile.h"
#include "forms/ffa/candidatesmodel.h"
#include "forms/savefolder.h"
#include "plot/picturemenu.h"
#include "ui_ffaresults.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QScrollBar>
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
    connect(ui->byFrequency, &QCheckBox::clicked, this, &FfaResults::rowsChosen);
    addFoldCommand("Copy profile", &FfaResults::copyProfile);
    addFoldCommand("Save profile...", &FfaResults::saveProfile);
    shareSaveFolder(new PictureMenu(ui->foldView));
}

FfaResults::~FfaResults() = default;

void FfaResults::addFoldCommand(const QString &text, void (FfaResults::*run)())
{
    auto *const command = new QAction(text, ui->foldView);
    connect(command, &QAction::triggered, this, run);
    ui->foldView->addAction(command);
}

void FfaResults::showSearch(const std::vector<FfaCandidate> &candidates,
                            const std::vector<quint64> &widths, const QString &noise,
                            const QStringList &source, const QString &path)
{
    sourceLines = source;
    savePath = path;
    ui->noiseMaximum->setText(noise);
    fillTable(candidates);
    fitTexts();

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

void FfaResults::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitTexts();
}

// What is told above the table has its height up to some lines and scrolls beyond them, so that
// rows of the table stay in sight.
void FfaResults::fitTexts()
{
    constexpr int mostLines = 7;
    constexpr int fewestLines = 3;
    constexpr int rows = 3;
    const int line = fontMetrics().lineSpacing();
    const int whole = ui->noiseMaximum->heightForWidth(width());
    ui->noiseArea->setMaximumHeight(std::min(whole, mostLines * line));
    ui->noiseArea->setMinimumHeight(std::min(whole, fewestLines * line));
    const TableView &table = *ui->candidates;
    ui->candidates->setMinimumHeight(table.horizontalHeader()->sizeHint().height() +
                                     rows * table.verticalHeader()->defaultSectionSize() +
                                     table.horizontalScrollBar()->sizeHint().height() +
                                     2 * table.frameWidth());
}

bool FfaResults::wantsBands() const
{
    return ui->byFrequency->isChecked();
}

void FfaResults::showBands(const std::shared_ptr<const BandFold> &fold)
{
    ui->foldView->showBands(fold);
}

void FfaResults::setBusy(bool isBusy)
{
    busy = isBusy;
    allowRefining();
}

void FfaResults::allowRefining()
{
    ui->refineButton->setEnabled(hasFold && !busy);
    ui->byFrequency->setEnabled(hasFold);
    for (QAction *const command : ui->foldView->actions())
        command->setEnabled(hasFold);
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
    savePath = path;
    saveText(path, model->allText(), "table");
}

QString FfaResults::profileText() const
{
    const FfaFold &fold = ui->foldView->fold();
    const std::shared_ptr<const BandFold> bands = ui->foldView->bands();
    QString text = "phase\tmean, sigma";
    for (int band = 0; bands && band < bands->bands(); ++band)
        text += QString("\t%1 MHz, sigma of the band")
                    .arg(bands->frequencies[std::size_t(band)], 0, 'g', 7);
    text += '\n';
    const int bins = int(fold.profile.size());
    for (int bin = 0; bin < bins; ++bin) {
        text += QString::number((bin + 0.5) / bins, 'f', 5) + '\t' +
                QString::number(fold.profile[std::size_t(bin)], 'g', 7);
        for (int band = 0; bands && band < bands->bands(); ++band)
            text += '\t' + QString::number(double(bands->profile(band)[std::size_t(bin)]), 'g', 7);
        text += '\n';
    }
    return text;
}

void FfaResults::copyProfile()
{
    QApplication::clipboard()->setText(profileText());
}

void FfaResults::saveProfile()
{
    const QFileInfo table(savePath);
    const QString path = QFileDialog::getSaveFileName(
        this, "Saving file", table.dir().filePath(table.completeBaseName() + "_fold.txt"),
        "Text files (*.txt);;All files (*)");
    if (!path.isEmpty())
        saveText(path,
                 "# period: " + exactText(ui->foldView->fold().period) + " s\n" + profileText(),
                 "profile");
}

// With what explains it above.
void FfaResults::saveText(const QString &path, const QString &text, const QString &what)
{
    Settings::instance()->setLastSavePath(directoryOf(path));
    QString all;
    for (const QString &line : std::as_const(sourceLines))
        all += "# " + line + "\n";
    if (const WriteFailure failure = writeWhole(path, bytesOfText(all + text)))
        showError(this, "The " + what + " cannot be saved.",
                  failure.text() + "\nChoose another folder or free some room.");
    else
        StatusLine::showSaved(path);
}
