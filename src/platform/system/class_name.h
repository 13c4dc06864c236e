// The names that classes have in the source text.
#pragma once

#include <string>
#include <typeinfo>

namespace corvane {

/// The name of a class without the namespaces and classes around it: "QuoteProvider". Any thread.
[[nodiscard]] std::string className(const std::type_info& type);

}  // namespace corvane
