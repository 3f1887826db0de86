#include "forms/calculator/calculatorform.h"

#include "app/shell/centralwidget.h"
#include "app/shell/lastvalues.h"
#include "app/shell/settings.h"
#include "app/shell/statusline.h"
#include "coords/raytables.h"
#include "fields/fieldstyles.h"
#include "fields/numberbox.h"
#include "forms/showrecording.h"
#include "ui_calculatorform.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMetaProperty>

namespace {

constexpr int smallestFont = 7; // pt
constexpr int largestFont = 28;
constexpr int startFont = 11;
constexpr int fieldMargins = 14; // pixels beside the text of a field

// The fields of a block, without the line edits that spin and combo boxes are made of.
QList<QWidget *> fieldsOf(const QWidget *block)
{
    QList<QWidget *> fields;
    for (QWidget *field : block->findChildren<QWidget *>()) {
        if (field->inherits("QComboBox") || field->inherits("QAbstractSpinBox") ||
            (field->inherits("QLineEdit") && field->parent()->inherits("QGroupBox")))
            fields << field;
    }
    return fields;
}

void resetColours(const QWidget *block)
{
    for (QWidget *field : fieldsOf(block)) {
        const bool isReadOnly = field->property("readOnly").toBool();
        FieldStyles::setStyle(field, isReadOnly ? FieldStyles::readOnly : FieldStyles::plain);
    }
}

// What is wrong with the texts of number fields, by field.
QMap<QString, QString> unreadIn(const QWidget *block)
{
    QMap<QString, QString> lines;
    for (const QAbstractSpinBox *box : block->findChildren<QAbstractSpinBox *>()) {
        if (const QString problem = Fields::problemOf(box); !problem.isEmpty())
            lines.insert(box->objectName(), problem);
    }
    return lines;
}

// The property that a user edits: text, value or choice.
QMetaProperty valueOf(const QWidget *field)
{
    return field->metaObject()->userProperty();
}

} // namespace

CalculatorForm::CalculatorForm(QWidget *parent) : QWidget(parent), ui(new Ui::CalculatorForm)
{
    ui->setupUi(this);
    // Rich text does not take its classes from the style sheet of the application by itself.
    ui->textInfo->document()->setDefaultStyleSheet(qApp->styleSheet());
    ui->tres->setCompleter(nullptr); // it would make "0.0124928" of a typed "0.01"
    setReportFont(startFont);
    const int widestResult = ui->zrt2cat_delta->fontMetrics().horizontalAdvance("-00°00′00.00″");
    ui->zrt2cat_alfa->setMinimumWidth(widestResult + fieldMargins);
    ui->zrt2cat_delta->setMinimumWidth(widestResult + fieldMargins);
    ui->cat2zrt_alfa->setMinimumWidth(widestResult);
    for (QWidget *field : fieldsOf(this) + QList<QWidget *>{ui->ffa_boundPeriodBin})
        presets.push_back({field, valueOf(field).read(field)});
    emptyCentralWidget();
    fillCentralWidget(this, nullptr, nullptr);
    connectInputs();
    clearForm();
    lastValues = std::make_unique<LastValues>(this);
    ui->cat2zrt_alfa->setFocus();
}

CalculatorForm::~CalculatorForm() = default;

void CalculatorForm::connectInputs()
{
    using Slot = void (CalculatorForm::*)();
    const std::initializer_list<std::pair<QPushButton *, Slot>> buttons = {
        {ui->calcdelta_send, &CalculatorForm::calcdelta_send},
        {ui->cat2zrt_send, &CalculatorForm::cat2zrt_send},
        {ui->zrt2cat_send, &CalculatorForm::zrt2cat_send},
        {ui->ffa_show_info, &CalculatorForm::ffa_show_info},
        {ui->ffa_show_periods, &CalculatorForm::ffa_show_periods},
        {ui->fontIncrease, &CalculatorForm::fontIncrease},
        {ui->fontDecrease, &CalculatorForm::fontDecrease},
        {ui->clearForm, &CalculatorForm::clearForm},
        {ui->copyReport, &CalculatorForm::copyReport},
        {ui->copyCommand, &CalculatorForm::copyCommand},
    };
    for (const auto &[button, slot] : buttons)
        connect(button, &QPushButton::clicked, this, slot);

    // Edited by the user only: one side that follows must not move the other.
    connect(ui->zrt2cat_time, &QLineEdit::textEdited, this, &CalculatorForm::pointFollowsTime);
    connect(ui->tres, &QComboBox::currentTextChanged, this, &CalculatorForm::pointFollowsTime);
    connect(ui->zrt2cat_culmPoint, &QLineEdit::textEdited, this, &CalculatorForm::timeFollowsPoint);

    const auto follow = &CalculatorForm::periodFollowsBins;
    connect(ui->ffa_boundPeriodBin, &QCheckBox::toggled, this, follow);
    connect(ui->ffa_bin_min, QOverload<int>::of(&QSpinBox::valueChanged), this, follow);
    connect(ui->ffa_tres, &QLineEdit::textChanged, this, follow);

    ui->cat2zrt_fileName->installEventFilter(this);
    ui->textInfo->installEventFilter(this);
}

