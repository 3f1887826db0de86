#include "forms/native/nativeinfo.h"

#include "forms/native/nativestatistics.h"
#include "forms/native/nativeview.h"
#include "ui_nativeinfo.h"

#include <QEvent>
#include <algorithm>

namespace {

constexpr int coordsLines = 4; // point, value, UTC, sidereal time
constexpr char widestCoords[] = "channel 888, 8888.888 MHz, 8888.88 sigma";

} // namespace

NativeInfo::NativeInfo(QWidget *parent) : QWidget(parent), ui(std::make_unique<Ui::NativeInfo>())
{
    ui->setupUi(this);
    reserveCoordsHeight();
    connect(ui->bandpass, &BandpassView::toggled, this, &NativeInfo::channelToggled);
    connect(ui->allOnButton, &QPushButton::clicked, this, &NativeInfo::allOnWanted);
}

NativeInfo::~NativeInfo() = default;

void NativeInfo::setCoords(const QString &text)
{
    ui->coords->setText(text);
}

void NativeInfo::showPart(const NativePicture &picture, const NativeView &view, const QString &name,
                          double tresolution)
{
    const NativeView::Part part = view.shownPart();
    NativeTexts::StatisticsPart told =
        nativeStatistics(picture, view.curves(), part.range, part.isSelected, tresolution);
    told.name = name;
    ui->statistics->setText(NativeTexts::statisticsHtml(told));
    NativeBandpass bandpass = nativeBandpass(picture, view.visible());
    ui->bandpass->setValues(std::move(bandpass.mean), std::move(bandpass.sigma));
}

void NativeInfo::setNotes(const QString &text)
{
    ui->notes->setText(text);
}

void NativeInfo::setFrequencies(const std::vector<double> &fbands)
{
    ui->bandpass->setFrequencies(fbands);
}

void NativeInfo::setChannelsOff(const std::vector<bool> &off)
{
    const auto count = std::count(off.begin(), off.end(), true);
    ui->bandpass->setChannelsOff(off);
    ui->allOnButton->setEnabled(count > 0);
    ui->switches->setText(count == 0 ? QString("All channels are on")
                                     : QString("%1 switched off").arg(count));
}

void NativeInfo::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        reserveCoordsHeight();
}

// The text changes under the moving pointer; what stands below and beside it must not move.
void NativeInfo::reserveCoordsHeight()
{
    const QFontMetrics metrics = ui->coords->fontMetrics();
    const QString lines = QString("X\n").repeated(coordsLines - 1) + "X";
    ui->coords->setMinimumSize(metrics.horizontalAdvance(widestCoords),
                               metrics.size(0, lines).height());
}
