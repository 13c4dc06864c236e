// Reading XML as a series of events.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/error.h"

namespace corvane {

/// Why a document could not be read.
class XMLError : public ErrorValue<XMLError> {
 public:
  XMLError(std::string what, std::size_t atLine, std::size_t atColumn)
      : reason(std::move(what)), line(atLine), column(atColumn) {}

  std::string reason;
  std::size_t line;    ///< from 1
  std::size_t column;  ///< in bytes, from 1

  [[nodiscard]] std::optional<std::string> description() const override;
  [[nodiscard]] bool hasSameValues(const XMLError& other) const {
    return reason == other.reason && line == other.line && column == other.column;
  }
};

/// What a reader of XML does with the events of a document. All text is UTF-8.
class XMLHandler {
 public:
  using Attributes = std::map<std::string, std::string, std::less<>>;

  virtual ~XMLHandler() = default;
  virtual void startElement(std::string_view name, const Attributes& attributes) = 0;
  virtual void endElement(std::string_view name) = 0;
  /// Text between tags; the text of one element may come in several pieces.
  virtual void characters(std::string_view text) = 0;

  /// To be called from within an event: no more events follow, and the parse ends without an error.
  void abortParsing() { isAborted_ = true; }
  [[nodiscard]] bool isAborted() const { return isAborted_; }

 private:
  bool isAborted_ = false;
};

/// Reads `document` and tells `handler` of its elements and texts in order. Throws XMLError for a
/// document that is not well formed, whose elements are nested more than 256 deep, or that declares
/// entities of its own or uses those of another document: these serve attacks and not data.
///
/// Events up to the fault have been told by then. An exception of the handler ends the parse and
/// goes on to the caller. Any thread.
void parseXML(std::string_view document, XMLHandler& handler);

}  // namespace corvane
