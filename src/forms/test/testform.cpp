#include "forms/test/testform.h"

#include "app/shell/centralwidget.h"
#include "ui_testform.h"

TestForm::TestForm(const QString &title, QWidget *parent) : QWidget(parent), ui(new Ui::TestForm)
{
    ui->setupUi(this);
    ui->groupBox->setTitle(title);
    emptyCentralWidget();
    fillCentralWidget(this, nullptr, nullptr);
}

TestForm::~TestForm() = default;
