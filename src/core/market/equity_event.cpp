#include "core/market/equity_event.h"

#include "platform/overloaded.h"

namespace corvane {

std::string EquityEvent::description() const {
  return date.description() +
         std::visit(Overloaded{[](const Split& split) {
                                 return ": split " + std::to_string(split.ratio.numerator) + ":" +
                                        std::to_string(split.ratio.denominator);
                               },
                               [this](const Dividend& dividend) {
                                 return ": dividend of " + dividend.amount.description() + " " +
                                        std::string(caseName(priceAdjustment)) + ")";
                               }},
                    kind);
}

std::ostream& operator<<(std::ostream& out, const EquityEvent& event) {
  return out << event.description();
}

}  // namespace corvane
