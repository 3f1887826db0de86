// The viewer's picture of time against frequency.

#include "app/shell/settings.h"
#include "calc/waterfall.h"
#include "forms/native/nativegrafik.h"
#include "forms/native/nativeinfo.h"
#include "forms/native/nativetexts.h"
#include "forms/native/nativewaterfall.h"
#include "forms/native/waterfallview.h"
#include "forms/savefolder.h"
#include "plot/picturemenu.h"
#include "ui_nativegrafik.h"

#include <cmath>

void NativeGrafik::connectWaterfall()
{
    auto *const waterfallMenu = new PictureMenu(waterfall);
    waterfallMenu->setDrawing([this] { return waterfall->sizeWithAxis(); },
                              [this](QPainter &painter) { waterfall->drawWithAxis(painter); });
    shareSaveFolder(waterfallMenu);

    const auto numberChanged = QOverload<double>::of(&QDoubleSpinBox::valueChanged);
    for (QDoubleSpinBox *field : {ui->darkest, ui->lightest})
        connect(field, numberChanged, this, [this] {
            ui->darkest->setMaximum(ui->lightest->value() - ui->darkest->singleStep());
            waterfall->setScale(float(ui->darkest->value()), float(ui->lightest->value()));
        });
    for (QCheckBox *box : {ui->baselinePerChannel, ui->zeroDm})
        connect(box, &QCheckBox::toggled, this, [this] { drawTimer.start(0); });
    connect(ui->byPercentiles, &QCheckBox::toggled, waterfall, &WaterfallView::setPercentiles);
    for (QWidget *field : {ui->darkest, ui->lightest})
        connect(ui->byPercentiles, &QCheckBox::toggled, field, &QWidget::setDisabled);
    connect(ui->colours, QOverload<int>::of(&QComboBox::currentIndexChanged), waterfall,
            [this](int index) { waterfall->setGrey(index == 1); });
    connect(waterfall, &WaterfallView::pointed, this, &NativeGrafik::showWaterfallCoords);
}

// The part in sight, one column per pixel.
void NativeGrafik::drawWaterfall()
{
    if (!picture || !ui->showWaterfall->isChecked())
        return;
    const bool hasSamples = bool(picture->window.samples);
    if (!hasSamples && !means.samples)
        means = Tools::recordOfMeans(picture->reduction, file.header());
    const NativeRange range = visible();
    waterfall->setPicture(nativeWaterfall(
        *picture, hasSamples ? picture->window : means,
        {range, ui->dispersion->value(), ui->average->value(), waterfall->pictureWidth(),
         channelsOff, ui->baselinePerChannel->isChecked(), ui->zeroDm->isChecked()}));
    waterfall->setPart(range.first, range.points);
}

void NativeGrafik::showWaterfallCoords(double point, int band, float value)
{
    const ObservationData &header = file.header();
    QString channel = QString("channel %1").arg(band + 1);
    if (std::size_t(band) < header.fbands.size())
        channel += QString(", %1 MHz").arg(header.fbands[std::size_t(band)]);
    info->setCoords(NativeTexts::coordsText(
        header, std::floor(point), channel + QString(", %1 sigma").arg(double(value), 0, 'f', 2)));
}
