#include "presentation/frame/dates_time_zone_form.h"

#include <utility>

#include "platform/text/formats/date_formatter.h"
#include "platform/time/time_zone_names.h"

namespace corvane {
namespace {

std::string textOf(const YearMonthDay& day) {
  const Calendar calendar;
  return DateFormatter{.dateStyle = DateFormatter::Style::mediumStyle,
                       .timeZone = calendar.timeZone()}
      .string(day.startIn(calendar));
}

/// What holds where days are shown in `shown`.
std::string stateOf(const WorkspaceModel& model, const TimeZone& shown) {
  const auto& noted = model.datesTimeZone;
  if (noted && noted->isUsedEverywhere && noted->identifier != shown.identifier()) {
    return "The days of this workspace are those of " + noted->identifier +
           ", a time zone that is not known here. They are shown in your own, " +
           shown.identifier() + ".";
  }
  if (noted && noted->isUsedEverywhere) {
    return "The days of this workspace are those of " + shown.identifier() +
           ", wherever you open it.";
  }
  return "The days of this workspace are those of your own time zone, which is " +
         shown.identifier() + " now.";
}

}  // namespace

DatesTimeZoneForm::DatesTimeZoneForm(WorkspaceDocument& document)
    : document_(document),
      present_(document.presentTimeZone()),
      shown_(document.model()->portfolioManagers.front()->calendar.timeZone()),
      dates_(document.datesOfRows()) {
  const WorkspaceModel& model = *document.model();
  stateLabel.text = model.datesDoubt ? model.datesDoubt->description() : stateOf(model, shown_);
  presentButton.title = "Of my own time zone, wherever I am (" + present_.identifier() + " now)";
  fixedButton.title = "Of one time zone, wherever the workspace is opened:";
  goButton.title = "Use These Days";
  zoneField.placeholder = "America/Toronto";
  const auto& noted = model.datesTimeZone;
  const auto& doubt = model.datesDoubt;
  if (noted) {
    zoneField.text = noted->identifier;
  } else if (!doubt) {
    zoneField.text = present_.identifier();
  }
  fixedButton.isOn = doubt || (noted && noted->isUsedEverywhere);
  presentButton.isOn = !fixedButton.isOn;
  update();
}

const std::vector<std::string>& DatesTimeZoneForm::zones() {
  return timeZoneNames();
}

void DatesTimeZoneForm::choosePresent() {
  presentButton.isOn = true;
  fixedButton.isOn = false;
  update();
}

void DatesTimeZoneForm::chooseFixed() {
  presentButton.isOn = false;
  fixedButton.isOn = true;
  update();
}

void DatesTimeZoneForm::typeZone(std::string text) {
  zoneField.text = std::move(text);
  chooseFixed();
}

void DatesTimeZoneForm::apply() {
  if (presentButton.isOn) {
    document_.usePresentTimeZone();
  } else if (const auto zone = chosenZone()) {
    document_.useDatesTimeZone(*zone);
  }
}

std::optional<TimeZone> DatesTimeZoneForm::chosenZone() const {
  return presentButton.isOn ? present_ : TimeZone::withIdentifier(zoneField.text);
}

std::string DatesTimeZoneForm::effectOf(const TimeZone& zone) const {
  // Seen from the zone of the choice, what is shown now was written elsewhere.
  const auto change = datesDoubt(dates_, shown_, zone);
  return change ? "Some days change: what is " + textOf(change->writtenDay) + " now will be " +
                      textOf(change->shownDay) + "."
                : "All days stay as you see them now.";
}

void DatesTimeZoneForm::update() {
  const auto zone = chosenZone();
  goButton.isEnabled = zone.has_value();
  zoneField.error = zone || zoneField.text.empty()
                        ? ""
                        : "“" + zoneField.text + "” is no time zone such as America/Toronto.";
  effectLabel.text = zone ? effectOf(*zone) : "";
}

}  // namespace corvane
