// The JSON forms of the plain values that stored records are made of.
//
// Reading takes the path of the value in its document, for the message of an error.
#pragma once

#include <string>
#include <string_view>

#include "core/decimal/decimal.h"
#include "platform/data/json.h"
#include "platform/time/date_components.h"

namespace corvane {

/// `value` as a JSON number with all its digits. NaN has no JSON form: throws JSONError.
[[nodiscard]] JSONValue json(const Decimal& value, std::string_view path = "");

/// The number that `value` spells. Throws JSONError where it is no number, or one that is beyond
/// the range of the decimal.
[[nodiscard]] Decimal decimal(const JSONValue& value, std::string_view path = "");

/// The fields that are present, by their names, such as {"year":2024,"month":2,"day":29}.
[[nodiscard]] JSONValue json(const DateComponents& components);

/// The components that `value` names. Null counts as absent and unknown keys are ignored. Throws
/// JSONError where `value` is no object, or a field is no whole number.
[[nodiscard]] DateComponents dateComponents(const JSONValue& value, std::string_view path = "");

/// The path of the field `key` of the object at `path`: "detailScenario.quoteInterval".
[[nodiscard]] std::string pathOf(std::string_view key, std::string_view path);

/// The field `key` of `object`, which stands at `path`. Throws JSONError where there is none.
[[nodiscard]] const JSONValue& requiredField(const JSONValue& object, std::string_view key,
                                             std::string_view path);

}  // namespace corvane
