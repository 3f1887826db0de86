#pragma once

#include "app/shell/recentfiles.h"

#include <QToolButton>

class QAction;

/// The button "Recent" of the status bar: a menu of the last files and directories, each with
/// the command that opened it. What is missing, or whose command cannot run, is grey.
class RecentButton : public QToolButton {
    Q_OBJECT

public:
    explicit RecentButton(QWidget *parent = nullptr);

    /// Puts a path in front.
    void add(const QString &path, const QAction *command);

    /// The command of the latest entry; null without one.
    QAction *lastCommand() const;

signals:
    void chosen(QAction *command, const QString &path);

private:
    void fillMenu();
    QAction *commandOf(const RecentFiles::Entry &entry) const;
    QString titleOf(QAction *command) const;

    RecentFiles files;
};
