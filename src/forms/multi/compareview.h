#pragma once

#include "analyses/compare/comparedays.h"

#include <QSplitter>
#include <memory>

class ComparePanel;
class DaysView;
class DifferencesModel;
class PulsarGrafik;

/// Days under each other in greys above their mean day, on one axis of sidereal time, with a panel
/// at the right.
class CompareView : public QSplitter {
    Q_OBJECT

public:
    explicit CompareView(QWidget *parent = nullptr);

    using Products = std::shared_ptr<const Compare::CompareProducts>;
    using Compared = std::shared_ptr<const Compare::Comparison>;

    void showComparison(const Products &products, const Compared &comparison,
                        const std::vector<bool> &counts, const QString &used);
    void showMessage(const QString &message);
    /// Shows differences from the other days in place of sums.
    void showDifferences(bool differences);
    /// Frames the row of a day; -1: none.
    void markDay(int day);
    /// Differences of all days under the pointer; minus infinity where there is none.
    std::vector<double> differencesUnderCursor() const;

    ComparePanel *panel() const { return info; }

signals:
    void cursorMoved();
    void dayClicked(int day);
    /// The user opens a difference of the list.
    void opened(int day, int point);

private:
    void pointAt(double index, int day);
    void showRows();
    void chooseDifference(int row);
    void openDifference(int row);
    const std::vector<float> &rowOf(std::size_t day) const;
    QString coordsText(int point, int day) const;

    DaysView *picture = nullptr;
    PulsarGrafik *grafik = nullptr;
    ComparePanel *info = nullptr;
    DifferencesModel *const list;
    Products products;
    Compared comparison;
    std::vector<bool> counting; // of each day
    bool showsDifferences = false;
    int cursorPoint = -1;
    bool isLeft = false; // a viewer is about to take the place
};
