#include "forms/days/fouriergrafikinfo.h"

#include "forms/days/linesmodel.h"
#include "forms/days/stacktexts.h"
#include "forms/keeplines.h"
#include "ui_fouriergrafikinfo.h"

#include <QHeaderView>
#include <QScopedValueRollback>
#include <cmath>

namespace {

constexpr int coordsLines = 6;

} // namespace

FourierGrafikInfo::FourierGrafikInfo(QWidget *parent)
    : QWidget(parent), ui(new Ui::FourierGrafikInfo), model(new LinesModel(this))
{
    ui->setupUi(this);
    ui->lines->showTable(model);
    ui->lines->verticalHeader()->hide();
    ui->lines->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    ui->lines->horizontalHeader()->setStretchLastSection(true);
    keepLines(ui->coords, coordsLines); // the panel must not move with what is pointed at
    connect(ui->lines->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
        describeLine();
        if (!isFilling && chosenLine() >= 0)
            emit lineChosen(chosenLine());
    });
    connect(ui->lines, &QTableView::clicked, this,
            [this](const QModelIndex &index) { emit lineChosen(index.row()); });
    connect(ui->leaveOut, &QPushButton::clicked, this,
            [this] { emit leaveOutWanted(chosenLine()); });
    connect(ui->interference, &QPushButton::clicked, this, &FourierGrafikInfo::interferenceWanted);
    connect(ui->saveSpectra, &QPushButton::clicked, this, &FourierGrafikInfo::spectraWanted);
    connect(ui->saveTables, &QPushButton::clicked, this, &FourierGrafikInfo::tablesWanted);
    describeLine();
}

FourierGrafikInfo::~FourierGrafikInfo() = default;

int FourierGrafikInfo::chosenLine() const
{
    const int row = ui->lines->currentIndex().row();
    return row < model->rowCount() ? row : -1;
}

void FourierGrafikInfo::setStack(const Days::FourierStack &newStack)
{
    const QScopedValueRollback<bool> filling(isFilling, true);
    const int before = chosenLine();
    const double chosen =
        before < 0 ? 0 : DayTexts::shownFrequency(model->lines()[std::size_t(before)]);
    stack = {};
    stack.days = newStack.days;
    stack.allDays = newStack.allDays;
    stack.binWidth = newStack.binWidth;
    model->setLines(newStack.lines);
    for (int row = 0; before >= 0 && row < model->rowCount(); ++row) {
        const double frequency = DayTexts::shownFrequency(model->lines()[std::size_t(row)]);
        if (std::abs(frequency - chosen) < newStack.binWidth) {
            ui->lines->setCurrentIndex(model->index(row, 0));
            break;
        }
    }
    const bool hasStack = newStack.days > 0;
    ui->saveSpectra->setEnabled(hasStack);
    ui->saveTables->setEnabled(hasStack);
    describeLine();
}

void FourierGrafikInfo::describeLine()
{
    const int row = chosenLine();
    ui->leaveOut->setEnabled(row >= 0);
    if (row < 0) {
        ui->line->setText(model->rowCount() > 0 ? "Click a line to go there"
                                                : "No line above the threshold");
        ui->growth->setGrowth({});
        return;
    }
    const Days::FourierLine &line = model->lines()[std::size_t(row)];
    ui->line->setText(DayTexts::lineText(line, stack));
    ui->growth->setGrowth(line.growth);
}

void FourierGrafikInfo::setUsed(const QString &text)
{
    ui->used->setText(text);
}

void FourierGrafikInfo::setTexts(const StackTexts &texts)
{
    ui->saveSpectra->setText(texts.saveProducts);
    model->setFfa(texts.isFfa);
}

void FourierGrafikInfo::hideButtons()
{
    for (QPushButton *const button :
         {ui->leaveOut, ui->interference, ui->saveSpectra, ui->saveTables})
        button->hide();
}

void FourierGrafikInfo::showOnlyLines()
{
    hideButtons();
    ui->growth->hide();
}

void FourierGrafikInfo::setCoords(const QString &text)
{
    ui->coords->setText(text);
}
