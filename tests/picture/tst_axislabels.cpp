#include "picture/axislabels.h"

#include "picture/straightplot.h"
#include "picture/ticks.h"
#include "support/testmain.h"

namespace {

const QSize usualSize(690, 400); // leaves the curves 600 x 300

int sevenEach(const QString &text)
{
    return 7 * text.size();
}

QString listed(const std::vector<Plot::Label> &labels)
{
    QStringList texts;
    for (const auto &[position, text] : labels)
        texts.append(QString("%1 %2").arg(position.x()).arg(text));
    return texts.join("; ");
}

QString yTexts(double low, double high, int precision, const Plot::Zoom &zoom = {})
{
    const PlotData data = TestSupport::dataOf({{1, 2}}, 100, low, high);
    const auto y = Plot::yAxisLabels(Plot::viewOf(data, {690, 250}, zoom), precision, sevenEach);
    return y.base + listed(y.labels);
}

QString ticks(double low, double high, double least)
{
    const Plot::Ticks found = Plot::roundTicks(low, high, least);
    QStringList texts;
    for (const double value : found.values)
        texts << Plot::tickText(value, found.step);
    return texts.join(' ');
}

PlotData withRows(int points)
{
    PlotData data = TestSupport::dataOf({std::vector<float>(size_t(points), 1)}, points);
    data.rowNames = QStringList{"point", "UTC"};
    data.textX2 = [](int i) { return QString("12:10:%1.000").arg(i % 60, 2, 10, QChar('0')); };
    return data;
}

QString rowAt(const PlotData &data, int row, const Plot::Zoom &zoom)
{
    const Plot::View view = Plot::viewOf(data, usualSize, zoom);
    std::vector<Plot::Label> labels;
    const int baseline = view.height - Plot::rowHeights(view, data, 15)[size_t(row)];
    for (const Plot::Label &label : Plot::xAxisLabels(view, data, sevenEach, 15).labels)
        if (label.position.y() == baseline)
            labels.push_back(label);
    return listed(labels);
}

} // namespace

class TestAxisLabels : public QObject {
    Q_OBJECT

private slots:
    void roundValues();
    void yFitsItsRoom();
    void xRows();
    void neverCollide();
};

void TestAxisLabels::roundValues()
{
    QCOMPARE(ticks(0.13, 0.87, 0.15), QString("0.2 0.4 0.6 0.8"));
    QCOMPARE(ticks(-3.5, 4, 2), QString("-2 0 2 4"));       // a step that is wanted exactly stays
    QCOMPARE(ticks(0.1, 0.3, 0.1), QString("0.1 0.2 0.3")); // both ends in spite of rounding
    QCOMPARE(ticks(2.4e7, 2.4e7 + 100, 30), QString("2.400000e7 2.400005e7 2.400010e7"));
    QCOMPARE(ticks(0, 1e-9, 5e-10), QString("0 5e-10 1.0e-9"));
    QCOMPARE(ticks(1, 0, 1) + ticks(0, NAN, 1) + ticks(0, 1, 0) + ticks(0, 1, 1e-9), QString());
    QCOMPARE(Plot::exponentText(-123456, 1000), QString("-1.23e5"));
}

