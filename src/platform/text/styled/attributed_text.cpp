#include "platform/text/styled/attributed_text.h"

namespace corvane {

AttributedText& AttributedText::append(std::string_view text, const TextStyle& style) {
  if (text.empty()) {
    return *this;
  }
  if (!runs_.empty() && runs_.back().style == style) {
    runs_.back().text += text;
  } else {
    runs_.push_back({std::string(text), style});
  }
  return *this;
}

AttributedText& AttributedText::append(const AttributedText& other) {
  // A copy, as `other` may be this text itself.
  for (const TextRun& run : std::vector<TextRun>(other.runs_)) {
    append(run.text, run.style);
  }
  return *this;
}

std::string AttributedText::plainText() const {
  std::string text;
  for (const TextRun& run : runs_) {
    text += run.text;
  }
  return text;
}

}  // namespace corvane
