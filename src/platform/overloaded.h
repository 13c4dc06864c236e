// Visiting a variant with one lambda for each alternative.
#pragma once

namespace corvane {

/// std::visit(Overloaded{[](const A&) {...}, [](const B&) {...}}, variant)
template <typename... Cases>
struct Overloaded : Cases... {
  using Cases::operator()...;
};

}  // namespace corvane
