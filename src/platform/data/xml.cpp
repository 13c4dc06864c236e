#include "platform/data/xml.h"

#include <expat.h>

#include <exception>
#include <memory>

namespace corvane {
namespace {

constexpr int maximumDepth = 256;

/// expat takes its input in pieces whose size is an int.
constexpr std::size_t pieceSize = std::size_t{1} << 20;

/// One parse: turns expat's C callbacks into the handler's events, and keeps what they throw away
/// from expat's own code.
class Parse {
 public:
  explicit Parse(XMLHandler& handler) : handler_(handler) {
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), &startElement, &endElement);
    XML_SetCharacterDataHandler(parser_.get(), &characters);
    XML_SetEntityDeclHandler(parser_.get(), &entityDeclaration);
    XML_SetSkippedEntityHandler(parser_.get(), &skippedEntity);
  }

  void run(std::string_view document) {
    for (bool isLast = false; !isLast;) {
      const std::string_view piece = document.substr(0, pieceSize);
      document.remove_prefix(piece.size());
      isLast = document.empty();
      const auto status = XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()),
                                    isLast ? XML_TRUE : XML_FALSE);
      if (thrown_) {
        std::rethrow_exception(thrown_);
      }
      if (handler_.isAborted()) {
        return;
      }
      if (status != XML_STATUS_OK) {
        throw errorHere(XML_ErrorString(XML_GetErrorCode(parser_.get())));
      }
    }
  }

 private:
  struct Free {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
  };

  [[nodiscard]] XMLError errorHere(std::string reason) const {
    return {std::move(reason), XML_GetCurrentLineNumber(parser_.get()),
            XML_GetCurrentColumnNumber(parser_.get()) + 1};
  }

  /// Runs `event` and stops expat when it throws or aborts.
  template <typename Event>
  void tell(Event event) {
    if (thrown_ || handler_.isAborted()) {
      return;
    }
    try {
      event();
    } catch (...) {
      thrown_ = std::current_exception();
    }
    if (thrown_ || handler_.isAborted()) {
      XML_StopParser(parser_.get(), XML_FALSE);
    }
  }

  static Parse& of(void* userData) { return *static_cast<Parse*>(userData); }

  static void startElement(void* userData, const XML_Char* name, const XML_Char** attributes) {
    Parse& parse = of(userData);
    parse.tell([&] {
      if (++parse.depth_ > maximumDepth) {
        throw parse.errorHere("elements are nested too deep");
      }
      XMLHandler::Attributes byName;
      for (const XML_Char** attribute = attributes; *attribute != nullptr; attribute += 2) {
        byName.emplace(attribute[0], attribute[1]);
      }
      parse.handler_.startElement(name, byName);
    });
  }

  static void endElement(void* userData, const XML_Char* name) {
    Parse& parse = of(userData);
    --parse.depth_;
    parse.tell([&] { parse.handler_.endElement(name); });
  }

  static void characters(void* userData, const XML_Char* text, int length) {
    Parse& parse = of(userData);
    parse.tell([&] { parse.handler_.characters({text, static_cast<std::size_t>(length)}); });
  }

  static void entityDeclaration(void* userData, const XML_Char* name, int, const XML_Char*, int,
                                const XML_Char*, const XML_Char*, const XML_Char*,
                                const XML_Char*) {
    Parse& parse = of(userData);
    parse.tell([&] { throw parse.errorHere("the entity " + std::string(name) + " is declared"); });
  }

  /// A reference to what only another document declares: leaving it out would lose text.
  static void skippedEntity(void* userData, const XML_Char* name, int) {
    Parse& parse = of(userData);
    parse.tell([&] { throw parse.errorHere("the entity " + std::string(name) + " is unknown"); });
  }

  XMLHandler& handler_;
  std::unique_ptr<XML_ParserStruct, Free> parser_{XML_ParserCreate(nullptr)};
  std::exception_ptr thrown_;
  int depth_ = 0;
};

}  // namespace

std::optional<std::string> XMLError::description() const {
  return "Line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + reason +
         ".";
}

void parseXML(std::string_view document, XMLHandler& handler) {
  Parse(handler).run(document);
}

}  // namespace corvane
