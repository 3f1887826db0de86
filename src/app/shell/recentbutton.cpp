#include "app/shell/recentbutton.h"

#include <QDir>
#include <QFileInfo>
#include <QMenu>

RecentButton::RecentButton(QWidget *parent) : QToolButton(parent)
{
    files.restore();
    setObjectName("recentButton");
    setText("&Recent "); // with room for the arrow
    setToolTip("The last files with the command that opened them");
    setAutoRaise(true); // no higher than the status bar
    setPopupMode(QToolButton::InstantPopup);
    setMenu(new QMenu(this));
    menu()->setToolTipsVisible(true);
    setEnabled(!files.entries().isEmpty());
    connect(menu(), &QMenu::aboutToShow, this, &RecentButton::fillMenu);
}

void RecentButton::add(const QString &path, const QAction *command)
{
    files.add({path, command->objectName()});
    setEnabled(true);
}

QAction *RecentButton::lastCommand() const
{
    return files.entries().isEmpty() ? nullptr : commandOf(files.entries().first());
}

QAction *RecentButton::commandOf(const RecentFiles::Entry &entry) const
{
    return window()->findChild<QAction *>(entry.command);
}

void RecentButton::fillMenu()
{
    menu()->clear();
    int number = 0;
    for (const RecentFiles::Entry &entry : files.entries()) {
        QAction *const command = commandOf(entry);
        if (!command)
            continue;
        const QFileInfo info(entry.path);
        QString text = QString("%1   %2").arg(info.fileName(), titleOf(command));
        text.replace("&", "&&");
        if (++number < 10) // the key that chooses it
            text.prepend(QString("&%1 ").arg(number));
        QAction *const item = menu()->addAction(info.exists() ? text : text + " - missing");
        item->setToolTip(QDir::toNativeSeparators(entry.path));
        item->setEnabled(info.exists() && command->isEnabled());
        connect(item, &QAction::triggered, this,
                [this, command, path = entry.path] { emit chosen(command, path); });
    }
}

// "Native data - Fourier"
QString RecentButton::titleOf(QAction *command) const
{
    const QList<QMenu *> menus = window()->findChildren<QMenu *>();
    for (const QMenu *one : menus) {
        if (!one->title().isEmpty() && one->actions().contains(command))
            return one->title() + " - " + command->text();
    }
    return command->text();
}
