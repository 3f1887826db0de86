#pragma once

#include "data/numberfile.h"
#include "forms/fileform.h"
#include "picture/arrayplot.h"

#include <memory>

class ArraysInfo;
class GreyView;
class PulsarGrafik;
class QStackedWidget;
class TableView;
namespace Ui {
class ArraysForm;
}

/// One text file of numbers: its columns or lines as curves, all of it as a grey picture or as a
/// table, with statistics and histogram of the shown part.
///
/// Construction empties the central widget, reads the file and installs the form. A file
/// without numbers is reported in a box; the central widget then stays empty and the form
/// deletes itself. The same, without a box, when the user stops the reading.
class ArraysForm : public FileForm {
    Q_OBJECT

public:
    /// @param filePath  full path
    /// @param parent  the main window
    ArraysForm(const QString &filePath, QWidget *parent);
    ~ArraysForm() override;

private:
    std::optional<Refusal> read();
    void offerWhatThereIs();
    void connectInputs();
    void fillCurveList();
    void checkCurves(bool all);
    void showCurves();
    void showPicture();
    void showTable();
    void showReport(const QStringList &lines);
    int xColumn() const;
    Results::ArrayAxis xAxis() const;
    int curveCount() const;
    QString curveName(int curve) const;

    const std::unique_ptr<Ui::ArraysForm> ui;
    NumberFile file;
    std::vector<int> columns; // that are curves
    QStackedWidget *stack = nullptr;
    PulsarGrafik *grafik = nullptr;
    GreyView *greys = nullptr;
    TableView *cells = nullptr;
    ArraysInfo *info = nullptr;
};
