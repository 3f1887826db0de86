#pragma once

#include "data/numberfile.h"
#include "forms/fileform.h"
#include "picture/arrayplot.h"

#include <QDir>
#include <QTimer>
#include <map>
#include <memory>

class ArraysInfo;
class PulsarGrafik;
class QListWidgetItem;
namespace Ui {
class ArraysDirForm;
}

/// The text files of numbers in a directory: a list with small pictures, and one curve of each
/// picked file together in the plot. A file that holds no numbers stands in the list with the
/// reason.
///
/// Construction takes over the central widget. A directory without files is reported in a box;
/// the central widget then stays empty and the form deletes itself.
class ArraysDirForm : public FileForm {
    Q_OBJECT

public:
    /// @param folder  full path of the directory
    /// @param parent  the main window
    ArraysDirForm(const QString &folder, QWidget *parent);
    ~ArraysDirForm() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void endWork(const Jobs::Ending &ending) override;

private:
    void connectInputs();
    void listFiles(const QStringList &names);
    void lookAtNextFile();
    QString shownName(const QString &name) const;
    void describe(QListWidgetItem *item, const NumberFile &file);
    void readPicked();
    void takeFile(const QString &name, NumberFile file);
    void showPicked();
    void openCurrent();

    const std::unique_ptr<Ui::ArraysDirForm> ui;
    QWidget *const mainWindow;
    const QDir directory;
    PulsarGrafik *grafik = nullptr;
    ArraysInfo *info = nullptr;
    std::map<QString, NumberFile> picked; // by file name; read so far
    QString readingProblem;               // why picked files are missing
    QTimer lookTimer{this};               // looks at the files in view, one at a time
    QTimer pickTimer{this};
};
