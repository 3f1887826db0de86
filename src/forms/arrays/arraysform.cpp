#include "forms/arrays/arraysform.h"

#include "fields/tableview.h"
#include "forms/arrays/arrayreading.h"
#include "forms/arrays/arraysinfo.h"
#include "forms/arrays/cellsmodel.h"
#include "forms/arrays/greyview.h"
#include "forms/savefolder.h"
#include "plot/picturemenu.h"
#include "plot/pulsargrafik.h"
#include "ui_arraysform.h"

#include <QSignalBlocker>
#include <QStackedWidget>

namespace {

constexpr int mostCurves = 10000; // in the list
constexpr int mostDrawn = 100;    // at once
constexpr int drawnAtFirst = 10;

} // namespace

ArraysForm::ArraysForm(const QString &filePath, QWidget *parent)
    : FileForm(filePath, parent), ui(new Ui::ArraysForm)
{
    ui->setupUi(this);
    if (!open([this] { return read(); }))
        return;
    stack = new QStackedWidget(this);
    grafik = new PulsarGrafik;
    greys = new GreyView;
    shareSaveFolder(grafik);
    shareSaveFolder(new PictureMenu(greys));
    info = new ArraysInfo(grafik, this);
    grafik->setObjectName("grafik");
    greys->setObjectName("picture");
    greys->setTable(&file.table);
    cells = new TableView;
    cells->setAlternatingRowColors(true);
    cells->setWordWrap(false);
    cells->setTabKeyNavigation(false);
    cells->showTable(new CellsModel(file, cells));
    cells->resizeColumnsToContents();
    cells->setObjectName("cells");
    stack->addWidget(grafik);
    stack->addWidget(greys);
    stack->addWidget(cells);
    offerWhatThereIs();
    install(stack, info);
    connectInputs();
    if (ui->showTable->isChecked()) {
        showTable();
        cells->setFocus();
    } else {
        fillCurveList();
        ui->curves->setFocus();
    }
}

ArraysForm::~ArraysForm() = default;

std::optional<FileForm::Refusal> ArraysForm::read()
{
    constexpr int toldRemarks = 3;
    file = ArrayReading::readShowingProgress(path);
    if (file.wasCancelled)
        return Refusal();
    if (file.error.isEmpty())
        return std::nullopt;
    return Refusal{"Bad file!\nFile without numbers",
                   file.error + "\n" + file.remarks.mid(0, toldRemarks).join("\n")};
}

void ArraysForm::offerWhatThereIs()
{
    const NumberTable &table = file.table;
    const bool isEven = table.count() == table.rows() * table.columns();
    const bool hasWords = !file.textColumns.empty();
    ui->size->setText(hasWords
                          ? QString("%1 rows, %2 columns").arg(table.rows()).arg(table.columns())
                      : isEven ? QString("%1 x %2 numbers").arg(table.rows()).arg(table.columns())
                               : QString("%1 lines of up to %2 numbers, %3 in all")
                                     .arg(table.rows())
                                     .arg(table.columns())
                                     .arg(table.count()));
    const auto refuse = [](QWidget *choice, const QString &why) {
        choice->setEnabled(false);
        choice->setToolTip(why);
    };
    if (hasWords)
        refuse(ui->showRows, "Not with columns of words");
    else if (table.rows() > mostCurves)
        refuse(ui->showRows, QString("Only up to %1 lines").arg(mostCurves));
    if (Results::curveColumns(file, -1).empty())
        refuse(ui->showColumns, "Only with a column of numbers");
    else if (table.columns() > mostCurves)
        refuse(ui->showColumns, QString("Only up to %1 columns").arg(mostCurves));
    if (hasWords)
        refuse(ui->showPicture, "Not with columns of words");
    else if (table.columns() < 2 || table.rows() < 2)
        refuse(ui->showPicture, "Only of several lines with several numbers");
    const bool byRows =
        ui->showRows->isEnabled() && (file.rowsAreSeries || !ui->showColumns->isEnabled());
    (hasWords ? ui->showTable : byRows ? ui->showRows : ui->showColumns)->setChecked(true);
    ui->firstColumnIsX->setChecked(Results::xColumn(file) >= 0);
}

void ArraysForm::connectInputs()
{
    for (const QRadioButton *button : {ui->showColumns, ui->showRows})
        connect(button, &QRadioButton::clicked, this, &ArraysForm::fillCurveList);
    connect(ui->showPicture, &QRadioButton::clicked, this, &ArraysForm::showPicture);
    connect(ui->showTable, &QRadioButton::clicked, this, &ArraysForm::showTable);
    connect(ui->firstColumnIsX, &QCheckBox::clicked, this, &ArraysForm::fillCurveList);
    connect(ui->curves, &QListWidget::itemChanged, this, &ArraysForm::showCurves);
    connect(ui->allButton, &QPushButton::clicked, this, [this] { checkCurves(true); });
    connect(ui->noneButton, &QPushButton::clicked, this, [this] { checkCurves(false); });
    connect(greys, &GreyView::pointed, this, [this](qint64 row, qint64 column, double value) {
        info->setCoordsText(QString("Line: %1   Index: %2\nValue: %3")
                                .arg(row)
                                .arg(column)
                                .arg(ArrayPlot::numberText(value)));
    });
}

