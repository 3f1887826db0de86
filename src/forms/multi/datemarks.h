#pragma once

#include <QDate>
#include <QSet>
#include <QString>

/// Dates of a directory that the user marked. They are kept in the user's settings, for a directory
/// may be shared, or not be written at all.
class DateMarks {
public:
    explicit DateMarks(const QString &directory);

    bool contains(const QDate &date) const { return dates.contains(date); }
    /// Keeps it at once.
    void set(const QDate &date, bool isMarked);

private:
    QString key;
    QSet<QDate> dates;
};
