#pragma once

#include <QElapsedTimer>
#include <QProgressBar>

/// A progress bar that says beside the percentage how long the work will still take, judged by
/// the time it took so far. The work begins when the bar appears or its value goes back.
class TimedProgressBar : public QProgressBar {
    Q_OBJECT

public:
    explicit TimedProgressBar(QWidget *parent = nullptr);

    QString text() const override;

    /// The text after so many milliseconds: "40 %, 12 s left". The first two seconds and the
    /// first two percent tell nothing about the rest.
    static QString remainingText(qint64 elapsedMs, int percent);

protected:
    void showEvent(QShowEvent *event) override;

private:
    QElapsedTimer sinceBegin;
    int lastValue = 0;
};
