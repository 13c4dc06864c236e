// A field for a number: what stands in it, what it means, and what to say about it.
#pragma once

#include <optional>
#include <string>

#include "core/money/decimal_number_formatter.h"

namespace corvane {

/// The words beside a field: how it is understood, or what is wrong with it.
struct FieldHint {
  std::string text = {};
  bool isProblem = false;

  friend bool operator==(const FieldHint&, const FieldHint&) = default;
};

/// A number that the user types or that follows from other fields. The number is exact; only its
/// text is rounded to what the formatter shows. Typed text stays as it is until the editing ends,
/// and longer where it is no number, so that nothing typed is lost.
class NumberEntry {
 public:
  std::string label = {};
  bool isHidden = false;
  bool isEnabled = true;
  std::optional<Decimal> minimum = {};
  bool allowsFractions = true;

  [[nodiscard]] const std::string& text() const { return text_; }
  /// The number; none where the field is empty or its text is not a number that the field takes.
  [[nodiscard]] const std::optional<Decimal>& value() const { return value_; }
  [[nodiscard]] bool isGreaterThan(const Decimal& bound) const { return value_ && *value_ > bound; }
  [[nodiscard]] bool isAtLeast(const Decimal& bound) const { return value_ && *value_ >= bound; }
  /// Whether the number stems from a computation rather than from the user or a transaction.
  [[nodiscard]] bool isComputed() const { return isComputed_; }
  /// While the user types, how the text is understood, with currency and grouping; where it is no
  /// number for this field, why. Nothing where there is nothing to add to the text.
  [[nodiscard]] FieldHint hint() const;

  /// What the user types or pastes: an amount with a currency symbol or in brackets is one too.
  void setText(std::string text);
  /// The keyboard leaves the field: a number takes its proper form.
  void endEditing();
  /// Fills the field from a transaction; none empties it.
  void setValue(std::optional<Decimal> value) { assign(value, false); }
  /// Fills the field with what follows from others.
  void compute(const Decimal& value) { assign(value, true); }
  /// How numbers are written from now on. A text that is being typed stays.
  void setFormatter(DecimalNumberFormatter formatter);

 private:
  void assign(std::optional<Decimal> value, bool isComputed);
  void read();
  [[nodiscard]] std::string formatted() const;

  DecimalNumberFormatter formatter_;
  std::string text_;
  std::optional<Decimal> value_;
  std::string problem_;
  bool isComputed_ = false;
  bool isTyped_ = false;  ///< the text is the user's own
};

}  // namespace corvane
