#include "forms/days/sourcefield.h"

#include "analyses/days/dayplace.h"
#include "base/timetext.h"
#include "coords/pulsarcatalogue.h"
#include "coords/skyclock.h"

#include <QCompleter>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QStringListModel>
#include <cmath>
#include <numbers>

namespace {

constexpr int mostSuggestions = 12;
constexpr int textLines = 3;
constexpr double degree = std::numbers::pi / 180;

struct Place {
    QLineEdit *field;
    QString name;
    QString label;
    QString toolTip;
};

// The name takes the first row, the coordinates share the second.
void placeField(QGridLayout *grid, const Place &place)
{
    place.field->setObjectName(place.name);
    place.field->setToolTip(place.toolTip);
    place.field->setMinimumWidth(60);
    if (grid->isEmpty()) {
        place.field->setPlaceholderText(place.label);
        grid->addWidget(place.field, 0, 0, 1, 4);
        return;
    }
    auto *const label = new QLabel(place.label);
    label->setBuddy(place.field);
    const int column = grid->itemAtPosition(1, 0) != nullptr ? 2 : 0;
    grid->addWidget(label, 1, column);
    grid->addWidget(place.field, 1, column + 1);
}

QString beamText(const Tools::SkyPosition &position, const SourceField::Setting &setting)
{
    const Days::Beam beam = Days::nearestBeam(setting.site, position, setting.date);
    if (!beam.isKnown())
        return "The site is not known: choose module and ray.";
    const double off = Tools::declinationOfDate(position, setting.date) - beam.delta;
    return QString("Nearest: %1 module %2 ray %3, %4 deg off")
        .arg(setting.site)
        .arg(beam.module)
        .arg(beam.ray)
        .arg(off / degree, 0, 'f', 2);
}

} // namespace

SourceField::SourceField(QWidget *parent)
    : QWidget(parent), source(new QLineEdit(this)), alfa(new QLineEdit(this)),
      delta(new QLineEdit(this)), text(new QLabel(this)), names(new QStringListModel(this))
{
    auto *const grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(2);
    placeField(grid,
               {source, "source", "B or J name", "A known pulsar: B or J name, or a part of it"});
    placeField(grid, {alfa, "alfa", "RA", "Right ascension of 2000, hh:mm:ss"});
    placeField(grid, {delta, "delta", "Dec", "Declination of 2000, +dd:mm:ss"});
    text->setObjectName("sourceText");
    text->setWordWrap(true);
    text->setTextFormat(Qt::PlainText);
    text->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    text->setToolTip("Declinations of beams are nominal");
    text->setMinimumHeight(textLines * text->fontMetrics().lineSpacing()); // no field moves
    grid->addWidget(text, 2, 0, 1, 4);

    auto *const completer = new QCompleter(names, this);
    completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
    completer->setMaxVisibleItems(mostSuggestions);
    source->setCompleter(completer);
    connect(source, &QLineEdit::textEdited, this, &SourceField::suggest);
    connect(source, &QLineEdit::textChanged, this, &SourceField::changeName);
    for (const QLineEdit *const coordinate : {alfa, delta})
        connect(coordinate, &QLineEdit::textChanged, this, &SourceField::changeCoordinate);
    showPosition();
}

void SourceField::setSetting(const Setting &next)
{
    setting = next;
    showPosition();
}

std::optional<Tools::SkyPosition> SourceField::position() const
{
    Days::DayPlace place;
    place.source = source->text().trimmed();
    place.alfa = alfa->text().trimmed();
    place.delta = delta->text().trimmed();
    return Days::sourceOf(place);
}

QString SourceField::description(const Tools::SkyPosition &position, const Setting &setting)
{
    if (!setting.date.isValid())
        return {};
    const QDateTime culmination =
        Tools::nearestCulmination(position, QDateTime(setting.date, QTime(12, 0), Qt::UTC));
    if (!culmination.isValid())
        return "It never crosses the beams.";
    return QString("Culminates %1 UTC\n%2\n%3 points = %4 s around it")
        .arg(textOfTime(culmination, "yyyy-MM-dd hh:mm:ss"), beamText(position, setting))
        .arg(setting.spanPoints)
        .arg(setting.spanPoints * setting.tresolution, 0, 'f', 1);
}

void SourceField::suggest(const QString &typed)
{
    names->setStringList(Tools::suggestPulsars(Tools::knownPulsars(), typed, mostSuggestions));
}

// A name brings its coordinates, which stand there grey, and takes the place of typed ones.
void SourceField::changeName()
{
    if (!source->text().isEmpty()) {
        alfa->clear();
        delta->clear();
    }
    showPosition();
    emit edited();
}

void SourceField::changeCoordinate(const QString &typed)
{
    if (!typed.isEmpty())
        source->clear();
    showPosition();
    emit edited();
}

void SourceField::showPosition()
{
    const QString name = source->text().trimmed();
    const std::optional<Tools::SkyPosition> place = position();
    const bool isNamed = place && !name.isEmpty();
    alfa->setPlaceholderText(isNamed ? Tools::rightAscensionText(place->alfa) : "hh:mm:ss");
    delta->setPlaceholderText(isNamed ? Tools::declinationText(place->delta) : "+dd:mm:ss");
    if (place)
        text->setText(description(*place, setting));
    else if (name.isEmpty())
        text->setText("A known pulsar, or RA and Dec of 2000");
    else
        text->setText("Nearest names: " +
                      Tools::suggestPulsars(Tools::knownPulsars(), name, 4).join(", "));
}
