#pragma once

#include "analyses/profiles/profilestack.h"

#include <QWidget>
#include <memory>

namespace Ui {
class ProfilePanel;
}

/// The panel at the right of average profiles: what stands under the pointer, the S/N of the
/// average and of the day there under their names, and what was found out.
class ProfilePanel : public QWidget {
    Q_OBJECT

public:
    explicit ProfilePanel(QWidget *parent = nullptr);
    ~ProfilePanel() override;

    void setCoords(const QString &text);
    /// Null: there is no average.
    void setAverage(const Tools::ProfileSnr *snr);
    /// @param title  its date
    void setDay(const QString &title, const Tools::ProfileSnr &snr,
                const Tools::ChiSquared &chiSquared);
    void clearDay();
    void setResult(const QString &text);
    /// Whether there is a best value to take, and whether one is taken.
    void setTaking(bool hasBest, bool isMoved);

signals:
    void bestWanted();
    void backWanted();
    void tablesWanted();
    void timWanted();

private:
    void showSnr(const QString &column, const Tools::ProfileSnr *snr);

    const std::unique_ptr<Ui::ProfilePanel> ui;
};
