#include "platform/data/ofx.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "platform/data/xml_entities.h"

namespace corvane {
namespace {

/// Within so many bytes a header has ended.
constexpr std::size_t longestHeader = 4096;
constexpr std::size_t mostNested = 64;

bool isOFXBlank(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}
bool isOFXLetter(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}
bool isOFXNameByte(char byte) {
  return isOFXLetter(byte) || (byte >= '0' && byte <= '9') || byte == '.' || byte == '_' ||
         byte == '-';
}

std::string inCapitals(std::string_view text) {
  std::string capitals(text);
  std::ranges::transform(capitals, capitals.begin(), [](char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
  });
  return capitals;
}

/// `text` without blanks around it, and with one blank for each run of them within.
std::string withSingleBlanks(std::string_view text) {
  std::string result;
  for (const char byte : text) {
    if (!isOFXBlank(byte)) {
      result += byte;
    } else if (!result.empty() && result.back() != ' ') {
      result += ' ';
    }
  }
  if (result.ends_with(' ')) {
    result.pop_back();
  }
  return result;
}

/// The first bytes of a file as letters, whatever its encoding.
std::string headOf(std::string_view bytes) {
  std::string head(bytes.substr(0, longestHeader));
  for (const std::string_view mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}) {
    if (head.starts_with(mark)) {
      head.erase(0, mark.size());
    }
  }
  std::erase(head, '\0');  // of UTF-16
  return inCapitals(head);
}

/// What stands behind `key` and ":" or "=" in a header; empty where it is not there.
std::string headerValue(std::string_view head, std::string_view key) {
  for (std::size_t at = head.find(key); at != head.npos; at = head.find(key, at + 1)) {
    const bool isWord = at == 0 || !isOFXNameByte(head[at - 1]);
    const std::string_view rest = head.substr(at + key.size());
    if (!isWord || !(rest.starts_with(':') || rest.starts_with('='))) {
      continue;
    }
    const std::string_view value = rest.substr(1);
    const std::size_t start = std::min(value.find_first_not_of(" \t\"'"), value.size());
    const std::size_t end = std::min(value.find_first_of(" \t\r\n\"'?<", start), value.size());
    return std::string(value.substr(start, end - start));
  }
  return "";
}

/// One piece of a file.
struct Token {
  enum class Kind { start, end, empty, text, endOfFile };
  Kind kind = Kind::endOfFile;
  std::string text;  ///< or the name of a tag
  std::uint32_t line = 1;
};

/// Cuts a file into tags and texts.
class Tokens {
 public:
  Tokens(std::string_view text, std::size_t at) : text_(text) { advance(at); }

  Token next() {
    std::string raw;
    std::uint32_t line = line_;
    while (at_ < text_.size()) {
      if (text_[at_] != '<') {
        const std::size_t end = std::min(text_.find('<', at_), text_.size());
        line = withSingleBlanks(raw).empty() ? lineOfFirstLetter(end) : line;
        raw += unescaped(text_.substr(at_, end - at_));
        advance(end);
      } else if (skips("<!--", "-->") || skips("<?", "?>") || skips("<!DOCTYPE", ">")) {
        continue;
      } else if (text_.substr(at_).starts_with("<![CDATA[")) {
        const std::size_t start = at_ + 9;
        const std::size_t end = std::min(text_.find("]]>", start), text_.size());
        raw += text_.substr(start, end - start);
        advance(std::min(end + 3, text_.size()));
      } else if (auto tag = tagHere()) {
        if (std::string value = withSingleBlanks(raw); !value.empty()) {
          return {Token::Kind::text, std::move(value), line};
        }
        tag->first.line = line_;
        advance(tag->second);
        return std::move(tag->first);
      } else {
        raw += '<';  // a letter of a text
        advance(at_ + 1);
      }
    }
    std::string value = withSingleBlanks(raw);
    return value.empty() ? Token{Token::Kind::endOfFile, "", line_}
                         : Token{Token::Kind::text, std::move(value), line};
  }

