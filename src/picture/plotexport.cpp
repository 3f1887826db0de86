#include "picture/plotexport.h"

#include "base/bytetext.h"
#include "base/wholefile.h"
#include "picture/curvelines.h"
#include "picture/legend.h"
#include "picture/plotpainter.h"
#include "picture/verticallines.h"

#include <QBuffer>
#include <QFileInfo>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <mutex>

namespace Plot {

namespace {

constexpr int linesPerPixel = 4; // a page of the screen's width then has some 400 to the inch
constexpr double screenDpi = 96;
constexpr int pdfDpi = 1200;
constexpr double inchesPerMeter = 1 / 0.0254;

void drawCurves(QPainter &painter, const PlotData &data, const View &view,
                const std::vector<std::vector<float>> &curves,
                const std::vector<BlockExtremes> &blocks)
{
    for (size_t i = 0; i < curves.size(); ++i) {
        if (!isVisible(data, int(i)))
            continue;
        const QColor colour(colourOf(data, int(i)));
        painter.setPen(QPen(colour, 1, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin));
        const BlockExtremes ofCurve = i < blocks.size() ? blocks[i] : BlockExtremes();
        for (const QPolygonF &line : curveLines(view, curves[i], ofCurve, linesPerPixel))
            painter.drawPolyline(line);
        paintSamples(painter, view, curves[i]);
    }
}

// A line of the plot from one edge to the other, where it is in sight.
void drawAcross(QPainter &painter, const View &view, QLineF line)
{
    const QRect clip = view.clip();
    if (line.y1() >= clip.top() && line.y2() <= clip.bottom() + 1 && line.x1() >= clip.left() &&
        line.x2() <= clip.right() + 1)
        painter.drawLine(line);
}

void drawZeroLine(QPainter &painter, const View &view, const char *colour)
{
    if (view.y.min > 0 || view.allPoints < 2)
        return;
    const double y = placeOf(view, {0, 0}).y();
    const double right = placeOf(view, {double(view.allPoints - 1), 0}).x();
    painter.setPen(QColor(colour));
    drawAcross(painter, view,
               {double(marginLeft), y, std::min<double>(right, view.width - marginRight), y});
}

void drawLeftOut(QPainter &painter, const PlotData &data, const View &view)
{
    const double bottom = view.height - marginBottom;
    const Rows end = markerEnds(view)[0];
    for (const Range &part : leftOutInSight(data, view)) {
        painter.fillRect(QRectF(QPointF(part.min, marginTop), QPointF(part.max, bottom)),
                         QColor(leftOutColour));
        painter.fillRect(QRectF(QPointF(part.min, end.first), QPointF(part.max, end.last + 1)),
                         QColor(leftOutEndColour));
    }
}

// Grid and markers, before the curves, so that these have no gaps.
void drawVerticalLines(QPainter &painter, const PlotData &data, const View &view,
                       const XAxisLabels &labels)
{
    const double bottom = view.height - marginBottom;
    painter.setPen(QColor(gridColour));
    for (const int x : gridColumns(data, labels))
        drawAcross(painter, view, {double(x), double(marginTop), double(x), bottom});
    for (std::size_t i = 0; i < data.markers.size(); ++i) {
        const double x = placeOf(view, {double(data.markers[i]), 0}).x();
        if (x < marginLeft || x > view.width - marginRight)
            continue;
        QPen pen((QColor(markerColour)));
        pen.setCapStyle(Qt::FlatCap);
        painter.setPen(pen);
        for (const Rows &end : markerEnds(view))
            painter.drawLine(QLineF(x, end.first, x, end.last + 1));
        if (i < data.markerStyles.size() && !data.markerStyles[i].dashes.empty()) {
            const std::vector<int> &dashes = data.markerStyles[i].dashes;
            pen.setDashPattern(QVector<qreal>(dashes.begin(), dashes.end()));
            painter.setPen(pen);
        }
        painter.drawLine(QLineF(x, marginTop, x, bottom));
    }
}

QString inQuotes(const QString &text)
{
    if (!text.contains(',') && !text.contains('"') && !text.contains('\n'))
        return text;
    return '"' + QString(text).replace('"', "\"\"") + '"';
}

QString withUnit(const QString &name, const QString &unit)
{
    return unit.isEmpty() ? name : name + " (" + unit + ")";
}

struct Column {
    QString name;
    const std::vector<float> *samples;
};

std::vector<Column> visibleColumns(const PlotData &data)
{
    std::vector<Column> columns;
    const auto add = [&](const std::vector<std::vector<float>> &set, const QString &suffix) {
        for (int i = 0; i < int(set.size()); ++i)
            if (isVisible(data, i))
                columns.push_back({(data.names.value(i).isEmpty() ? QString("curve %1").arg(i + 1)
                                                                  : data.names[i]) +
                                       suffix,
                                   &set[size_t(i)]});
    };
    add(data.graphs, {});
    add(data.multiGraphs, data.graphs.empty() ? "" : ", below");
    return columns;
}

bool hasPoints(const PlotData &data)
{
    return data.pointStep > 0;
}

// Number in the recording of the point that an index stands for.
QByteArray pointText(const PlotData &data, int index)
{
    constexpr int digits = 12;
    return QByteArray::number(data.firstPoint + index * data.pointStep, 'g', digits);
}

QByteArray tableHead(const PlotData &data, const IndexRange &points,
                     const std::vector<Column> &columns)
{
    QStringList lines;
    for (const QString &line : data.source)
        lines << "# " + QString(line).replace('\n', ' ');
    if (hasPoints(data))
        lines << "# points " + pointText(data, points.begin) + " to " +
                     pointText(data, points.end - 1) + " of the recording";
    else
        lines << QString("# points %1 to %2 of %3")
                     .arg(points.begin)
                     .arg(points.end - 1)
                     .arg(int(allOfX(data).max));
    if (!data.yName.isEmpty())
        lines << "# values: " + withUnit(data.yName, data.yUnit);
    QStringList names = {hasPoints(data) ? "point" : "index"};
    if (!data.x.name.isEmpty())
        names << inQuotes(withUnit(data.x.name, data.x.unit));
    for (const Column &column : columns)
        names << inQuotes(column.name);
    lines << names.join(',') + "\n";
    return bytesOfText(lines.join('\n'));
}

// The shortest text that gives the same float again.
void append(QByteArray &text, float value)
{
    char digits[32];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
    text.append(digits, int(end.ptr - digits));
}

void appendRow(QByteArray &text, const PlotData &data, const std::vector<Column> &columns, int i)
{
    constexpr int axisDigits = 12;
    text += hasPoints(data) ? pointText(data, i) : QByteArray::number(i);
    if (!data.x.name.isEmpty())
        text += ',' + QByteArray::number(axisValue(data.x, i), 'g', axisDigits);
    for (const Column &column : columns) {
        text += ',';
        if (size_t(i) < column.samples->size())
            append(text, (*column.samples)[size_t(i)]);
    }
    text += '\n';
}

// What the user of a window reads of a failure; empty when nothing failed.
QString adviceOf(const WriteFailure &failure)
{
    return failure ? failure.text() + "\nNothing was changed. Choose another folder or make room."
                   : QString();
}

// The painters of SVG and PDF ignore what their device says: they get one that cannot fail.
QString paintPng(QBuffer &buffer, const Drawing &drawing)
{
    const int scale = drawing.pngScale;
    QImage image(drawing.size * scale, QImage::Format_RGB32);
    if (image.isNull())
        return "there is not enough memory for the picture";
    image.setDotsPerMeterX(int(screenDpi * scale * inchesPerMeter));
    image.setDotsPerMeterY(image.dotsPerMeterX());
    if (!drawing.comment.isEmpty())
        image.setText("Comment", drawing.comment);
    if (scale == 1 && drawing.paintPixels) {
        drawing.paintPixels(image);
    } else {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(scale, scale);
        drawing.draw(painter);
    }
    return image.save(&buffer, "PNG") ? QString() : "the picture cannot be made";
}

QString paintSvg(QBuffer &buffer, const Drawing &drawing)
{
    QSvgGenerator svg;
    svg.setOutputDevice(&buffer);
    svg.setResolution(int(screenDpi));
    svg.setSize(drawing.size);
    svg.setViewBox(QRect(QPoint(0, 0), drawing.size));
    svg.setTitle(drawing.title);
    svg.setDescription(drawing.comment);
    QPainter painter;
    if (!painter.begin(&svg))
        return "the picture cannot be made";
    drawing.draw(painter);
    return {};
}

QString paintPdf(QBuffer &buffer, const Drawing &drawing)
{
    constexpr double pointsPerInch = 72;
    QPdfWriter pdf(&buffer);
    pdf.setResolution(pdfDpi);
    pdf.setPageSize(QPageSize(QSizeF(drawing.size) * pointsPerInch / screenDpi, QPageSize::Point,
                              {}, QPageSize::ExactMatch));
    pdf.setPageMargins(QMarginsF());
    pdf.setTitle(drawing.title);
    if (!drawing.comment.isEmpty())
        pdf.setCreator(drawing.comment);
    QPainter painter;
    if (!painter.begin(&pdf))
        return "the picture cannot be made";
    painter.scale(pdfDpi / screenDpi, pdfDpi / screenDpi);
    drawing.draw(painter);
    return {};
}

// A PDF tells when it was made. Blanks in that place keep its offsets, and make the same drawing
// the same bytes.
void removeDate(QByteArray &bytes)
{
    const int begin = bytes.indexOf("/CreationDate (");
    const int end = begin < 0 ? -1 : bytes.indexOf(')', begin);
    for (int i = begin; end >= 0 && i <= end; ++i)
        bytes[i] = ' ';
}

// Fonts are one for the whole process.
std::mutex paintingMutex;

PictureBytes paint(const QString &kind, const Drawing &drawing)
{
    const std::lock_guard lock(paintingMutex);
    PictureBytes picture;
    QBuffer buffer(&picture.bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.problem = kind == "png"   ? paintPng(buffer, drawing)
                      : kind == "svg" ? paintSvg(buffer, drawing)
                                      : paintPdf(buffer, drawing);
    if (kind == "pdf")
        removeDate(picture.bytes);
    return picture;
}

Marks marksOf(const PictureContent &content)
{
    Marks marks = content.marks;
    if (!content.hasLegend)
        marks.legend.reset();
    else if (!marks.legend)
        marks.legend = legendPlace(content.data, content.blocks, content.size, content.zoom, marks);
    return marks;
}

// The drawing refers to the content, which must outlive it.
Drawing drawingOf(const PictureContent &content)
{
    const auto paintPixels = [&content](QImage &image) {
        paintPlot(content.data, content.zoom, content.blocks, image);
        QPainter painter(&image);
        if (!content.data.messageMode)
            paintMarks(painter, content.data, viewOf(content.data, content.size, content.zoom),
                       marksOf(content));
    };
    return {content.size,
            content.data.source.join("; "),
            [&content](QPainter &painter) { drawPlot(painter, content); },
            content.comment,
            content.pngScale,
            paintPixels};
}

} // namespace

void drawPlot(QPainter &painter, const PictureContent &content)
{
    const PlotData &data = content.data;
    const View view = viewOf(data, content.size, content.zoom);
    painter.fillRect(QRect(QPoint(0, 0), content.size), QColor("white"));
    painter.setPen(QColor("black"));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(0.5, 0.5, view.width - 1, view.height - 1));
    const XAxisLabels labels = xAxisOf(data, view, *painter.device());
    if (data.messageMode) {
        paintLabels(painter, data, view, labels);
        return;
    }
    drawLeftOut(painter, data, view);
    drawVerticalLines(painter, data, view, labels);
    if (!data.multiGraphs.empty()) {
        drawCurves(painter, data, view, data.multiGraphs, content.blocks.multiGraphs);
        drawZeroLine(painter, view, "lightGray");
    }
    drawCurves(painter, data, view, data.graphs, content.blocks.graphs);
    drawZeroLine(painter, view, "black");
    paintLabels(painter, data, view, labels);
    paintMarks(painter, data, view, marksOf(content));
}

PictureBytes drawingBytes(const QString &kind, const Drawing &drawing)
{
    return paint(kind, drawing);
}

PictureBytes pictureBytes(const QString &kind, const PictureContent &content)
{
    return paint(kind, drawingOf(content));
}

QString savePicture(const QString &path, const PictureContent &content)
{
    return saveDrawing(path, drawingOf(content));
}

QString saveDrawing(const QString &path, const Drawing &drawing)
{
    const QString kind = QFileInfo(path).suffix().toLower();
    if (kind != "png" && kind != "svg" && kind != "pdf")
        return QString("Cannot write %1: its name must end with .png, .svg or .pdf.").arg(path);
    const PictureBytes picture = paint(kind, drawing);
    if (!picture.problem.isEmpty())
        return path + " was not written: " + picture.problem + ".";
    return adviceOf(writeWhole(path, picture.bytes));
}

bool writeSamples(const TakeBytes &take, const PlotData &data, const IndexRange &points,
                  const GoOn &goOn)
{
    constexpr int chunkBytes = 1 << 16;
    const std::vector<Column> columns = visibleColumns(data);
    QByteArray text = tableHead(data, points, columns);
    const double count = std::max(1, points.end - points.begin);
    for (int i = points.begin; i < points.end; ++i) {
        appendRow(text, data, columns, i);
        if (text.size() < chunkBytes)
            continue;
        if (!take(text) || !goOn(int(100 * ((i - points.begin) / count))))
            return false;
        text.resize(0);
    }
    return take(text);
}

QString saveSamples(const QString &path, const PlotData &data, const IndexRange &points,
                    const GoOn &goOn)
{
    WholeFile file;
    WriteFailure failure = file.open(path);
    const auto take = [&](const QByteArray &text) {
        failure = file.write(text);
        return !failure;
    };
    if (!failure && writeSamples(take, data, points, goOn))
        failure = file.commit();
    return adviceOf(failure);
}

IndexRange wholePoints(const PlotData &data, const Range &x)
{
    const Range all = allOfX(data);
    const double begin = std::clamp(std::ceil(x.min), all.min, all.max - 1);
    const double end = std::clamp(std::floor(x.max) + 1, begin + 1, all.max);
    return {int(begin), int(end)};
}

} // namespace Plot
