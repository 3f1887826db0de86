#include "plot/pulsargrafikinfo.h"

#include "base/numbertext.h"
#include "base/typednumber.h"
#include "fields/fieldstyles.h"
#include "fields/numberbox.h"
#include "fields/textcolours.h"
#include "picture/plotgeometry.h"
#include "plot/pulsargrafik.h"
#include "ui_pulsargrafikinfo.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <cmath>

namespace {

constexpr int coordsLines = 4; // index and value, and one for each row of labels

// The classes of reports in colours that are read on the background.
QString reportStyle(const QPalette &palette)
{
    return QString(".red { color: %1; } .blue { color: %2; } a { color: %2; }"
                   "p { margin-top: 0.5em; margin-bottom: 0.5em; } td, th { font-size: small; }")
        .arg(TextColours::problem(palette).name(),
             TextColours::areLight(palette) ? "#9cc4ec" : "#1f4e79");
}

} // namespace

PulsarGrafikInfo::PulsarGrafikInfo(PulsarGrafik *grafik, QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::PulsarGrafikInfo>()), plot(grafik)
{
    ui->setupUi(this);
    reserveCoordsHeight();

    connect(ui->changePointsButton, &QPushButton::clicked, this, &PulsarGrafikInfo::changePoints);
    connect(ui->resetPointsButton, &QPushButton::clicked, this, &PulsarGrafikInfo::resetPoints);
    connect(ui->redrawMaxSigmaButton, &QPushButton::clicked, this, [this] {
        if (!Fields::refuseUnread(ui->groupBox_fourier))
            emit changeMaxSigma(maxSigma());
    });
    connect(ui->changeDispersionsButton, &QPushButton::clicked, this,
            &PulsarGrafikInfo::readDispersions);
    connect(ui->showOneButton, &QPushButton::clicked, this,
            [this] { emit showMultiResult(ui->multiResult->currentIndex()); });
    connect(ui->showAllButton, &QPushButton::clicked, this, &PulsarGrafikInfo::returnMultiGrafiks);
    connect(ui->texts, &QTextBrowser::anchorClicked, this, &PulsarGrafikInfo::linkClicked);
    if (plot != nullptr)
        connect(plot, &PulsarGrafik::coordsChanged, this, &PulsarGrafikInfo::setCoords);
}

PulsarGrafikInfo::~PulsarGrafikInfo() = default;

int PulsarGrafikInfo::maxSigma() const
{
    return ui->maxSigma->value();
}

void PulsarGrafikInfo::setPoints(int points)
{
    ui->points->setValue(points);
}

void PulsarGrafikInfo::setDispersions(const std::array<double, 4> &dispersions)
{
    const auto fields = dispersionFields();
    for (size_t i = 0; i < fields.size(); ++i) {
        fields[i]->setText(exactText(dispersions[i]));
        FieldStyles::setStyle(fields[i], {});
    }
}

void PulsarGrafikInfo::setMultiResults(const QVector<QString> &names)
{
    ui->multiResult->clear();
    for (const QString &name : names)
        ui->multiResult->addItem(name);
    // the list shows whole names though the field is narrow
    QAbstractItemView *list = ui->multiResult->view();
    list->setMinimumWidth(list->sizeHintForColumn(0));
    ui->groupBox_multiResults->setVisible(!names.isEmpty());
}

void PulsarGrafikInfo::setTexts(const QString &calculation, const QString &grafik,
                                const QStringList &problems)
{
    QStringList escaped;
    for (const QString &problem : problems)
        escaped << problem.toHtmlEscaped();
    const QString above = escaped.isEmpty()
                              ? QString()
                              : "<p><span class='red'>" + escaped.join("<br>") + "</span></p>";
    ui->texts->document()->setDefaultStyleSheet(reportStyle(ui->texts->palette()));
    ui->texts->setHtml(above + "<p><b>Calculation:</b></p>" + calculation +
                       "<p><b>Grafik:</b></p>" + grafik);
}

void PulsarGrafikInfo::showNote(const QString &note)
{
    ui->texts->setPlainText(note);
}

void PulsarGrafikInfo::setFourierControls(bool enabled)
{
    ui->groupBox_fourier->setEnabled(enabled);
}

void PulsarGrafikInfo::setDispersionControls(bool enabled)
{
    ui->groupBox_dispersions->setEnabled(enabled);
}

void PulsarGrafikInfo::changePoints()
{
    if (!Fields::refuseUnread(ui->groupBox_points))
        emit pointsRequested(ui->points->value());
}

void PulsarGrafikInfo::resetPoints()
{
    emit pointsRequested(0);
}

void PulsarGrafikInfo::setCoords(QPointF coords, const QVector<QString> &labels)
{
    // Where a pixel holds several points the index is shown as it selects the labels, truncated.
    const QPointF perPixel = plot != nullptr ? plot->dataPerPixel() : QPointF(1, 1);
    const double x = perPixel.x() < 1 ? coords.x() : std::trunc(coords.x());
    QString text = QString("X: %1   Y: %2\n")
                       .arg(Plot::coordinateText(x, perPixel.x()),
                            Plot::coordinateText(coords.y(), perPixel.y()));
    for (const QString &label : labels)
        text += label + "\n";
    text.chop(1);
    ui->coords->setText(text);
}

void PulsarGrafikInfo::keyPressEvent(QKeyEvent *event)
{
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QWidget::keyPressEvent(event);
        return;
    }
    if (auto *button = qobject_cast<QPushButton *>(focusWidget())) {
        button->click();
        return;
    }
    const std::pair<QWidget *, QPushButton *> buttonOfGroup[] = {
        {ui->groupBox_points, ui->changePointsButton},
        {ui->groupBox_fourier, ui->redrawMaxSigmaButton},
        {ui->groupBox_dispersions, ui->changeDispersionsButton},
        {ui->groupBox_multiResults, ui->showOneButton},
    };
    for (const auto &[group, button] : buttonOfGroup)
        if (group->isAncestorOf(focusWidget()))
            button->click();
}

void PulsarGrafikInfo::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        reserveCoordsHeight();
}

std::array<QLineEdit *, 4> PulsarGrafikInfo::dispersionFields() const
{
    return {ui->dispersion1, ui->dispersion2, ui->dispersion3, ui->dispersion4};
}

void PulsarGrafikInfo::readDispersions()
{
    QVector<double> dispersions;
    QVector<QLineEdit *> bad;
    for (QLineEdit *field : dispersionFields()) {
        const std::optional<double> dispersion = Tools::typedNumber(field->text());
        const bool isGood = dispersion && *dispersion >= 0;
        FieldStyles::setStyle(field, isGood ? "" : FieldStyles::failing);
        if (!isGood)
            bad.append(field);
        dispersions.append(dispersion.value_or(0));
    }
    if (!bad.isEmpty())
        FieldStyles::refuse(
            bad[0], QString("%1: \"%2\" cannot be taken.\nAllowed: %3, 0 or more.")
                        .arg(FieldStyles::nameOf(bad[0]), bad[0]->text(), Tools::allowedNumber));
    else
        emit changeDispersions(dispersions);
}

// The text grows and shrinks under the moving pointer; what stands below must not.
void PulsarGrafikInfo::reserveCoordsHeight()
{
    const QString lines = QString("X\n").repeated(coordsLines - 1) + "X";
    ui->coords->setMinimumHeight(ui->coords->fontMetrics().size(0, lines).height());
}