void CalculatorForm::calcdelta_send()
{
    show(
        ui->groupBoxCalcDelta,
        Calculator::deltaFromRay({ui->calcdelta_plosh->currentText(), ui->calcdelta_module->value(),
                                  ui->calcdelta_ray->value(), unreadIn(ui->groupBoxCalcDelta)},
                                 Tools::rayTables()));
}

void CalculatorForm::cat2zrt_send()
{
    show(ui->groupBoxCat2zrt,
         Calculator::catalogToZrt({ui->cat2zrt_alfa->text(), ui->cat2zrt_delta->text(),
                                   ui->cat2zrt_date->text(), ui->cat2zrt_plosh->currentText(),
                                   ui->tres->currentText()}));
    showWhetherRecordingExists();
}

void CalculatorForm::zrt2cat_send()
{
    show(ui->groupBoxZrt2cat,
         Calculator::zrtToCatalog({ui->zrt2cat_date->text(), ui->zrt2cat_time->text(),
                                   ui->zrt2cat_culmPoint->text(), ui->zrt2cat_deltaZrt->text(),
                                   ui->tres->currentText()}));
}

void CalculatorForm::ffa_show_info()
{
    showFfa(false);
}

void CalculatorForm::ffa_show_periods()
{
    showFfa(true);
}

void CalculatorForm::showFfa(bool withPeriods)
{
    const Calculator::FfaInput input = {
        ui->ffa_poins->text(),      ui->ffa_tres->text(),     ui->ffa_period_min->text(),
        ui->ffa_period_max->text(), ui->ffa_bin_min->value(), ui->ffa_bin_max->value(),
        ui->ffa_ducy_max->value(),  ui->ffa_wtsp->value(),    unreadIn(ui->groupBoxFfa)};
    show(ui->groupBoxFfa, Calculator::ffaInfo(input, withPeriods));
}

// Shows what the calculator of a block gave, and the focus on the first field it refused.
void CalculatorForm::show(const QGroupBox *block, const Calculator::Answer &answer)
{
    resetColours(block);
    resetColours(ui->groupBoxMain);
    for (const QString &name : answer.failing)
        FieldStyles::setStyle(findChild<QWidget *>(name), FieldStyles::failing);
    for (auto output = answer.outputs.begin(); output != answer.outputs.end(); ++output) {
        auto *const field = findChild<QLineEdit *>(output.key());
        field->setText(output.value());
        field->setCursorPosition(0);
        if (!output.value().isEmpty() && output.value() != "nan")
            FieldStyles::setStyle(field, FieldStyles::filled);
    }
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    ui->textInfo->setHtml(answer.report);
    QGuiApplication::restoreOverrideCursor();
    command = answer.command;
    ui->copyCommand->setEnabled(!command.isEmpty());
    if (!answer.failing.isEmpty())
        findChild<QWidget *>(answer.failing.first())->setFocus();
}

void CalculatorForm::fontIncrease()
{
    setReportFont(ui->textInfo->font().pointSize() + 1);
}

void CalculatorForm::fontDecrease()
{
    setReportFont(ui->textInfo->font().pointSize() - 1);
}

void CalculatorForm::setReportFont(int points)
{
    QFont font = ui->textInfo->font();
    font.setPointSize(qBound(smallestFont, points, largestFont));
    ui->textInfo->setFont(font);
    ui->fontSizeLabel->setText(QString("%1 pt").arg(font.pointSize()));
    ui->fontDecrease->setEnabled(font.pointSize() > smallestFont);
    ui->fontIncrease->setEnabled(font.pointSize() < largestFont);
}

void CalculatorForm::clearForm()
{
    for (const auto &[field, value] : std::as_const(presets))
        valueOf(field).write(field, value);
    resetColours(this);
    showWhetherRecordingExists();
    showHelp();
}

