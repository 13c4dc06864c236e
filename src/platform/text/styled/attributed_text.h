// Text with the looks that give it meaning: colour, weight, figures in columns.
//
// View logic fills it without knowing how it is drawn; the window and the console each show as much
// of it as they can.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text/styled/colour.h"

namespace corvane {

enum class FontWeight { light, regular, medium, semibold, bold };

/// How a stretch of text looks. Without a colour it has that of its surroundings.
struct TextStyle {
  std::optional<Colour> colour = std::nullopt;
  FontWeight weight = FontWeight::regular;
  bool isMonospaced = false;

  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

/// UTF-8 text of one style.
struct TextRun {
  std::string text;
  TextStyle style = {};

  friend bool operator==(const TextRun&, const TextRun&) = default;
};

enum class TextAlignment { natural, left, centre, right };

/// What happens to a line that is too long: it is wrapped, or an ellipsis replaces a part of it.
enum class LineBreak { wrap, truncateHead, truncateMiddle, truncateTail };

/// Runs of styled text with one paragraph style. Neighbours of one style are one run, and no run is
/// empty, so that texts which look the same are equal.
class AttributedText {
 public:
  AttributedText() = default;
  explicit AttributedText(std::string_view text, const TextStyle& style = {}) {
    append(text, style);
  }

  TextAlignment alignment = TextAlignment::natural;
  LineBreak lineBreak = LineBreak::wrap;

  AttributedText& append(std::string_view text, const TextStyle& style = {});
  /// Adds the runs of `other`; the paragraph style stays.
  AttributedText& append(const AttributedText& other);

  [[nodiscard]] const std::vector<TextRun>& runs() const { return runs_; }
  [[nodiscard]] bool isEmpty() const { return runs_.empty(); }
  [[nodiscard]] std::string plainText() const;

  friend bool operator==(const AttributedText&, const AttributedText&) = default;

 private:
  std::vector<TextRun> runs_;
};

}  // namespace corvane
