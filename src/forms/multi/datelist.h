#pragma once

#include <QScrollArea>
#include <QStringList>
#include <vector>

class ClickLable;

/// Dates as links, one below the other: a date that is shown is bold, one that the user marked red.
/// A click shows a date; so do the arrow keys, Home and End, which go by the dates that can be
/// shown. M marks the date that is shown.
class DateList : public QScrollArea {
    Q_OBJECT

public:
    explicit DateList(QWidget *parent = nullptr);

    struct Date {
        QString text;
        QString reason; ///< why it cannot be shown; empty otherwise
        bool isMarked = false;
    };
    void setDates(std::vector<Date> newDates);
    int count() const { return int(dates.size()); }
    /// Shows a date; -1: none.
    void setCurrent(int index);
    int current() const { return shown; }
    void setMarked(int index, bool isMarked);
    /// The date that can be shown next to one, a step of 1 or -1 away; -1 where there is none.
    int neighbour(int index, int step) const;

signals:
    /// The user wants another date.
    void wanted(int index);
    void markWanted();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void go(int index);

    std::vector<Date> dates;
    std::vector<ClickLable *> labels; // children of the scrolled widget
    int shown = -1;
};
