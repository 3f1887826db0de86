#pragma once

#include "app/mainwindow.h"
#include "plot/pulsargrafik.h"
#include "support/messageboxcatcher.h"
#include "support/recordings.h"

#include <QPushButton>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QtTest>
#include <memory>

namespace TestSupport {

/// A test of forms: each of its functions gets an empty folder and a window of its own.
class FormTest : public QObject {
    Q_OBJECT

protected slots:
    void init();
    void cleanup();

protected:
    QString file(const QByteArray &bytes, const QString &name = "x.pnt") const
    {
        return writeFile(*folder, name, bytes);
    }

    template <typename Widget>
    Widget *find(const QString &name) const
    {
        Widget *const widget = window->findChild<Widget *>(name);
        if (!widget)
            qFatal("no widget %s", qPrintable(name));
        return widget;
    }
    void click(const char *button) const { find<QAbstractButton>(button)->click(); }
    /// Types into an empty field.
    void type(const char *field, const QString &text) const;
    bool isMarked(const QString &field) const; ///< as one that was refused
    const PlotData &shown() const { return find<PulsarGrafik>("grafik")->data(); }
    /// What the panel beside the plot tells of the last calculation.
    const QTextDocument &reportDocument() const
    {
        return *find<QWidget>("texts")->findChild<QTextDocument *>();
    }
    QString report() const { return reportDocument().toPlainText(); }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<MainWindow> window;
};

} // namespace TestSupport
