#pragma once

#include "forms/sky/searchjobs.h"
#include "jobs/worker.h"

#include <QSplitter>
#include <QTimer>

class GrowthView;
class MapView;
class SmallPlot;

/// What is told of a candidate beside its stack: its place on the map, its significance against
/// dispersion and days, and its profile on the best of them. It reads what it shows by itself, once
/// the user stays at a candidate.
class CandidateView : public QSplitter {
    Q_OBJECT

public:
    explicit CandidateView(QWidget *parent = nullptr);

    /// A text in place of a candidate.
    void showMessage(const QString &message);
    /// @param axis  of the stack of the candidate, and so of its map
    void showCandidate(const DetailsRequest &wanted, const PlotAxis &axis);

private:
    void read();
    void take(const CandidateDetails &details);

    MapView *const map;
    SmallPlot *const overDispersion;
    GrowthView *const overDays;
    SmallPlot *const profile;
    DetailsRequest request;
    PlotAxis columns;
    QTimer delay{this}; // until the user stays at a candidate
    Jobs::Worker reader;
};
