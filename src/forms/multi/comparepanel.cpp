#include "forms/multi/comparepanel.h"

#include "ui_comparepanel.h"

ComparePanel::ComparePanel(QWidget *parent) : QWidget(parent), ui(new Ui::ComparePanel)
{
    ui->setupUi(this);
    // What the pointer moves over does not move the list.
    constexpr int coordsLines = 5;
    ui->coords->setMinimumHeight(coordsLines * fontMetrics().lineSpacing());
    connect(ui->saveTables, &QPushButton::clicked, this, &ComparePanel::tablesWanted);
}

ComparePanel::~ComparePanel() = default;

TableView *ComparePanel::differences() const
{
    return ui->differences;
}

void ComparePanel::setCoords(const QString &text)
{
    ui->coords->setText(text);
}

void ComparePanel::setDifferencesText(const QString &text)
{
    ui->difference->setText(text);
}

void ComparePanel::setUsed(const QString &text)
{
    ui->used->setText(text);
}
