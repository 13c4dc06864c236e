// A row of a form: a label, a field, and words beside it.
#pragma once

#include <QString>

#include "presentation/transactions/number_entry.h"

class QGridLayout;
class QLabel;
class QWidget;

namespace corvane::desktop {

class AttributedLabel;

/// The three widgets of a row, and what they have in common: they come and go together, the label
/// names the field, and what the hint says is the field's description for a screen reader. A plain
/// value; the window owns the widgets.
///
/// The hint takes its place from the field, on the side where the field's text does not begin: so
/// nothing that is read moves, and where there is nothing to say nothing is kept free for it.
class EntryRow {
 public:
  enum class HintSide { left, right };

  /// Puts `field`, whose keyboard is that of `focus`, into the next row of `grid`.
  EntryRow(QGridLayout& grid, QWidget* field, QWidget* focus, HintSide side = HintSide::right);

  /// `label` may end with a colon, which the name of the field leaves out.
  void show(std::string_view label, bool isHidden, const FieldHint& hint = {});
  /// Draws the label weaker for a field that cannot be used.
  void setLabelEnabled(bool isEnabled);

 private:
  QLabel* label_;
  QWidget* cell_;  ///< the field and the hint
  QWidget* focus_;
  AttributedLabel* hint_;
};

}  // namespace corvane::desktop
