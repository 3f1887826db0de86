#pragma once

#include <QObject>

namespace Fields {

/// Lets the wheel change fields with arrows and boxes of choice only while they have the focus;
/// else it scrolls the panel they stand in, so that scrolling past a field leaves its value alone.
/// For all windows of the program, as long as it lives.
class WheelFilter : public QObject {
    Q_OBJECT

public:
    explicit WheelFilter(QObject *parent);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace Fields
