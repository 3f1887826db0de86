#pragma once

#include "forms/sky/celldays.h"
#include "forms/sky/skypage.h"
#include "picture/mappicture.h"

#include <optional>

class MapPanel;
class MapView;
class PulsarGrafik;
class QSplitter;

/// A map of the sky, below it the stack of the cell that was clicked, at the right what is told of
/// both.
class MapPage : public SkyPage {
    Q_OBJECT

public:
    MapPage(const Sky::SkyAnalysis &skyAnalysis, const QString &path, Jobs::Worker &jobs,
            QWidget *form);
    ~MapPage() override;

    QWidget *view() const override;
    void fitToWindow() override;

protected:
    std::vector<Sky::MapChoice> mapsMeanwhile(const Sky::SkyPlan &plan) const override;
    void showMeanwhile(const SkyMaps &maps) override;
    void showMessage(const QString &message) override;
    void showStacks() override;

private:
    void connectViews();
    void showMaps(const SkyMaps &next);
    void chooseStrongest();
    void point(const Plot::MapPlace &place);
    Plot::MapPlace highestAt(const Plot::MapPlace &place) const;
    SkyPlace placeOf(const Plot::MapPlace &place) const;
    QString coordsText(const Plot::MapPlace &place) const;
    void openCell(const Plot::MapPlace &place);
    void goToLine(double bin);
    void markPeriod();
    void openDays();
    QSize pictureSize() const;
    void saveMap();
    void savePicture();

    QSplitter *const splitter;
    MapView *const map;
    PulsarGrafik *const grafik;
    MapPanel *const panel;
    SkyMaps maps;
    bool hasCell = false;
    std::optional<double> markedPeriod; // s, of the line that was gone to
    Jobs::Worker mapper;
};
