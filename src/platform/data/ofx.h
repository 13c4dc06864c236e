// Reading OFX and QFX, in which banks and brokers write statements for programs, as events.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/error.h"

namespace corvane {

/// Why a file could not be read.
class OFXError : public ErrorValue<OFXError> {
 public:
  OFXError(std::uint32_t where, std::string what) : line(where), reason(std::move(what)) {}

  std::uint32_t line;  ///< of the file, from 1
  std::string reason;  ///< a sentence, with its point

  /// "Line 14: reason"
  [[nodiscard]] std::optional<std::string> description() const override {
    return "Line " + std::to_string(line) + ": " + reason;
  }
  [[nodiscard]] bool hasSameValues(const OFXError& other) const {
    return line == other.line && reason == other.reason;
  }
};

/// What a reader does with the events of a file. Names are in capital letters, lines count from 1.
class OFXHandler {
 public:
  virtual ~OFXHandler() = default;
  /// An element that holds others.
  virtual void startElement(std::string_view name, std::uint32_t line) = 0;
  virtual void endElement(std::string_view name) = 0;
  /// An element that holds a text, which may be empty. Blanks around it are gone, line breaks
  /// within are blanks, and entities are the characters that they stand for.
  virtual void value(std::string_view name, const std::string& text, std::uint32_t line) = 0;
};

/// What stands before the elements.
struct OFXHeader {
  std::string version;       ///< "102", "211"; empty where it is not told
  std::string characterSet;  ///< "1252", "ISO-8859-15", "UTF-8"; empty where it is not told
};

/// Whether `bytes`, a file in any encoding, begin as OFX does, of either kind.
[[nodiscard]] bool isOFX(std::string_view bytes);

/// The header at the start of `bytes`, as lines of the older kind or as an instruction of XML.
[[nodiscard]] OFXHeader ofxHeader(std::string_view bytes);

/// Reads `text`, which is UTF-8, and tells `handler` of what it holds, in order. Elements with a
/// text need no end, as OFX 1 writes them; those that hold others do. Throws OFXError where an
/// element ends that is not open, where the file ends within one, where text stands outside of
/// elements, and where more than 64 are nested.
///
/// Events up to the fault have been told by then. An exception of the handler goes on to the
/// caller. Any thread.
void parseOFX(std::string_view text, OFXHandler& handler);

}  // namespace corvane
