// The form that says in which time zone the days of a workspace stand.
#pragma once

#include <string>
#include <vector>

#include "core/controls/form_controls.h"
#include "storage/workspace/workspace_document.h"

namespace corvane {

/// Shows what holds for the workspace, and what another choice would do to its days before it is
/// taken. Main queue only.
class DatesTimeZoneForm {
 public:
  /// Filled with what holds; while the days are in doubt, with the zone in which they were written.
  /// `document` has a store and outlives this. Throws SQLiteError.
  explicit DatesTimeZoneForm(WorkspaceDocument& document);

  Label stateLabel;           ///< what holds now
  RadioButton presentButton;  ///< the user's own zone, wherever he is
  RadioButton fixedButton;    ///< the one that zoneField names, wherever he is
  TextField zoneField;
  Label effectLabel;  ///< what the choice does to days; empty while none can be taken
  Button goButton;

  /// What zoneField may say.
  [[nodiscard]] static const std::vector<std::string>& zones();

  // What the user does.

  void choosePresent();
  void chooseFixed();
  void typeZone(std::string text);
  /// Takes the choice, which can be changed again later. To be called while goButton is enabled.
  void apply();

 private:
  [[nodiscard]] std::optional<TimeZone> chosenZone() const;
  [[nodiscard]] std::string effectOf(const TimeZone& zone) const;
  void update();

  WorkspaceDocument& document_;
  const TimeZone present_;
  const TimeZone shown_;
  std::vector<Date> dates_;
};

}  // namespace corvane
