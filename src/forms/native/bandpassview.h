#pragma once

#include "picture/zoom.h"

#include <QWidget>
#include <optional>
#include <vector>

/// Mean and sigma of every channel, each on a scale around the mean of all. A tool tip tells the
/// numbers under the pointer. A click on a channel, or Left, Right and Space, asks to
/// switch it off or on.
class BandpassView : public QWidget {
    Q_OBJECT

public:
    explicit BandpassView(QWidget *parent = nullptr);

    /// @param means, sigmas  one per band; NaN where nothing is known
    void setValues(std::vector<double> means, std::vector<double> sigmas);
    void setFrequencies(const std::vector<double> &fbands) { frequencies = fbands; }
    /// @param channels  true where a band is off; bands beyond its end are on
    void setChannelsOff(const std::vector<bool> &channels);

    QSize sizeHint() const override { return {200, 130}; }
    QSize minimumSizeHint() const override { return {150, 100}; }

signals:
    /// The user switches a channel; its index from 0.
    void toggled(int channel);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    int channelAt(int x) const;
    bool isOff(int channel) const;
    QString channelText(int channel) const;
    std::optional<Plot::Range> scaleOf(const std::vector<double> &values) const;
    QString titleOf(const QString &name, const std::vector<double> &values) const;
    void paintBars(QPainter &painter, const std::vector<double> &values, const QRect &place,
                   const QColor &colour) const;

    std::vector<double> mean;
    std::vector<double> sigma;
    std::vector<double> frequencies;
    std::vector<bool> off;
    int current = 0; // under the keyboard's cursor
};
