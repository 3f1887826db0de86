#include "forms/ffa/ffaresults.h"

#include "app/shell/directoryof.h"
#include "app/shell/errorbox.h"
#include "app/shell/settings.h"
#include "base/bytetext.h"
#include "base/wholefile.h"
#include "forms/savefolder.h"
#include "plot/picturemenu.h"
#include "ui_ffaresults.h"

#include <QClipboard>
#include <QFileDialog>
#include <QKeyEvent>
#include <QSignalBlocker>

namespace {

const int remarkColumn = Results::shownTitles().indexOf("remark");

} // namespace

FfaResults::FfaResults(QWidget *parent) : QWidget(parent), ui(new Ui::FfaResults)
{
    ui->setupUi(this);
    const QStringList titles = Results::shownTitles();
    ui->candidates->setColumnCount(titles.size());
    ui->candidates->setHorizontalHeaderLabels(QStringList(titles).replaceInStrings(", ", "\n"));
    const QFontMetrics metrics = fontMetrics();
    ui->candidates->verticalHeader()->setDefaultSectionSize(metrics.height() + 4);
    connect(ui->candidates, &QTableWidget::currentCellChanged, this,
            [this](int row, int, int before, int) {
                if (row >= 0 && row != before)
                    emit candidateChosen(row);
            });
    connect(ui->candidates, &QTableWidget::cellClicked, this, &FfaResults::candidateChosen);
    connect(ui->widthChoice, QOverload<int>::of(&QComboBox::activated), this,
            [this] { emit widthChosen(shownWidth()); });
    connect(ui->copyButton, &QPushButton::clicked, this, &FfaResults::copyTable);
    connect(ui->saveButton, &QPushButton::clicked, this, &FfaResults::saveTable);
    connect(ui->refineButton, &QPushButton::clicked, this, &FfaResults::refineRequested);
    ui->candidates->installEventFilter(this);
    shareSaveFolder(new PictureMenu(ui->foldView));
}

FfaResults::~FfaResults() = default;

// The table itself would copy one cell.
bool FfaResults::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress ||
        !static_cast<QKeyEvent *>(event)->matches(QKeySequence::Copy))
        return QWidget::eventFilter(watched, event);
    copyTable();
    return true;
}

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
    const QSignalBlocker blocker(ui->candidates);
    ui->candidates->clearSelection();
    ui->candidates->setCurrentCell(-1, -1);
    ui->candidates->setRowCount(int(candidates.size()));
    for (int row = 0; row < int(candidates.size()); ++row)
        setRow(row, candidates[std::size_t(row)]);
    ui->candidates->resizeColumnsToContents();
    ui->candidates->scrollToTop();
}

void FfaResults::showCandidate(int row, const FfaCandidate &candidate)
{
    setRow(row, candidate);
    ui->candidates->resizeColumnsToContents();
}

void FfaResults::setRow(int row, const FfaCandidate &candidate)
{
    const QStringList fields = Results::shownFields(Tools::tableCandidate(candidate), row + 1);
    for (int column = 0; column < fields.size(); ++column) {
        auto *const item = new QTableWidgetItem(fields[column]);
        const bool isNumber = column != remarkColumn;
        item->setTextAlignment(int((isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter));
        ui->candidates->setItem(row, column, item);
    }
}

void FfaResults::selectRow(int row)
{
    const QSignalBlocker blocker(ui->candidates);
    if (row >= 0)
        ui->candidates->selectRow(row);
    else
        ui->candidates->clearSelection();
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

QString FfaResults::tableText(bool onlySelected) const
{
    QString text = Results::shownTitles().join('\t') + "\n";
    const bool all = !onlySelected || ui->candidates->selectedItems().isEmpty();
    for (int row = 0; row < ui->candidates->rowCount(); ++row) {
        if (!all && !ui->candidates->item(row, 0)->isSelected())
            continue;
        QStringList fields;
        for (int column = 0; column < ui->candidates->columnCount(); ++column)
            fields << ui->candidates->item(row, column)->text();
        text += fields.join('\t') + "\n";
    }
    return text;
}

void FfaResults::copyTable() const
{
    QApplication::clipboard()->setText(tableText(true));
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
    text += tableText(false);
    if (const WriteFailure failure = writeWhole(path, bytesOfText(text)))
        showError(this, "The table cannot be saved.",
                  failure.text() + "\nChoose another folder or free some room.");
}
