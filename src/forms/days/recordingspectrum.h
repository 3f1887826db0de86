#pragma once

#include "app/shell/jobprogress.h"
#include "jobs/worker.h"

#include <QWidget>

class SpectrumView;
class QComboBox;
class QLabel;

/// A window with the whitened spectrum of one recording from its begin on, and its lines and
/// harmonic sums, in the same pictures as the spectra of many days.
class RecordingSpectrum : public QWidget {
    Q_OBJECT

public:
    struct Request {
        QString path;
        int module = 1; ///< the telescope's number
        int ray = 1;    ///< likewise
        double dispersion = 0;
        int points = 0; ///< a power of two; 0: as many as there are, mostPoints at most
    };
    static constexpr int mostPoints = 1 << 22;

    /// Shows itself and starts to compute; closing ends both.
    RecordingSpectrum(const Request &wanted, QWidget *parent);
    ~RecordingSpectrum() override;

private:
    void compute();

    Request request;
    QComboBox *const points;
    QLabel *const problem;
    SpectrumView *const view;
    Jobs::Worker worker;
    JobProgress progress;
};
