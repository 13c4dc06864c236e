// The text of a statement, whatever encoding its bank has written it in.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/text/unicode/text_encoding.h"

namespace corvane {

/// A text in UTF-8 without a mark at its start, and how its bytes were read.
struct StatementText {
  std::string text;
  TextEncoding encoding = TextEncoding::utf8;
};

/// Bytes with the mark of an encoding are of that one, bytes that are UTF-8 are that, bytes with
/// a zero in every other place are UTF-16, and others of `otherwise`. Throws TextEncodingError.
[[nodiscard]] StatementText decodedStatement(std::string_view bytes,
                                             TextEncoding otherwise = TextEncoding::windowsLatin1);

/// `bytes` themselves where they are a text in UTF-8 as it stands, so that a large file need not be
/// held twice; a mark at their start is left out. None where they have to be decoded.
[[nodiscard]] std::optional<std::string_view> plainStatement(std::string_view bytes);

/// The text of a file. Throws FileError and TextEncodingError.
[[nodiscard]] StatementText readStatementText(const std::filesystem::path& file,
                                              TextEncoding otherwise = TextEncoding::windowsLatin1);

/// "UTF-8", "UTF-16", "windows-1252", "ISO 8859-15", for messages.
[[nodiscard]] std::string_view displayName(TextEncoding encoding);

}  // namespace corvane
