#include "plot/plotlegend.h"

#include "picture/legend.h"
#include "picture/plotmarks.h"

#include <QCheckBox>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace {

constexpr int widestName = 36; // characters of mean width
constexpr double mostOfHeight = 0.6;
constexpr double fontPart = 0.85; // of the application's font, for it hides curves

QPixmap lineOf(const QColor &colour, qreal ratio)
{
    QPixmap pixmap(QSize(16, 12) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.fillRect(0, 5, 16, 3, colour);
    return pixmap;
}

} // namespace

PlotLegend::PlotLegend(QWidget *plot)
    : QFrame(plot), heading(new QToolButton(this)), scrollArea(new QScrollArea(this))
{
    setObjectName("legend");
    setStyleSheet(QString("QFrame#legend { background: rgba(255, 255, 255, 225);"
                          " border: 1px solid #bebebe; }"
                          " QScrollArea, QWidget#lines { background: transparent; }"
                          " QToolButton { border: none; }"
                          " QToolButton, QCheckBox { font-size: %1pt; color: black; }")
                      .arg(font().pointSizeF() * fontPart));
    setCursor(Qt::ArrowCursor);

    heading->setObjectName("legendHeading");
    heading->setText("Curves");
    heading->setToolTip("Fold or unfold the list of curves; drag its edge to move it");
    heading->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    heading->setArrowType(Qt::DownArrow);
    heading->setCheckable(true);
    heading->setChecked(true);
    heading->setFocusPolicy(Qt::TabFocus); // a click leaves the keys with the plot
    connect(heading, &QToolButton::toggled, this, [this](bool open) { setFolded(!open); });

    scrollArea->setFrameShape(QFrame::NoFrame);
    scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollArea->setFocusPolicy(Qt::NoFocus);
    scrollArea->setWidgetResizable(true);

    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 2, 6, 4);
    layout->setSpacing(2);
    layout->addWidget(heading);
    layout->addWidget(scrollArea);
    hide();
}

void PlotLegend::setCurvesOf(PlotData &shown)
{
    lines = new QWidget;
    lines->setObjectName("lines");
    auto *const layout = new QVBoxLayout(lines);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    const int count = shown.messageMode ? 0 : shown.names.size();
    for (int curve = 0; curve < count; ++curve) {
        const QString &name = shown.names[curve];
        if (toggled.contains(name)) {
            shown.visible.resize(std::max(shown.visible.size(), size_t(curve) + 1), true);
            shown.visible[size_t(curve)] = toggled[name];
        }
        if (name.isEmpty())
            continue;
        const auto &curves = Plot::markedCurves(shown);
        const bool isEmpty =
            size_t(curve) < curves.size() && Plot::lacksFinite(curves[size_t(curve)]);
        addLine(curve, isEmpty ? name + ": " + Plot::noFiniteValues : name,
                QColor(Plot::colourOf(shown, curve)), Plot::isVisible(shown, curve));
    }
    const bool isEmpty = layout->isEmpty();
    scrollArea->setWidget(lines); // the former one goes
    gaveWay = false;
    setVisible(!isEmpty);
}

void PlotLegend::addLine(int curve, const QString &name, const QColor &colour, bool visible)
{
    auto *const box = new QCheckBox(lines);
    box->setPalette(style()->standardPalette()); // light as its paper, on dark desktops too
    box->ensurePolished();                       // its font is that of the style sheet
    const QFontMetrics metrics = box->fontMetrics();
    box->setText(
        metrics.elidedText(name, Qt::ElideMiddle, widestName * metrics.averageCharWidth()));
    box->setToolTip(name);
    box->setIcon(lineOf(colour, devicePixelRatioF()));
    box->setIconSize({16, 12});
    box->setChecked(visible);
    box->setFocusPolicy(Qt::TabFocus);
    lines->layout()->addWidget(box);
    connect(box, &QCheckBox::toggled, this,
            [this, curve](bool checked) { emit curveToggled(curve, checked); });
}

