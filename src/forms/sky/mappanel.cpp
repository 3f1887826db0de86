#include "forms/sky/mappanel.h"

#include "forms/days/linesmodel.h"
#include "forms/keeplines.h"
#include "ui_mappanel.h"

#include <QHeaderView>

namespace {

constexpr int coordsLines = 7;

} // namespace

MapPanel::MapPanel(bool isFfa, QWidget *parent)
    : QWidget(parent), ui(new Ui::MapPanel), model(new LinesModel(this))
{
    ui->setupUi(this);
    model->setFfa(isFfa);
    ui->lines->showTable(model);
    ui->lines->setColumnHidden(LinesModel::Marks, true);
    ui->lines->setColumnHidden(LinesModel::Frequency, isFfa); // the axis is that of periods
    ui->lines->verticalHeader()->hide();
    ui->lines->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    ui->lines->horizontalHeader()->setStretchLastSection(true);
    keepLines(ui->coords, coordsLines); // the panel must not move with what is pointed at
    connect(ui->lines->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &row) {
                if (row.isValid())
                    emit lineChosen(model->lines()[std::size_t(row.row())].bin);
            });
    connect(ui->openDays, &QPushButton::clicked, this, &MapPanel::daysWanted);
    connect(ui->saveMap, &QPushButton::clicked, this, &MapPanel::mapWanted);
    connect(ui->savePicture, &QPushButton::clicked, this, &MapPanel::pictureWanted);
    setCell("Click a cell of the map", {});
}

MapPanel::~MapPanel() = default;

void MapPanel::setCoords(const QString &text)
{
    ui->coords->setText(text);
}

void MapPanel::setUsed(const QString &text)
{
    ui->used->setText(text);
}

void MapPanel::setCell(const QString &text, const std::vector<Days::FourierLine> &lines)
{
    ui->cell->setText(text);
    model->setLines(lines);
    ui->openDays->setEnabled(!lines.empty() || text.contains('\n'));
}

void MapPanel::setCanSave(bool canSave)
{
    ui->saveMap->setEnabled(canSave);
    ui->savePicture->setEnabled(canSave);
}
