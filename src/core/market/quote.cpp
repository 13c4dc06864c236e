#include "core/market/quote.h"

namespace corvane {
namespace {

std::string text(const std::optional<Decimal>& price) {
  return price ? price->description() : "?";
}

}  // namespace

std::string Quote::description() const {
  return fromDate.description() + " - " + toDate.description() + ": open " + text(open) +
         "; close " + text(close) + "; low " + text(low) + "; high " + text(high) + "; volume " +
         (volume ? std::to_string(*volume) : "?");
}

std::ostream& operator<<(std::ostream& out, const Quote& quote) {
  return out << quote.description();
}

}  // namespace corvane
