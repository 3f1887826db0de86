#pragma once

#include "app/mainwindow.h"
#include "support/batchfolder.h"

namespace TestSupport {

/// A test of forms over directories: one window for all of its functions, beside the batch program.
class DaysFormTest : public BatchFolder {
protected:
    void showWindow()
    {
        qputenv("XDG_CONFIG_HOME", folder.path().toUtf8()); // of the batch program too
        window.resize(1280, 720);
        window.show();
    }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        Widget *const widget = window.findChild<Widget *>(name);
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }

    MainWindow window;
};

} // namespace TestSupport
