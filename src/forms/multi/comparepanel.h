#pragma once

#include <QWidget>
#include <memory>

class QLabel;
class TableView;
namespace Ui {
class ComparePanel;
}

/// The panel at the right of compared days: what stands under the pointer, the list of differences,
/// and what was used.
class ComparePanel : public QWidget {
    Q_OBJECT

public:
    explicit ComparePanel(QWidget *parent = nullptr);
    ~ComparePanel() override;

    TableView *differences() const;
    void setCoords(const QString &text);
    /// Above what noise would have, or why there are none.
    void setDifferencesText(const QString &text);
    void setUsed(const QString &text);

signals:
    void tablesWanted();

private:
    const std::unique_ptr<Ui::ComparePanel> ui;
};
