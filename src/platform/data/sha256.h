// The SHA-256 of some bytes, which tells files apart whatever they are called.
#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// The 64 hexadecimal digits of the hash (FIPS 180-4) of `bytes`, in small letters. Any thread.
[[nodiscard]] std::string sha256(std::string_view bytes);

}  // namespace corvane
