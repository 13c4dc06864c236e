// Reading a large JSON document as it comes, without building a tree.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "platform/data/json_error.h"

namespace corvane {

/// A place in a document: a value that can be read once, in document order, while the function that
/// it was handed to runs. Every failure is a JSONError with the path to the value.
///
/// Numbers are handed out as text and never pass through binary floating point.
class JSONCursor {
 public:
  /// Arrays and objects nested deeper than this are refused.
  static constexpr std::size_t maximumDepth = 512;

  enum class Type { null, boolean, number, string, array, object };

  JSONCursor(const JSONCursor&) = delete;
  JSONCursor& operator=(const JSONCursor&) = delete;

  [[nodiscard]] Type type();
  [[nodiscard]] bool isNull() { return type() == Type::null; }

  [[nodiscard]] bool boolean();
  /// The number's text, checked to be a JSON number.
  [[nodiscard]] std::string_view numberText();
  /// The text without its escapes; good until the reader ends. May be asked for again.
  [[nodiscard]] std::string_view string();

  /// Calls `visit(element)` for each element of an array.
  template <typename Visit>
  void forEachElement(Visit visit) {
    visitElements({&visit, [](void* function, JSONCursor& element) {
                     (*static_cast<Visit*>(function))(element);
                   }});
  }

  /// Calls `visit(key, value)` for each field of an object. Values that are not read are skipped.
  template <typename Visit>
  void forEachField(Visit visit) {
    visitFields({&visit, [](void* function, std::string_view key, JSONCursor& value) {
                   (*static_cast<Visit*>(function))(key, value);
                 }});
  }

  /// Throws a JSONError for this value with a reason of the caller's.
  [[noreturn]] void fail(std::string reason) const;

  /// "chart.result[0].meta"
  [[nodiscard]] std::string path() const;

 private:
  friend class JSONReader;
  struct ElementVisit {
    void* function;
    void (*call)(void* function, JSONCursor& element);
  };
  struct FieldVisit {
    void* function;
    void (*call)(void* function, std::string_view key, JSONCursor& value);
  };

  JSONCursor(const JSONCursor* parent, std::string_view key, std::size_t index)
      : parent_(parent),
        key_(key),
        index_(index),
        depth_(parent == nullptr ? 0 : parent->depth_ + 1) {}

  void visitElements(ElementVisit visit);
  void visitFields(FieldVisit visit);
  void requireDepth() const;
  [[noreturn]] void failBecause(int error) const;
  [[noreturn]] void failExpecting(std::string_view expected);

  const JSONCursor* parent_;
  std::string_view key_;  ///< of a field; empty for an element
  std::size_t index_;     ///< of an element
  std::size_t depth_;
  std::string_view text_;  ///< what string() handed out; its data is null before
  alignas(8) std::array<std::byte, 64> value_;
};

/// Holds a document while it is read. One reading of one document; any one thread.
///
/// What is read is checked as it is read; the UTF-8 and the quoting of the whole document are
/// checked at the start, and what follows the document by read(). The inside of values that are
/// skipped is not: a document that is malformed there may pass read(), but never finish().
class JSONReader {
 public:
  explicit JSONReader(std::string_view document);
  ~JSONReader();
  JSONReader(const JSONReader&) = delete;
  JSONReader& operator=(const JSONReader&) = delete;

  /// Calls `visit(root)`, and then makes sure that nothing but blanks follows. To be called once.
  template <typename Visit>
  void read(Visit visit) {
    readRoot(
        {&visit, [](void* function, JSONCursor& root) { (*static_cast<Visit*>(function))(root); }});
  }

  /// Makes sure that the whole document is JSON, skipped values and all, at the price of another
  /// reading. Texts that were handed out stay good.
  void finish() const;

 private:
  void readRoot(JSONCursor::ElementVisit visit);

  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace corvane
