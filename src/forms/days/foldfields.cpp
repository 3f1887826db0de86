#include "forms/days/foldfields.h"

#include "forms/keeplines.h"
#include "ui_foldfields.h"

FoldFields::FoldFields(QWidget *parent) : QGroupBox(parent), ui(new Ui::FoldFields)
{
    ui->setupUi(this);
    keepLines(ui->estimate, 2);
}

FoldFields::~FoldFields() = default;

void FoldFields::showUsed(const FfaParameters &used)
{
    ui->period_min->setPlaceholderText(QString::number(used.period_min));
    ui->period_max->setPlaceholderText(QString::number(used.period_max));
    ui->rmed_width->setPlaceholderText(QString::number(used.rmed_width));
}

void FoldFields::tellSize(const QString &text)
{
    ui->estimate->setText(text);
}