 private:
  /// The line of the first letter between here and `end`.
  [[nodiscard]] std::uint32_t lineOfFirstLetter(std::size_t end) const {
    std::uint32_t line = line_;
    for (std::size_t i = at_; i < end && isOFXBlank(text_[i]); ++i) {
      line += breaksLine(i) ? 1 : 0;
    }
    return line;
  }

  static std::string unescaped(std::string_view text) {
    std::string value = unescapingXMLEntities(text);
    constexpr std::string_view blank = "&nbsp;";
    for (std::size_t at = value.find(blank); at != value.npos; at = value.find(blank, at)) {
      value.replace(at, blank.size(), " ");
    }
    return value;
  }

  [[nodiscard]] bool breaksLine(std::size_t at) const {
    return text_[at] == '\n' || (text_[at] == '\r' && text_.substr(at + 1, 1) != "\n");
  }

  void advance(std::size_t to) {
    for (; at_ < to; ++at_) {
      line_ += breaksLine(at_) ? 1 : 0;
    }
  }

  bool skips(std::string_view opening, std::string_view closing) {
    if (!text_.substr(at_).starts_with(opening)) {
      return false;
    }
    const std::size_t end = text_.find(closing, at_ + opening.size());
    advance(end == text_.npos ? text_.size() : end + closing.size());
    return true;
  }

  /// The tag that starts here, and where it ends; none where "<" is a letter of a text.
  [[nodiscard]] std::optional<std::pair<Token, std::size_t>> tagHere() const {
    std::size_t at = at_ + 1;
    Token token{.kind = Token::Kind::start, .text = {}, .line = line_};
    if (text_.substr(at).starts_with('/')) {
      token.kind = Token::Kind::end;
      ++at;
    }
    const std::size_t start = at;
    while (at < text_.size() && isOFXNameByte(text_[at])) {
      ++at;
    }
    if (at == start || !isOFXLetter(text_[start])) {
      return std::nullopt;
    }
    token.text = inCapitals(text_.substr(start, at - start));
    const std::size_t end = text_.find_first_of("<>", at);
    const bool isTag = end != text_.npos && text_[end] == '>' &&
                       (at == end || isOFXBlank(text_[at]) || text_[at] == '/');
    if (!isTag) {
      return std::nullopt;
    }
    if (text_[end - 1] == '/' && token.kind == Token::Kind::start) {
      token.kind = Token::Kind::empty;
    }
    return std::pair(std::move(token), end + 1);
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::uint32_t line_ = 1;
};

/// The names of the elements that hold others: they end somewhere behind more than their own text.
std::set<std::string, std::less<>> namesOfHolders(Tokens tokens) {
  std::set<std::string, std::less<>> names = {"OFX"};  // also where the file breaks off
  std::string lastStart;
  for (Token token = tokens.next(); token.kind != Token::Kind::endOfFile; token = tokens.next()) {
    if (token.kind == Token::Kind::start) {
      lastStart = token.text;
    } else if (token.kind == Token::Kind::end) {
      if (token.text != lastStart) {
        names.insert(token.text);
      }
      lastStart.clear();
    }
  }
  return names;
}

class OFXReader {
 public:
  OFXReader(std::string_view text, std::size_t start, OFXHandler& handler)
      : tokens_(text, start), holders_(namesOfHolders(tokens_)), handler_(handler) {}

  void read() {
    for (Token token = tokens_.next();; token = tokens_.next()) {
      switch (token.kind) {
        case Token::Kind::start:
          settlePending();
          lastLeaf_.clear();
          pending_ = std::move(token);
          break;
        case Token::Kind::empty:
          settlePending();
          lastLeaf_.clear();
          handler_.value(token.text, "", token.line);
          break;
        case Token::Kind::text:
          takeText(token);
          break;
        case Token::Kind::end:
          end(token);
          break;
        case Token::Kind::endOfFile:
          settlePending();
          if (!open_.empty()) {
            throw OFXError(token.line, "the file ends within “" + open_.back().text +
                                           "”, which line " + std::to_string(open_.back().line) +
                                           " begins. It is not whole.");
          }
          return;
      }
    }
  }

