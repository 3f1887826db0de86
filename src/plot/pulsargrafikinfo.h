#pragma once

#include <QPointF>
#include <QVector>
#include <QWidget>
#include <array>
#include <memory>

class PulsarGrafik;
class QLineEdit;
namespace Ui {
class PulsarGrafikInfo;
}

/// The panel at the right of the plot: number of points, threshold of the Fourier actions,
/// the four dispersions, the choice among several results, coordinates under the pointer and
/// the text of the last calculation. It only asks for changes; the form makes them.
class PulsarGrafikInfo : public QWidget {
    Q_OBJECT

public:
    /// @param grafik  plot whose pointer coordinates are shown; outlives the panel or is null
    explicit PulsarGrafikInfo(PulsarGrafik *grafik, QWidget *parent = nullptr);
    ~PulsarGrafikInfo() override;

    /// Threshold in sigmas, at least 1.
    int maxSigma() const;

    /// Number of X positions to show in the field.
    void setPoints(int points);
    /// pc/cm^3
    void setDispersions(const std::array<double, 4> &dispersions);
    /// Offers a choice among named results, or none when there are no names.
    void setMultiResults(const QVector<QString> &names);
    /// Texts of the last calculation and of what the plot shows of it, as HTML.
    ///
    /// @param problems  lines of plain text that stand above them in red
    void setTexts(const QString &calculation, const QString &grafik,
                  const QStringList &problems = {});
    /// A text in their place, before there is a calculation.
    void showNote(const QString &note);

    /// Enable what the chosen action can use.
    void setFourierControls(bool enabled);
    void setDispersionControls(bool enabled);

signals:
    /// A link in the texts was clicked.
    void linkClicked(const QUrl &link);
    /// Redraw with this threshold, in sigmas.
    void changeMaxSigma(int sigma);
    /// Redraw with these four dispersions, pc/cm^3.
    void changeDispersions(QVector<double> dispersions);
    /// Show only the result of this index.
    void showMultiResult(int index);
    /// Show all results again.
    void returnMultiGrafiks();
    /// Draw this many points; 0: as many as the recording has.
    void pointsRequested(int points);

public slots:
    void changePoints();
    void resetPoints();
    /// Shows point index and value with the digits a pixel of the plot can tell apart, and the
    /// label texts below, one a line.
    void setCoords(QPointF coords, const QVector<QString> &labels);

protected:
    /// Enter in a field presses the button of its group.
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    std::array<QLineEdit *, 4> dispersionFields() const;
    void readDispersions();
    void reserveCoordsHeight();

    const std::unique_ptr<Ui::PulsarGrafikInfo> ui;
    PulsarGrafik *const plot;
};
