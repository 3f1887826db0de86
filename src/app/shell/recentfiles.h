#pragma once

#include <QList>
#include <QString>

/// The files and directories that were opened last, each with the command that opened it.
/// Remembered between runs.
class RecentFiles {
public:
    struct Entry {
        QString path;
        QString command; ///< object name of its action

        bool operator==(const Entry &other) const
        {
            return path == other.path && command == other.command;
        }
    };
    static constexpr int most = 12;

    /// Latest first.
    const QList<Entry> &entries() const { return list; }

    /// Puts an entry in front, where it stands once, and writes the list to the store.
    void add(const Entry &entry);
    void restore();

private:
    QList<Entry> list;
};