void PlotLegend::placeBeside(const PlotData &shown, const Plot::CurveBlocks &blocks,
                             const Plot::View &view, const std::vector<int> &spared)
{
    const QRect area = Plot::legendArea(view);
    if ((isHidden() && !gaveWay) || shown.messageMode || area.isEmpty())
        return;
    const auto corner = [&] {
        fitInto(area);
        return Plot::emptiestCorner(shown, blocks, view, area, size(), spared);
    };
    const auto hidesSome = [&](const QPoint &place) {
        return Plot::hiddenPixels(shown, blocks, view, QRect(place, size()), spared) > 0;
    };
    const bool mayGiveWay = !isChosen && !draggedTo;
    if (mayGiveWay)
        showFolded(false);
    QPoint place = corner();
    gaveWay = false;
    if (mayGiveWay && hidesSome(place)) {
        showFolded(true);
        place = corner();
        gaveWay = shown.names.size() == 1 && hidesSome(place);
    }
    setVisible(!gaveWay);
    placeIn(area, place);
}

QSize PlotLegend::sizeHint() const
{
    const QMargins margins = layout()->contentsMargins();
    QSize size = heading->sizeHint();
    if (heading->isChecked() && lines != nullptr) {
        const QSize content = lines->sizeHint();
        size = QSize(std::max(size.width(), content.width()),
                     size.height() + layout()->spacing() + content.height());
    }
    return size + QSize(margins.left() + margins.right() + 2, margins.top() + margins.bottom() + 2);
}

// Takes the size of its content, at most so much of the area.
void PlotLegend::fitInto(const QRect &area)
{
    allowed = area;
    const QSize wanted = sizeHint();
    const int bar = scrollArea->verticalScrollBar()->sizeHint().width();
    const double share = Plot::legendShare * area.width() * area.height() / (wanted.width() + bar);
    const int highest = int(std::min(area.height() * mostOfHeight, share));
    const bool scrolls = wanted.height() > highest;
    resize(std::min(wanted.width() + (scrolls ? bar : 0), area.width()),
           std::min(wanted.height(), std::max(highest, heading->sizeHint().height())));
}

// Moves into the area, to the corner unless the user has dragged it elsewhere.
void PlotLegend::placeIn(const QRect &area, const QPoint &corner)
{
    allowed = area;
    const QSize way = area.size() - size();
    const QPoint place = draggedTo ? area.topLeft() + QPoint(int(draggedTo->x() * way.width()),
                                                             int(draggedTo->y() * way.height()))
                                   : corner;
    move(place);
}

void PlotLegend::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        dragFrom = event->pos();
}

void PlotLegend::mouseMoveEvent(QMouseEvent *event)
{
    const QSize way = allowed.size() - size();
    if (!dragFrom || way.width() <= 0 || way.height() <= 0)
        return;
    const QPoint wanted = mapToParent(event->pos()) - *dragFrom - allowed.topLeft();
    draggedTo = QPointF(std::clamp(wanted.x() / double(way.width()), 0.0, 1.0),
                        std::clamp(wanted.y() / double(way.height()), 0.0, 1.0));
    placeIn(allowed, {});
}

void PlotLegend::mouseReleaseEvent(QMouseEvent * /*event*/)
{
    if (std::exchange(dragFrom, std::nullopt) && draggedTo)
        emit stateChanged(state());
}

QString PlotLegend::state() const
{
    const QString fold = heading->isChecked() ? "open" : "folded";
    return draggedTo ? fold + QString(" %1 %2").arg(draggedTo->x()).arg(draggedTo->y()) : fold;
}

void PlotLegend::setState(const QString &state)
{
    const QStringList words = state.split(' ');
    isChosen = !state.isEmpty();
    showFolded(words[0] == "folded");
    draggedTo.reset();
    if (words.size() == 3)
        draggedTo = QPointF(std::clamp(words[1].toDouble(), 0.0, 1.0),
                            std::clamp(words[2].toDouble(), 0.0, 1.0));
}

void PlotLegend::showFolded(bool folded)
{
    const QSignalBlocker silent(heading);
    heading->setChecked(!folded);
    heading->setArrowType(folded ? Qt::RightArrow : Qt::DownArrow);
    scrollArea->setVisible(!folded);
}

void PlotLegend::setFolded(bool folded)
{
    isChosen = true;
    showFolded(folded);
    emit stateChanged(state());
    const QRect before = geometry();
    fitInto(allowed);
    if (draggedTo) {
        placeIn(allowed, {});
        return;
    }
    // stay in the corner
    const QPoint middle = allowed.center();
    move(before.center().x() > middle.x() ? before.right() + 1 - width() : before.left(),
         before.center().y() > middle.y() ? before.bottom() + 1 - height() : before.top());
}
