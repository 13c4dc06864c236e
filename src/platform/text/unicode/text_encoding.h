// Text in files, which is not always UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/error.h"

namespace corvane {

/// How the characters of a file are written as bytes. The inside of the program is UTF-8.
enum class TextEncoding {
  utf8,
  utf16,  ///< the order of the bytes is that of the mark at the start, else the high byte is first
  windowsLatin1,  ///< code page 1252, which covers ISO 8859-1
  latin9          ///< ISO 8859-15, which has the euro where the others have other signs
};

/// Bytes that are no text of an encoding, or text that an encoding cannot write.
class TextEncodingError : public ErrorValue<TextEncodingError> {
 public:
  TextEncodingError(TextEncoding which, bool reading) : encoding(which), isReading(reading) {}

  TextEncoding encoding;
  bool isReading;  ///< else writing

  /// "The file is not UTF-8 text."
  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] std::optional<std::string> recoverySuggestion() const override;
  [[nodiscard]] bool hasSameValues(const TextEncodingError& other) const {
    return encoding == other.encoding && isReading == other.isReading;
  }
};

/// The text that `bytes` are in `encoding`. UTF-8 is checked and handed back without a copy, a byte
/// order mark included; that of UTF-16 is gone. Throws TextEncodingError. Any thread.
[[nodiscard]] std::string decodedText(std::string bytes, TextEncoding encoding);

/// The bytes of `text`, which is UTF-8, in `encoding`; for UTF-16 with a byte order mark. Throws
/// TextEncodingError. Any thread.
[[nodiscard]] std::string encodedText(std::string text, TextEncoding encoding);

/// `text`, which is UTF-8, without the mark U+FEFF at its start.
[[nodiscard]] std::string withoutByteOrderMark(std::string text);

}  // namespace corvane
