#pragma once

#include "picture/arrayplot.h"

#include <QPointF>
#include <QTimer>
#include <QWidget>
#include <memory>

class PulsarGrafik;
class StatisticsModel;
namespace Ui {
class ArraysInfo;
}

/// The panel beside curves of text files: which points are shown, coordinates under the
/// pointer, statistics and histogram of the shown or selected points, and a report.
class ArraysInfo : public QWidget {
    Q_OBJECT

public:
    /// @param grafik  plot whose pointer and blue rectangle are followed; outlives the panel
    explicit ArraysInfo(PulsarGrafik *grafik, QWidget *parent = nullptr);
    ~ArraysInfo() override;

    /// Shows these curves in the plot. Its zoom stays where they are as long as those before.
    void setSeries(std::vector<ArrayPlot::Series> series, Results::ArrayAxis x,
                   const QStringList &source);
    /// Off where there is no plot whose points could be chosen.
    void setPointsEnabled(bool enabled);
    void setReport(const QStringList &lines);
    void setCoordsText(const QString &text);

public slots:
    void changePoints();
    void resetPoints();

protected:
    /// Enter in a field shows the points.
    void keyPressEvent(QKeyEvent *event) override;

private:
    void setCoords(QPointF coords, const QVector<QString> &labels);
    ArrayPlot::IndexRange visiblePoints() const;
    void showPoints();
    void showStatistics();

    const std::unique_ptr<Ui::ArraysInfo> ui;
    PulsarGrafik *const plot;
    StatisticsModel *const statistics;
    std::vector<ArrayPlot::Series> shown;
    std::shared_ptr<const Results::ArrayAxis> axis;
    int length = 0;
    QTimer statisticsTimer{this}; // one computation for many changes
};