// The column that the user wants on the X axis, below 0: none. When no column rises, it is the
// first one.
int ArraysForm::xColumn() const
{
    if (!ui->firstColumnIsX->isChecked() || file.table.columns() < 2 || file.isText(0))
        return -1;
    return std::max(0, Results::xColumn(file));
}

int ArraysForm::curveCount() const
{
    return ui->showRows->isChecked() ? int(file.table.rows()) : int(columns.size());
}

QString ArraysForm::curveName(int curve) const
{
    if (!ui->showRows->isChecked())
        return Results::columnName(file, columns[std::size_t(curve)]);
    return file.rowNames.value(curve, (file.header.isEmpty() ? "line " : "block ") +
                                          QString::number(curve + 1));
}

// Lines take the axis that the header describes, columns the column chosen as X.
Results::ArrayAxis ArraysForm::xAxis() const
{
    return ui->showRows->isChecked() ? Results::axisOfRows(file) : Results::axisOf(file, xColumn());
}

void ArraysForm::fillCurveList()
{
    columns = Results::curveColumns(file, xColumn());
    {
        const QSignalBlocker blocker(ui->curves);
        ui->curves->clear();
        for (int curve = 0; curve < curveCount(); ++curve) {
            auto *const item = new QListWidgetItem(ArrayReading::colourSquare(curve),
                                                   curveName(curve), ui->curves);
            item->setCheckState(curve < drawnAtFirst ? Qt::Checked : Qt::Unchecked);
        }
        ui->curves->setCurrentRow(0);
    }
    ui->groupBox_curves->setEnabled(true);
    ui->firstColumnIsX->setEnabled(ui->showColumns->isChecked() && file.table.columns() > 1 &&
                                   !file.isText(0));
    info->setPointsEnabled(true);
    stack->setCurrentWidget(grafik);
    showCurves();
}

void ArraysForm::checkCurves(bool all)
{
    {
        const QSignalBlocker blocker(ui->curves);
        for (int i = 0; i < ui->curves->count(); ++i)
            ui->curves->item(i)->setCheckState(all ? Qt::Checked : Qt::Unchecked);
    }
    showCurves();
}

void ArraysForm::showCurves()
{
    const NumberTable &table = file.table;
    const bool byRows = ui->showRows->isChecked();
    QStringList report;
    std::vector<ArrayPlot::Series> series;
    int checked = 0;
    for (int curve = 0; curve < ui->curves->count(); ++curve) {
        if (ui->curves->item(curve)->checkState() != Qt::Checked || ++checked > mostDrawn)
            continue;
        series.push_back({curveName(curve), curve,
                          byRows ? table.row(curve) : table.column(columns[std::size_t(curve)])});
    }
    if (checked > mostDrawn)
        report << QString("%1 curves are checked, the first %2 of them are drawn.")
                      .arg(checked)
                      .arg(mostDrawn);
    Results::ArrayAxis x = xAxis();
    if (!x.isIndex() && !x.isEven())
        report << "X is not equally spaced: the points are drawn one step apart, the lower labels "
                  "give their X.";
    info->setSeries(std::move(series), std::move(x), {"file: " + path});
    showReport(report);
}

void ArraysForm::showPicture()
{
    ui->groupBox_curves->setEnabled(false);
    ui->firstColumnIsX->setEnabled(false);
    info->setPointsEnabled(false);
    stack->setCurrentWidget(greys);
    info->setSeries({{"all", 0, file.table.all()}}, {}, {"file: " + path});
    showReport({"A line of the file is a row of the picture: black is the smallest value, white "
                "the largest, red no number."});
}

// The statistics are those of the columns of numbers.
void ArraysForm::showTable()
{
    ui->groupBox_curves->setEnabled(false);
    ui->firstColumnIsX->setEnabled(false);
    info->setPointsEnabled(false);
    stack->setCurrentWidget(cells);
    std::vector<ArrayPlot::Series> series;
    for (const int column : Results::curveColumns(file, -1)) {
        if (int(series.size()) < mostDrawn)
            series.push_back(
                {Results::columnName(file, column), int(series.size()), file.table.column(column)});
    }
    info->setSeries(std::move(series), {}, {"file: " + path});
    showReport({});
}

void ArraysForm::showReport(const QStringList &lines)
{
    QStringList report = file.remarks + lines;
    if (!file.header.isEmpty())
        report << "Header:" << file.header;
    info->setReport(report);
}
