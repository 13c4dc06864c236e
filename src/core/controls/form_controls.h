// The states of the controls of a form, as plain values.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "core/money/year_month_day.h"

namespace corvane {

// A form is a plain object whose fields are such states and whose operations are what a person
// does. The form decides every state; a window shows them, tells the form what the person did, and
// shows them again. No state holds a rule of its own beyond what stands here.
//
// A control that is hidden takes no room; one that is not enabled is shown and cannot be used.

/// A text beside or between controls.
struct Label {
  std::string text;
  bool isHidden = false;
  friend bool operator==(const Label&, const Label&) = default;
};

/// One line of text, or the text of a number.
struct TextField {
  std::string text;              ///< what stands in the field, also while it makes no sense
  std::string error = "";        ///< what is wrong with the text, in words; empty where nothing is
  std::string placeholder = "";  ///< shown in place of an empty text
  bool isEnabled = true;
  bool isHidden = false;
  friend bool operator==(const TextField&, const TextField&) = default;
};

/// A text of several lines.
struct TextView {
  std::string text;
  std::string placeholder = "";
  bool isMonospaced = false;
  bool isEnabled = true;
  bool isHidden = false;
  friend bool operator==(const TextView&, const TextView&) = default;
};

/// A field for a day.
struct DateField {
  YearMonthDay day;
  YearMonthDay minimum{1, 1, 1};  ///< the first and the last day that can be chosen
  YearMonthDay maximum{4001, 1, 1};
  std::string error = "";
  bool isEnabled = true;
  bool isHidden = false;
  friend bool operator==(const DateField&, const DateField&) = default;
};

/// A choice between yes and no.
struct CheckBox {
  bool isOn = false;
  std::string title = "";  ///< empty where the window gives it one
  bool isEnabled = true;
  bool isHidden = false;
  friend bool operator==(const CheckBox&, const CheckBox&) = default;
};

/// One of several buttons of which one is on.
struct RadioButton {
  bool isOn = false;
  std::string title = "";  ///< empty where the window gives it one
  bool isEnabled = true;
  bool isHidden = false;
  friend bool operator==(const RadioButton&, const RadioButton&) = default;
};

/// A button that does something.
struct Button {
  std::string title = "";    ///< empty where the window gives it one
  std::string tooltip = "";  ///< such as what is missing before it can be pressed
  bool isEnabled = true;
  bool isHidden = false;
  friend bool operator==(const Button&, const Button&) = default;
};

/// A menu of which one item is chosen. Each item stands for a value; one that stands for none is a
/// line between two groups where it has no title, else a text such as "No activity.".
template <typename Value>
struct PopUpButton {
  struct Item {
    std::string title;
    std::optional<Value> value = std::nullopt;
    [[nodiscard]] bool isSeparator() const { return title.empty() && !value; }
    friend bool operator==(const Item&, const Item&) = default;
  };

  std::vector<Item> items = {};
  std::optional<std::size_t> selectedIndex = std::nullopt;
  bool isEnabled = true;
  bool isHidden = false;

  [[nodiscard]] static Item separator() { return {.title = ""}; }

  /// The value of the chosen item; none where nothing is chosen.
  [[nodiscard]] std::optional<Value> selectedValue() const {
    return selectedIndex ? items.at(*selectedIndex).value : std::nullopt;
  }
  /// Chooses the item of `value`. Says whether there is one; without one the choice stays.
  bool select(const Value& value) {
    const auto found = std::ranges::find_if(
        items, [&](const Item& item) { return item.value && *item.value == value; });
    if (found == items.end()) {
      return false;
    }
    selectedIndex = static_cast<std::size_t>(found - items.begin());
    return true;
  }
  /// In the order of the items.
  [[nodiscard]] std::vector<std::string> titles() const {
    std::vector<std::string> titles;
    for (const Item& item : items) {
      titles.push_back(item.title);
    }
    return titles;
  }
  friend bool operator==(const PopUpButton&, const PopUpButton&) = default;
};

/// How far something has come.
struct ProgressIndicator {
  double minimum = 0;
  double maximum = 1;
  double value = 0;
  bool isIndeterminate = false;  ///< something goes on, nobody knows how far
  bool isAnimated = false;
  friend bool operator==(const ProgressIndicator&, const ProgressIndicator&) = default;
};

}  // namespace corvane