void TestAxisLabels::yFitsItsRoom()
{
    QCOMPARE(yTexts(0, 150, 0), QString("14 0; 14 50; 14 100; 14 150")); // as it always was
    // six characters end before the plot only further left
    QCOMPARE(yTexts(0, 150, 3), QString("22 0.000; 15 50.000; 8 100.000; 8 150.000"));
    QCOMPARE(yTexts(0, 2.4e7, 0), QString("14 0; 14 8.0e6; 14 1.60e7; 14 2.40e7"));
    // decimals go before exponents come
    QCOMPARE(yTexts(3420, 4110, 3), QString("14 3420; 14 3650; 14 3880; 14 4110"));
    // values that differ in the last of many digits only
    QCOMPARE(yTexts(0, 1e9, 0, {{}, Plot::Range{5e8, 5e8 + 1500}}),
             QString("5.000000e8 +14 +0; 14 +500; 14 +1000; 14 +1500"));
    QCOMPARE(yTexts(0, 1, 3, {{}, Plot::Range{0.0578174, 0.0578206}}),
             QString("0.057818 +14 +0; 14 +1e-6; 14 +2e-6"));
    // a part has round values, wherever they come to stand
    PlotData spectrum = TestSupport::dataOf({{1, 2}}, 100, 0, 100);
    spectrum.isLogarithmic = true;
    spectrum.yLeast = 0.01;
    const auto log = Plot::yAxisLabels(Plot::viewOf(spectrum, {690, 250}), 0, sevenEach);
    QCOMPARE(listed(log.labels), QString("14 0.01; 14 0.1; 14 1; 14 10; 14 100"));
    QCOMPARE(log.labels[1].position.y() - log.labels[2].position.y(), 37); // a quarter of 150
    QCOMPARE(yTexts(0, 150, 3, {{}, Plot::Range{33, 103}}), QString("14 40; 14 60; 14 80; 14 100"));
}

void TestAxisLabels::xRows()
{
    PlotData data = withRows(1000);
    const Plot::Zoom part = {Plot::Range{101.5, 141.5}, {}};
    // round points, and the time of each, to seconds where these tell them apart
    QCOMPARE(rowAt(data, 0, part), QString("187 110; 337 120; 487 130; 637 140"));
    QCOMPARE(rowAt(data, 1, part),
             QString("187 12:10:50; 337 12:10:00; 487 12:10:10; 632 12:10:20"));
    data.firstPoint = 40000; // numbers are those of the recording
    data.pointStep = 100;
    QCOMPARE(rowAt(data, 0, part), QString("187 51000; 337 52000; 487 53000; 637 54000"));
    data.pointStep = 0;
    data.x = {"frequency", "Hz", 0, 0.01, {}};
    QCOMPARE(rowAt(data, 0, part), QString("187 1.1 Hz; 337 1.2 Hz; 487 1.3 Hz; 637 1.4 Hz"));
    // unequal steps: as round as each place allows, none twice
    data.x = {"period", "s", 0, 1, {}};
    for (int i = 0; i < 1000; ++i)
        data.x.values.push_back(std::pow(1.01, i));
    QCOMPARE(rowAt(data, 0, part).section("; ", 0, 2),
             QString("62 2.75 s; 142 2.90 s; 243 3.10 s"));

    const Plot::View view = Plot::viewOf(data, usualSize, part);
    QCOMPARE(listed(Plot::axisNames(view, data, sevenEach, 15)), QString("21 point; 35 UTC"));
}

// Texts of any width in views of any part stand apart, also the last two.
void TestAxisLabels::neverCollide()
{
    for (const int length : {3, 12, 20, 40}) {
        PlotData data = withRows(5000);
        data.textX1 = [length](int i) { return QString::number(i).rightJustified(length, '0'); };
        data.textX3 = data.textX1;
        for (int width = 150; width < 1300; width += 77) {
            for (const double shown : {5000.0, 1234.5, 37.0, 4.0}) {
                Plot::Zoom zoom;
                if (shown < 5000)
                    zoom.x = Plot::Range{700.3, 700.3 + shown};
                const Plot::View view = Plot::viewOf(data, {width, 300}, zoom);
                const auto labels = Plot::xAxisLabels(view, data, sevenEach, 15).labels;
                for (size_t i = 1; i < labels.size(); ++i) {
                    const auto &[before, text] = labels[i - 1];
                    if (before.y() == labels[i].position.y())
                        QVERIFY(before.x() + sevenEach(text) < labels[i].position.x());
                }
            }
        }
    }
}

ZRT_UNIT_TEST_MAIN(TestAxisLabels)

#include "tst_axislabels.moc"
