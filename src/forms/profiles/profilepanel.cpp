#include "forms/profiles/profilepanel.h"

#include "forms/profiles/profiletexts.h"
#include "ui_profilepanel.h"

ProfilePanel::ProfilePanel(QWidget *parent) : QWidget(parent), ui(new Ui::ProfilePanel)
{
    ui->setupUi(this);
    // What the pointer moves over does not move the rest.
    constexpr int coordsLines = 5;
    ui->coords->setMinimumHeight(coordsLines * fontMetrics().lineSpacing());
    for (QLabel *const cell : ui->groupBox_snr->findChildren<QLabel *>()) {
        if (!cell->objectName().endsWith("Name"))
            cell->setMinimumWidth(fontMetrics().horizontalAdvance("1.234e+05 (123.4 \u03c3)"));
    }
    connect(ui->takeBest, &QPushButton::clicked, this, &ProfilePanel::bestWanted);
    connect(ui->takeBack, &QPushButton::clicked, this, &ProfilePanel::backWanted);
    connect(ui->saveTables, &QPushButton::clicked, this, &ProfilePanel::tablesWanted);
    connect(ui->saveTim, &QPushButton::clicked, this, &ProfilePanel::timWanted);
}

ProfilePanel::~ProfilePanel() = default;

void ProfilePanel::setCoords(const QString &text)
{
    ui->coords->setText(text);
}

void ProfilePanel::setAverage(const Tools::ProfileSnr *snr)
{
    showSnr("Average", snr);
    if (snr)
        ui->z2Name->setText(QString("Z^2_%1").arg(snr->harmonics));
}

void ProfilePanel::setDay(const QString &title, const Tools::ProfileSnr &snr,
                          const Tools::ChiSquared &chiSquared)
{
    ui->dayTitle->setText(title);
    showSnr("Day", &snr);
    ui->chiDay->setText(snrText(chiSquared.reduced, chiSquared.sigma));
}

void ProfilePanel::clearDay()
{
    ui->dayTitle->setText("day");
    showSnr("Day", nullptr);
    ui->chiDay->clear();
}

// The cells of a column are called by the measure and the column.
void ProfilePanel::showSnr(const QString &column, const Tools::ProfileSnr *snr)
{
    const auto show = [&](const char *measure, const QString &text) {
        findChild<QLabel *>(measure + column)->setText(snr ? text : QString());
    };
    const Tools::ProfileSnr own = snr ? *snr : Tools::ProfileSnr();
    show("boxcar", snrText(own.boxcar.snr, own.boxcarSigma));
    show("peak", snrText(own.peak, own.peakSigma));
    show("z2", snrText(own.z2, own.z2Sigma));
    show("h", snrText(own.h, own.hSigma));
    show("equivalent",
         QString("%1 (%2)").arg(own.equivalentSnr, 0, 'f', 1).arg(own.equivalentWidth, 0, 'f', 3));
}

void ProfilePanel::setResult(const QString &text)
{
    ui->used->setText(text);
}

void ProfilePanel::setTaking(bool hasBest, bool isMoved)
{
    ui->takeBest->setEnabled(hasBest);
    ui->takeBack->setEnabled(isMoved);
}
