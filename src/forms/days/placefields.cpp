#include "forms/days/placefields.h"

#include "app/shell/settings.h"
#include "forms/days/sourcefield.h"
#include "ui_placefields.h"

namespace {

constexpr char clockOffsetKey[] = "clockOffset";

} // namespace

PlaceFields::PlaceFields(QWidget *parent) : QWidget(parent), ui(new Ui::PlaceFields)
{
    ui->setupUi(this);
    setFocusProxy(ui->sourceField);
    ui->clockOffset->setText(Settings::store().value(clockOffsetKey, "0").toString());
    for (const QRadioButton *button : findChildren<QRadioButton *>())
        connect(button, &QRadioButton::toggled, this, &PlaceFields::chosen);
    // Who types a start means it.
    const std::pair<QLineEdit *, QRadioButton *> starts[] = {{ui->firstPoint, ui->isFirstPoint},
                                                             {ui->zrtUtc, ui->isZrtUtc},
                                                             {ui->siderealTime, ui->isSidereal}};
    for (const auto &[field, button] : starts)
        connect(field, &QLineEdit::textEdited, button, [button] { button->setChecked(true); });
    for (const QLineEdit *field : ui->sourceField->findChildren<QLineEdit *>())
        connect(field, &QLineEdit::textEdited, this, [this] { ui->isSource->setChecked(true); });
}

PlaceFields::~PlaceFields() = default;

SourceField *PlaceFields::sourceField() const
{
    return ui->sourceField;
}

bool PlaceFields::isSource() const
{
    return ui->isSource->isChecked();
}

void PlaceFields::chooseFirstPoint(int point)
{
    ui->firstPoint->setText(QString::number(point));
    ui->isFirstPoint->setChecked(true);
}

void PlaceFields::choose(const Days::DayPlace &place)
{
    if (!place.source.isEmpty() || !place.alfa.isEmpty())
        ui->isSource->setChecked(true);
    else if (!place.utc.isEmpty())
        ui->isZrtUtc->setChecked(true);
    else if (!place.siderealTime.isEmpty())
        ui->isSidereal->setChecked(true);
    else
        ui->isFirstPoint->setChecked(true);
}

void PlaceFields::setPointToolTip(const QString &text)
{
    ui->firstPoint->setToolTip(text);
}

// Texts of starts that are not chosen stay, and are no parameters.
bool PlaceFields::counts(const QWidget *field) const
{
    const std::pair<const QWidget *, const QRadioButton *> starts[] = {
        {ui->sourceField, ui->isSource},
        {ui->firstPoint, ui->isFirstPoint},
        {ui->zrtUtc, ui->isZrtUtc},
        {ui->siderealTime, ui->isSidereal}};
    for (const auto &[start, button] : starts) {
        if (start == field || start->isAncestorOf(field))
            return button->isChecked();
    }
    return field->isEnabled();
}

void PlaceFields::addProblems(const Days::DayPlace &place,
                              std::vector<FieldProblem> &problems) const
{
    if (ui->isSource->isChecked() && !ui->sourceField->position())
        problems.push_back({"source", "Name a source, or give its RA and Dec."});
    if (ui->isZrtUtc->isChecked() && place.utc.isEmpty())
        problems.push_back({"zrtUtc", "Give the UTC of the first point, hh:mm:ss."});
    if (ui->isSidereal->isChecked() && place.siderealTime.isEmpty())
        problems.push_back(
            {"siderealTime", "Give the sidereal time of the first point, hh:mm:ss."});
}

void PlaceFields::rememberClock() const
{
    Settings::store().setValue(clockOffsetKey, ui->clockOffset->text());
}
