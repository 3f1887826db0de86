#pragma once

#include <QWidget>
#include <memory>
#include <vector>

class NativeView;
struct NativePicture;
namespace Ui {
class NativeInfo;
}

/// The panel at the right of the viewer: the coordinates under the pointer, the statistics of
/// what is in sight or selected, the bandpass with its switches, and notes about the file.
class NativeInfo : public QWidget {
    Q_OBJECT

public:
    explicit NativeInfo(QWidget *parent = nullptr);
    ~NativeInfo() override;

    void setCoords(const QString &text);
    /// Statistics of what is in sight or selected, and the bandpass of what is in sight.
    ///
    /// @param name  of the series
    void showPart(const NativePicture &picture, const NativeView &view, const QString &name,
                  double tresolution);
    void setNotes(const QString &text);
    void setFrequencies(const std::vector<double> &fbands);
    void setChannelsOff(const std::vector<bool> &off);

signals:
    /// The user switches a channel; its index from 0.
    void channelToggled(int channel);
    void allOnWanted();

protected:
    void changeEvent(QEvent *event) override;

private:
    void reserveCoordsHeight();

    const std::unique_ptr<Ui::NativeInfo> ui;
};
