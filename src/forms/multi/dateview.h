#pragma once

#include "forms/multi/datereading.h"

#include <QSplitter>
#include <memory>

class PulsarGrafik;
class WaterfallView;
namespace Ui {
class DatePanel;
}

/// The stretch of one date: its bands over time above the sum with its base line, and statistics of
/// what is in sight or selected at the right. The part in sight stays from date to date.
class DateView : public QSplitter {
    Q_OBJECT

public:
    explicit DateView(QWidget *parent = nullptr);
    ~DateView() override;

    void showStretch(const std::shared_ptr<const DateStretch> &stretch,
                     const std::shared_ptr<const Days::DayPlan> &plan, const QStringList &used);
    void showMessage(const QString &message);

private:
    void showPart();
    void showWaterfall();
    void pointAt(double point, const QString &value);

    WaterfallView *waterfall = nullptr;
    PulsarGrafik *grafik = nullptr;
    QWidget *panel = nullptr;
    const std::unique_ptr<Ui::DatePanel> ui;
    std::shared_ptr<const DateStretch> stretch; // null while a message stands there
    std::shared_ptr<const Days::DayPlan> plan;
};
