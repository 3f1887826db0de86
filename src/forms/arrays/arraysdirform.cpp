#include "forms/arrays/arraysdirform.h"

#include "fields/textcolours.h"
#include "forms/arrays/arrayreading.h"
#include "forms/arrays/arraysform.h"
#include "forms/arrays/arraysinfo.h"
#include "forms/savefolder.h"
#include "plot/pulsargrafik.h"
#include "ui_arraysdirform.h"

#include <QCollator>
#include <QEvent>
#include <QScrollBar>
#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr qint64 lookBytes = 1 << 20; // that a small picture is made of
constexpr int seenRole = Qt::UserRole;
constexpr int nameRole = Qt::UserRole + 1;

// One curve of a file: a column behind that of X, or a row where rows are series.
ArrayPlot::Series curveOf(const NumberFile &file, int curve, bool firstIsX)
{
    const NumberTable &table = file.table;
    if (file.rowsAreSeries)
        return {{}, 0, curve < table.rows() ? table.row(curve) : std::vector<double>()};
    const std::vector<int> columns =
        Results::curveColumns(file, firstIsX ? Results::xColumn(file) : -1);
    if (std::size_t(curve) >= columns.size())
        return {};
    return {{}, 0, table.column(columns[std::size_t(curve)])};
}

} // namespace

ArraysDirForm::ArraysDirForm(const QString &folder, QWidget *parent)
    : FileForm(folder, parent), ui(new Ui::ArraysDirForm), mainWindow(parent), directory(folder)
{
    ui->setupUi(this);
    QStringList names = directory.entryList(QDir::Files);
    const auto read = [&]() -> std::optional<Refusal> {
        if (!names.isEmpty())
            return std::nullopt;
        return Refusal{"Bad directory!\nDirectory without files",
                       QDir::toNativeSeparators(path) + " holds no files that can be seen."};
    };
    if (!open(read))
        return;
    QCollator inOrder{QLocale(QLocale::English)}; // that of the C locale knows no numbers
    inOrder.setNumericMode(true);                 // 2 before 10
    std::sort(names.begin(), names.end(), inOrder);
    grafik = new PulsarGrafik(this);
    shareSaveFolder(grafik);
    info = new ArraysInfo(grafik, this);
    grafik->setObjectName("grafik");
    install(grafik, info);
    listFiles(names);
    showPicked();
    connectInputs();
    ui->files->setFocus();
    lookTimer.start(0);
}

ArraysDirForm::~ArraysDirForm() = default;

void ArraysDirForm::connectInputs()
{
    lookTimer.setSingleShot(true);
    connect(&lookTimer, &QTimer::timeout, this, &ArraysDirForm::lookAtNextFile);
    connect(ui->files->verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this] { lookTimer.start(0); });
    ui->files->viewport()->installEventFilter(this);
    // One click changes the selection several times; it is read once.
    pickTimer.setSingleShot(true);
    connect(&pickTimer, &QTimer::timeout, this, &ArraysDirForm::readPicked);
    connect(ui->files, &QListWidget::itemSelectionChanged, &pickTimer, qOverload<>(&QTimer::start));
    connect(ui->files, &QListWidget::itemActivated, this, &ArraysDirForm::openCurrent);
    connect(ui->openButton, &QPushButton::clicked, this, &ArraysDirForm::openCurrent);
    connect(ui->curve, QOverload<int>::of(&QSpinBox::valueChanged), this,
            &ArraysDirForm::showPicked);
    connect(ui->firstColumnIsX, &QCheckBox::clicked, this, &ArraysDirForm::showPicked);
}

// What was read until then is shown.
void ArraysDirForm::endWork(const Jobs::Ending &ending)
{
    readingProblem = ending.kind == Jobs::Ending::Stopped
                         ? QString("The reading was stopped; not all picked files are shown.")
                         : ending.problem;
    showPicked();
}

bool ArraysDirForm::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        lookTimer.start(0);
    return QWidget::eventFilter(watched, event);
}

void ArraysDirForm::listFiles(const QStringList &names)
{
    QPixmap empty(ui->files->iconSize());
    empty.fill(Qt::white);
    constexpr int gap = 4;
    const int height = std::max(empty.height(), 2 * fontMetrics().lineSpacing()) + gap;
    for (const QString &name : names) {
        auto *const item = new QListWidgetItem(empty, name + "\n", ui->files);
        item->setData(nameRole, name);
        item->setSizeHint({1, height}); // as wide as the list, so that long texts are cut with dots
    }
    ui->files->setCurrentRow(0, QItemSelectionModel::NoUpdate);
}

// The first unseen file of those in view; the timer brings the next, so that keys and mouse
// are heard in between.
void ArraysDirForm::lookAtNextFile()
{
    const QRect view = ui->files->viewport()->rect();
    const QListWidgetItem *const top = ui->files->itemAt(view.topLeft() + QPoint(1, 1));
    for (int i = top ? ui->files->row(top) : 0; i < ui->files->count(); ++i) {
        QListWidgetItem *const item = ui->files->item(i);
        if (ui->files->visualItemRect(item).top() > view.bottom())
            return;
        if (item->data(seenRole).toBool())
            continue;
        describe(item, Results::readArrays(directory.filePath(item->data(nameRole).toString()),
                                           lookBytes));
        lookTimer.start(0);
        return;
    }
}

