#include "picture/rowmaxima.h"
#include "support/testmain.h"

#include <cmath>
#include <random>

using Plot::PictureRow;

/// Rows of a picture against a search through every value.
class TestRowMaxima : public QObject {
    Q_OBJECT

private slots:
    void equalsTheSearch_data();
    void equalsTheSearch();
    void beyondTheValues();
};

void TestRowMaxima::equalsTheSearch_data()
{
    QTest::addColumn<double>("first");
    QTest::addColumn<double>("last");
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("lines");
    QTest::newRow("many values a pixel") << 0.0 << 1000.0 << 37 << 5;
    QTest::newRow("many pixels a value") << 100.2 << 110.7 << 64 << 5;
    QTest::newRow("rows share lines") << 10.0 << 900.0 << 100 << 2;
}

void TestRowMaxima::equalsTheSearch()
{
    QFETCH(double, first);
    QFETCH(double, last);
    QFETCH(int, columns);
    QFETCH(int, lines);
    std::minstd_rand random(3);
    std::vector<std::vector<float>> values(5);
    std::vector<PictureRow> rows;
    for (auto &row : values) {
        for (int i = 0; i < 1000; ++i)
            row.push_back(float(random() % 10000));
        rows.push_back({row.data(), int(row.size()), 1 + 0.002 * double(rows.size())});
    }
    const std::vector<float> maxima = Plot::rowMaxima(rows, {first, last}, columns, lines);
    QCOMPARE(maxima.size(), std::size_t(columns * lines));
    for (int line = 0; line < lines; ++line) {
        for (int column = 0; column < columns; ++column) {
            float most = std::nanf("");
            for (int row = 0; row < 5; ++row) {
                if (row * lines / 5 != line)
                    continue;
                const PictureRow &from = rows[std::size_t(row)];
                const double left = (first + (last - first) * column / columns) * from.ratio;
                const double right = (first + (last - first) * (column + 1) / columns) * from.ratio;
                // The values that lie wholly in the pixel, and the one in which it begins.
                for (int k = 0; k < from.count; ++k) {
                    const bool begins = k - 0.5 > left && k + 0.5 <= right;
                    const bool holds = k - 0.5 <= left && k + 0.5 > left;
                    if ((begins || holds) && !(most >= from.values[k]))
                        most = from.values[k];
                }
            }
            QCOMPARE(maxima[std::size_t(line * columns + column)], most);
        }
    }
}

void TestRowMaxima::beyondTheValues()
{
    const std::vector<float> values = {1, 3, 2};
    const std::vector<float> maxima = Plot::rowMaxima({{values.data(), 3, 1}}, {-2.5, 4.5}, 7, 1);
    const float expected[] = {0, 0, 1, 3, 2, 0, 0};
    for (int i = 0; i < 7; ++i) {
        if (expected[i] == 0)
            QVERIFY(std::isnan(maxima[std::size_t(i)]));
        else
            QCOMPARE(maxima[std::size_t(i)], expected[i]);
    }
}

ZRT_UNIT_TEST_MAIN(TestRowMaxima)
#include "tst_rowmaxima.moc"
