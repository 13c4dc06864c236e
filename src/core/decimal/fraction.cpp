#include "core/decimal/fraction.h"

namespace corvane {

std::string Fraction::description() const {
  return std::to_string(numerator) + "/" + std::to_string(denominator);
}

}  // namespace corvane
