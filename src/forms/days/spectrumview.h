#pragma once

#include "analyses/days/fourierstack.h"

#include <QSplitter>
#include <memory>
#include <optional>
#include <vector>

class QAction;
class DaysView;
struct StackTexts;
class FourierGrafikInfo;
class PulsarGrafik;

/// Spectra or periodograms of days and their stack: above the picture day x frequency or period,
/// below the significance of the stack over the same axis, at the right what is told of both.
class SpectrumView : public QSplitter {
    Q_OBJECT

public:
    /// @param texts  outlive the view
    explicit SpectrumView(const StackTexts &texts, QWidget *parent = nullptr);

    using DayList = std::shared_ptr<const std::vector<Days::FourierDay>>;

    /// @param days    nobody changes them while they are shown
    /// @param chosen  one per day
    /// @param source  lines that explain saved data
    void showStack(const DayList &days, const std::vector<bool> &chosen,
                   const Days::FourierStack &stack, const QStringList &source);
    /// A text in place of the stack, and no days.
    void showMessage(const QString &message);

    /// For the spectrum of one recording: no picture of days, and nothing that is saved.
    void showOnlyLines();

    FourierGrafikInfo *panel() const { return info; }

    /// Goes to a line: its harmonics are marked, its fundamental is in sight.
    void goTo(int line);

    /// Value of each day at the bin under the cursor; minus infinity where there is none.
    std::vector<double> powersUnderCursor() const;
    /// Frequency of that bin on the axis, Hz; 0: the pointer was never over the pictures.
    double frequencyUnderCursor() const;
    /// Frequency at the telescope whose harmonics are marked, Hz; 0: none.
    double markedFrequency() const;

    void markDay(int day);

signals:
    void cursorMoved();
    void markedFrequencyChanged();
    void dayClicked(int day);
    /// A line of the stack, or a frequency (Hz at the telescope) where there is none, shall be left
    /// out: Ctrl and a click there, or X with the pointer there.
    void lineLeftOut(int line);
    void frequencyLeftOut(double frequency);
    /// The same where the frequency is left out already: it shall count again.
    ///
    /// @param tolerance  Hz
    void countAgainWanted(double frequency, double tolerance);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    struct Bins {
        std::size_t begin = 0;
        std::size_t last = 0;
    };
    Bins binsAround(double index) const;
    std::optional<std::size_t> leftOutBin() const;
    void pointAt(double index, int day);
    void moveCursor(double bin);
    void toggleLeftOut();
    double powerOf(int day, double bin) const;
    double ratioOf(const Days::FourierDay &day) const;
    const std::vector<float> &rowOf(int day) const;
    void markPeriod();
    void goToPeriod(const Days::FourierLine &line);
    QStringList placeText(double bin) const;
    QString coordsText(double index, int day) const;

    DaysView *picture = nullptr;
    PulsarGrafik *grafik = nullptr;
    FourierGrafikInfo *info = nullptr;
    DayList shownDays;
    Days::FourierStack stack;
    std::optional<double> cursorBin;
    double cursorIndex = 0; // that was pointed at
    int cursorDay = -1;     // in the picture of days; -1: in the plot
    QAction *leaveOut = nullptr;
    bool isOnlyLines = false;
    std::optional<double> markedPeriod; // s, of the line that was gone to
};
