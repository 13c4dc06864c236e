// Any bytes as cells of days and numbers: reading them never crashes or hangs, a cell that is read
// means the same in the order and the notation that were worked out, and two readers agree.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "exchange/strict/day_order.h"
#include "exchange/strict/number_form.h"
#include "exchange/strict/statement_error.h"

namespace {

using namespace corvane;

void require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

void readDays(std::string_view text) {
  DayOrderRecognition recognition;
  std::string cells(text);
  std::uint32_t line = 1;
  std::vector<std::string> days;
  for (std::size_t start = 0; start <= cells.size() && line < 200; ++line) {
    const std::size_t end = std::min(cells.find('\n', start), cells.size());
    days.push_back(cells.substr(start, end - start));
    recognition.add(line, "Date", days.back());
    start = end + 1;
  }
  try {
    const auto verdict = recognition.verdict({2026, 1, 31}, std::nullopt);
    for (const std::string& day : days) {
      if (const auto cell = DayCell::read(day)) {
        require(cell->day(verdict.order).has_value());
      }
    }
  } catch (const StatementError& error) {
    require(error.description().has_value());
  }
}

void readNumbers(std::string_view text) {
  if (const auto cell = NumberCell::read(text)) {
    const auto point = cell->value(DecimalMark::point);
    const auto comma = cell->value(DecimalMark::comma);
    require(point.has_value() || comma.has_value());
    switch (cell->evidence()) {
      case NumberCell::Evidence::none:
        require(point == comma);
        break;
      case NumberCell::Evidence::undecided:
        require(point && comma && point != comma);
        break;
      case NumberCell::Evidence::point:
      case NumberCell::Evidence::comma:
        break;
    }
    if (point && !point->isZero()) {
      const auto again = NumberCell::read(point->description());
      require(again && again->value(DecimalMark::point) == point);
    }
  }
  DecimalMarkRecognition marks;
  marks.add(1, "Amount", text);
  marks.addTrade(text, "2", text);
  try {
    (void)marks.mark();
  } catch (const StatementError& error) {
    require(error.description().has_value());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  readDays(text);
  readNumbers(text);
  return 0;
}