void CalculatorForm::showHelp()
{
    const QString problem = Tools::rayTables().problem;
    const QString remark = problem.isEmpty()
                               ? QString()
                               : "<p><span class='red'>" + problem.toHtmlEscaped() + "</span></p>";
    ui->textInfo->setHtml(Calculator::helpText() + remark);
    command.clear();
    ui->copyCommand->setEnabled(false);
}

void CalculatorForm::copyCommand()
{
    StatusLine::copyCommand(command);
}

void CalculatorForm::copyReport()
{
    const QTextCursor marked = ui->textInfo->textCursor();
    ui->textInfo->selectAll();
    ui->textInfo->copy();
    ui->textInfo->setTextCursor(marked);
}

void CalculatorForm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QWidget::keyPressEvent(event);
        return;
    }
    QWidget *const focus = focusWidget();
    if (auto *const button = qobject_cast<QPushButton *>(focus))
        button->click();
    else if (ui->groupBoxCalcDelta->isAncestorOf(focus))
        calcdelta_send();
    else if (ui->groupBoxCat2zrt->isAncestorOf(focus))
        cat2zrt_send();
    else if (ui->groupBoxZrt2cat->isAncestorOf(focus))
        zrt2cat_send();
    else if (ui->groupBoxFfa->isAncestorOf(focus))
        ffa_show_info();
}

bool CalculatorForm::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == ui->cat2zrt_fileName && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton &&
        !ui->cat2zrt_fileName->hasSelectedText()) // marked with the mouse, to be copied
        openFoundRecording();
    if (watched == ui->textInfo && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->matches(QKeySequence::Copy) &&
        !ui->textInfo->textCursor().hasSelection()) {
        copyReport();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void CalculatorForm::pointFollowsTime()
{
    const QString point =
        Calculator::pointOfTime(ui->zrt2cat_time->text(), ui->tres->currentText());
    if (point.isEmpty())
        return;
    ui->zrt2cat_culmPoint->setText(point);
    FieldStyles::setStyle(ui->zrt2cat_culmPoint, FieldStyles::plain);
}

// A point that has no time within the hour is marked.
void CalculatorForm::timeFollowsPoint()
{
    const QString time = Calculator::timeOfPoint(
        ui->zrt2cat_time->text(), ui->zrt2cat_culmPoint->text(), ui->tres->currentText());
    FieldStyles::setStyle(ui->zrt2cat_culmPoint,
                          time.isEmpty() ? FieldStyles::failing : FieldStyles::plain);
    if (!time.isEmpty())
        ui->zrt2cat_time->setText(time);
}

void CalculatorForm::periodFollowsBins()
{
    const bool isBound = ui->ffa_boundPeriodBin->isChecked();
    ui->ffa_period_min->setReadOnly(isBound);
    FieldStyles::setStyle(ui->ffa_period_min, isBound ? FieldStyles::readOnly : FieldStyles::plain);
    if (isBound)
        ui->ffa_period_min->setText(
            Calculator::shortestPeriod(ui->ffa_bin_min->value(), ui->ffa_tres->text()));
}

// Path of the file that was found, in the folder in which a file was opened last; empty when no
// file was found.
QString CalculatorForm::recordingPath() const
{
    const QString folder = Settings::instance()->lastOpenPath();
    const QString name = ui->cat2zrt_fileName->text();
    if (folder.isEmpty() || name.isEmpty() || !QFileInfo(folder, name).isFile())
        return {};
    return QDir(folder).filePath(name);
}

void CalculatorForm::showWhetherRecordingExists()
{
    const QString path = recordingPath();
    const QString name = ui->cat2zrt_fileName->text();
    ui->cat2zrt_fileName->setCursor(path.isEmpty() ? Qt::IBeamCursor : Qt::PointingHandCursor);
    if (name.isEmpty())
        ui->cat2zrt_fileName->setToolTip({});
    else if (path.isEmpty())
        ui->cat2zrt_fileName->setToolTip("Not in the folder of the file opened last");
    else
        ui->cat2zrt_fileName->setToolTip("A click opens " + QDir::toNativeSeparators(path));
}

void CalculatorForm::openFoundRecording()
{
    const QString name = ui->cat2zrt_fileName->text();
    const QString path = recordingPath();
    const QString folder = Settings::instance()->lastOpenPath();
    if (!path.isEmpty())
        showRecording(path, ui->cat2zrt_culmPoint->text().toInt());
    else if (!name.isEmpty())
        StatusLine::show(folder.isEmpty()
                             ? name + " is looked for in the folder of the file opened last; none "
                                      "was opened yet."
                             : name + " is not in the folder of the file opened last, " +
                                   QDir::toNativeSeparators(folder));
}
