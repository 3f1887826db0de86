#pragma once

#include "forms/profiles/optimiseview.h"
#include "forms/profiles/profilejobs.h"
#include "picture/profileplot.h"

#include <QSplitter>
#include <memory>

class ArrivalsModel;
class DaysView;
class ProfilePanel;
class PulsarGrafik;
class QTabWidget;
class TableView;

/// What is shown of the profiles of many days: the days in greys over phase above their average,
/// below them on pages the S/N by day, its growth, the trials and the arrival times, and a panel at
/// the right. All follow the day under the pointer.
class ProfileView : public QSplitter {
    Q_OBJECT

public:
    /// @param scanned  what the page of trials is about
    explicit ProfileView(Plot::Scanned scanned, QWidget *parent = nullptr);

    using Products = std::shared_ptr<const ProfileProducts>;
    using Outcome = std::shared_ptr<const Profiles::ProfileOutcome>;

    /// @param plan  of the products, with the parameters of the average
    void showOutcome(const Products &products, const Outcome &outcome,
                     const Profiles::ProfilePlan &plan);
    void showMessage(const QString &message);
    /// The trials have no result: the user has stopped them.
    void stopTrials();
    /// Marks a day in all views; -1: none.
    void setDay(int day);

    ProfilePanel *panel() const { return info; }

signals:
    void dayClicked(int day);
    /// The user takes these values for all days.
    void valuesTaken(const OptimiseView::Place &place);

private:
    PulsarGrafik *addPlot(const QString &name, const QString &title, const QString &toolTip);
    void buildPages();
    void connectPlots();
    void pointAtPhase(double index, int day);
    void showRows();
    void showScan();
    void showTrialsMessage(const QString &message);
    void showDay();
    void mark(PulsarGrafik *plot, std::optional<double> index) const;
    void takeBest();
    int dayAtGrowth(double index) const;
    std::optional<double> growthIndex() const;
    OptimiseView::Place placeNow() const;

    const Plot::Scanned scanned;
    DaysView *picture = nullptr;
    PulsarGrafik *grafik = nullptr;
    QTabWidget *pages = nullptr;
    PulsarGrafik *byDay = nullptr;
    PulsarGrafik *growth = nullptr;
    PulsarGrafik *trials = nullptr;
    OptimiseView *both = nullptr; // of periods alone
    TableView *arrivals = nullptr;
    ArrivalsModel *const arrivalsModel;
    ProfilePanel *info = nullptr;
    Products products;
    Outcome outcome;
    double foldPeriod = 0; // s, barycentric
    int currentDay = -1;
};