// The middle is cut, because results of one recording differ in the ends of their names.
QString ArraysDirForm::shownName(const QString &name) const
{
    constexpr int margins = 12; // pixels beside the text
    const int width = ui->files->viewport()->width() - ui->files->iconSize().width() - margins;
    return ui->files->fontMetrics().elidedText(name, Qt::ElideMiddle, width);
}

void ArraysDirForm::describe(QListWidgetItem *item, const NumberFile &file)
{
    item->setData(seenRole, true);
    const QString name = item->data(nameRole).toString();
    if (!file.error.isEmpty()) {
        const QString shown = QDir::toNativeSeparators(directory.filePath(name));
        const bool startsWithPath = file.error.startsWith(shown);
        item->setText(shownName(name) + "\n" +
                      (startsWithPath ? file.error.mid(shown.size()).trimmed() : file.error));
        item->setToolTip(file.error + "\n" + file.remarks.mid(0, 3).join("\n"));
        item->setForeground(TextColours::problem(palette()));
        return;
    }
    const NumberTable &table = file.table;
    if (!file.isWhole && table.rows() == 0) {
        item->setText(shownName(name) + "\na large table");
        return;
    }
    const QString more = file.isWhole ? "" : " or more";
    item->setText(shownName(name) +
                  QString("\n%1%2 x %3").arg(table.rows()).arg(more).arg(table.columns()));
    item->setToolTip(name + QString("\n%1%2 lines of up to %3 numbers")
                                .arg(table.rows())
                                .arg(more)
                                .arg(table.columns()));
    const ArrayPlot::Series first = curveOf(file, 0, true);
    const qreal ratio = devicePixelRatioF();
    QPixmap picture =
        QPixmap::fromImage(ArrayReading::smallPicture(first.values, ui->files->iconSize() * ratio));
    picture.setDevicePixelRatio(ratio);
    item->setIcon(picture);
}

// Reads those of the picked files that are not known yet, beside the window, and shows all.
void ArraysDirForm::readPicked()
{
    std::map<QString, NumberFile> known;
    QStringList missing;
    const QList<QListWidgetItem *> items = ui->files->selectedItems();
    for (const QListWidgetItem *item : items) {
        const QString name = item->data(nameRole).toString();
        if (const auto file = picked.find(name); file != picked.end())
            known[name] = std::move(file->second);
        else
            missing << name;
    }
    picked = std::move(known);
    readingProblem.clear();
    if (missing.isEmpty() && !worker.isBusy()) { // else the end of an empty reading shows them
        showPicked();
        return;
    }
    using NamedFile = std::pair<QString, NumberFile>;
    const auto read = [missing, folder = directory](const Jobs::Control &control,
                                                    const Jobs::Deliver<NamedFile> &deliver) {
        for (int i = 0; i < missing.size() && !control.isStopped(); ++i)
            deliver(
                {missing[i],
                 Results::readArrays(
                     folder.filePath(missing[i]), std::numeric_limits<qint64>::max(),
                     [&](int percent) { control.progress((100 * i + percent) / missing.size()); },
                     control.isStopped)});
    };
    worker.start<NamedFile>(
        read, [this](NamedFile file) { takeFile(file.first, std::move(file.second)); });
}

void ArraysDirForm::takeFile(const QString &name, NumberFile file)
{
    const QList<QListWidgetItem *> items = ui->files->selectedItems();
    for (QListWidgetItem *item : items) {
        if (item->data(nameRole).toString() == name)
            describe(item, file);
    }
    picked[name] = std::move(file);
}

void ArraysDirForm::showPicked()
{
    QStringList report;
    if (!readingProblem.isEmpty())
        report << readingProblem;
    const int curve = ui->curve->value() - 1;
    const bool firstIsX = ui->firstColumnIsX->isChecked();
    std::vector<ArrayPlot::Series> series;
    Results::ArrayAxis x;
    bool isOneX = true;
    for (const auto &[name, file] : picked) {
        if (!file.error.isEmpty()) {
            report << file.error;
            continue;
        }
        ArrayPlot::Series one = curveOf(file, curve, firstIsX);
        if (one.values.empty()) {
            report << name + QString(" has no curve %1.").arg(curve + 1);
            continue;
        }
        if (firstIsX) {
            Results::ArrayAxis own = file.rowsAreSeries
                                         ? Results::axisOfRows(file)
                                         : Results::axisOf(file, Results::xColumn(file));
            isOneX = isOneX && (series.empty() || own.isLike(x));
            if (series.empty())
                x = std::move(own);
        }
        one.name = name;
        one.index = int(series.size());
        series.push_back(std::move(one));
        for (const QString &remark : file.remarks)
            report << name + ": " + remark;
    }
    if (!isOneX) {
        x = {};
        report << "The X of the files differ: their points are counted.";
    } else if (!x.isIndex()) {
        report << "X is \"" + x.name + "\".";
    }
    const bool isEmpty = series.empty();
    info->setSeries(std::move(series), std::move(x), {"directory: " + directory.path()});
    if (isEmpty)
        grafik->showMessage("Pick files in the list");
    info->setReport(report);
}

// This form goes with the central widget, so not from within its own signal.
void ArraysDirForm::openCurrent()
{
    const QListWidgetItem *const item = ui->files->currentItem();
    if (!item)
        return;
    const QString file = directory.filePath(item->data(nameRole).toString());
    QTimer::singleShot(0, mainWindow,
                       [file, window = mainWindow] { new ArraysForm(file, window); });
}
