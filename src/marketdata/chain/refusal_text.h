// Why there are no prices, in words for the user.
#pragma once

#include <string>
#include <string_view>

#include "platform/error.h"

namespace corvane {

/// One sentence that says what `error`, which a provider gave for the equity with this symbol,
/// means to the user: "CAPIO.ST is no longer traded." Names no part of the service's answers. Any
/// thread.
[[nodiscard]] std::string refusalText(const Error& error, std::string_view symbol);

/// Whether `error` says that the service wants to be asked less often.
[[nodiscard]] bool asksForAPause(const Error& error);

/// Whether `error` is for want of a network, rather than what the service says.
[[nodiscard]] bool isForWantOfNetwork(const Error& error);

}  // namespace corvane