 private:
  /// What was opened last holds others, or is empty.
  void settlePending() {
    if (!pending_) {
      return;
    }
    Token element = *std::exchange(pending_, std::nullopt);
    if (!holders_.contains(element.text)) {
      handler_.value(element.text, "", element.line);
      return;
    }
    if (open_.size() == mostNested) {
      throw OFXError(element.line, "elements are nested too deep.");
    }
    handler_.startElement(element.text, element.line);
    open_.push_back(std::move(element));
  }

  void takeText(const Token& token) {
    if (!pending_ || holders_.contains(pending_->text)) {
      throw OFXError(token.line, "“" + shortened(token.text) + "” stands in no element.");
    }
    const Token element = *std::exchange(pending_, std::nullopt);
    handler_.value(element.text, token.text, element.line);
    lastLeaf_ = element.text;
  }

  void end(const Token& token) {
    if (pending_ && pending_->text == token.text) {
      handler_.value(token.text, "", pending_->line);
      pending_.reset();
      return;
    }
    if (std::exchange(lastLeaf_, {}) == token.text) {
      return;  // as OFX 2 writes it
    }
    settlePending();
    if (open_.empty() || open_.back().text != token.text) {
      throw OFXError(token.line, "“" + token.text + "” ends here, but " +
                                     (open_.empty() ? "nothing is open."
                                                    : "“" + open_.back().text + "” of line " +
                                                          std::to_string(open_.back().line) +
                                                          " is still open."));
    }
    open_.pop_back();
    handler_.endElement(token.text);
  }

  static std::string shortened(const std::string& text) {
    constexpr std::size_t longest = 40;
    std::size_t end = std::min(text.size(), longest);
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
      --end;
    }
    return text.substr(0, end) + (end < text.size() ? "…" : "");
  }

  Tokens tokens_;
  std::set<std::string, std::less<>> holders_;
  OFXHandler& handler_;
  std::vector<Token> open_;
  std::optional<Token> pending_;  ///< a start whose nature the next piece tells
  std::string lastLeaf_;          ///< whose text was the last piece
};

/// Where the elements begin; past the end where they do not.
std::size_t startOfElements(std::string_view text) {
  for (std::size_t at = text.find('<'); at != text.npos; at = text.find('<', at + 1)) {
    if (inCapitals(text.substr(at, 4)) == "<OFX" && text.size() > at + 4 &&
        (text[at + 4] == '>' || isOFXBlank(text[at + 4]))) {
      return at;
    }
  }
  return text.size();
}

}  // namespace

bool isOFX(std::string_view bytes) {
  const std::string head = headOf(bytes);
  const std::size_t start = std::min(head.find_first_not_of(" \t\r\n"), head.size());
  const std::string_view rest = std::string_view(head).substr(start);
  return rest.starts_with("OFXHEADER") ||
         (rest.starts_with('<') && (rest.contains("<?OFX") || startOfElements(rest) < rest.size()));
}

OFXHeader ofxHeader(std::string_view bytes) {
  const std::string all = headOf(bytes);
  const std::string_view head = std::string_view(all).substr(0, startOfElements(all));
  OFXHeader header;
  // The declaration of XML has a version of its own in front.
  const std::size_t own = head.find("<?OFX");
  header.version = headerValue(head.substr(own == head.npos ? 0 : own), "VERSION");
  header.characterSet = headerValue(head, "CHARSET");
  if (header.characterSet.empty() || header.characterSet == "NONE") {
    header.characterSet = headerValue(head, "ENCODING");
  }
  return header;
}

void parseOFX(std::string_view text, OFXHandler& handler) {
  OFXReader(text, startOfElements(text), handler).read();
}

}  // namespace corvane
