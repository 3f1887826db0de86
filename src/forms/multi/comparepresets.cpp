#include "forms/multi/comparepresets.h"

#include "analyses/compare/comparetables.h"
#include "data/truenumbers.h"
#include "forms/days/placefields.h"
#include "forms/multi/comparetexts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>
#include <algorithm>

void fillPlace(QWidget *form, PlaceFields &place, const RecordingSet &set)
{
    const auto first = std::find_if(set.entries.begin(), set.entries.end(),
                                    [](const RecordingEntry &entry) { return entry.isUsable(); });
    const ObservationData &header = first->header;
    form->findChild<QSpinBox *>("module")->setValue(moduleNumber(header, 0));
    form->findChild<QSpinBox *>("ray")->setValue(rayNumber(header, 0));
    form->findChild<QLineEdit *>("dispersion")
        ->setText(QString::number(std::max(0, header.dispersion)));
    const SharedStart start =
        sharedStart(set, place.findChild<QLineEdit *>("clockOffset")->text().toDouble());
    int points = Days::DayPlace().points;
    while (points > Days::fewestPoints && points + start.pointsBefore >= first->completePoints)
        points /= 2;
    form->findChild<QComboBox *>("points")->setCurrentText(QString::number(points));
    form->findChild<QCheckBox *>("nearestBeam")->setChecked(!Days::siteOf(first->path).isEmpty());
    if (!start.isKnown) {
        place.chooseFirstPoint(0);
        return;
    }
    Days::DayPlace chosen;
    chosen.siderealTime = Compare::siderealText(start.siderealTime).section('.', 0, 0);
    place.findChild<QLineEdit *>("siderealTime")->setText(chosen.siderealTime);
    place.choose(chosen);
}
