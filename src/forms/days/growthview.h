#pragma once

#include "analyses/days/fourierstack.h"

#include <QWidget>
#include <vector>

/// How the significance of a line grows with the number of days, against its square root: a signal
/// of the sky follows the straight line, interference of some days makes steps.
class GrowthView : public QWidget {
    Q_OBJECT

public:
    using QWidget::QWidget;

    void setGrowth(const std::vector<Days::GrowthPoint> &points);

    QSize sizeHint() const override { return {240, 120}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    std::vector<Days::GrowthPoint> growth;
};
