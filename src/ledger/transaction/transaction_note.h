// The user's note on a transaction, which many rows of a statement have in common.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace corvane {

/// What std::optional<std::string> is, but that copies share one text, which never changes. It
/// turns into one and is made from one wherever that is asked for. Any thread.
class TransactionNote {
 public:
  TransactionNote() = default;
  TransactionNote(std::nullopt_t /*none*/) {}  // NOLINT(google-explicit-constructor): as optional
  TransactionNote(std::string text)            // NOLINT(google-explicit-constructor): it is text
      : text_(std::make_shared<const std::string>(std::move(text))) {}
  TransactionNote(std::string_view text)  // NOLINT(google-explicit-constructor)
      : TransactionNote(std::string(text)) {}
  TransactionNote(const char* text)  // NOLINT(google-explicit-constructor)
      : TransactionNote(std::string(text)) {}
  TransactionNote(std::optional<std::string> text)  // NOLINT(google-explicit-constructor)
      : text_(text ? std::make_shared<const std::string>(std::move(*text)) : nullptr) {}

  [[nodiscard]] bool has_value() const { return text_ != nullptr; }
  explicit operator bool() const { return has_value(); }
  void reset() { text_.reset(); }

  /// The text, which is there.
  [[nodiscard]] const std::string& operator*() const { return *text_; }
  [[nodiscard]] const std::string* operator->() const { return text_.get(); }
  [[nodiscard]] std::string value_or(std::string_view other) const {
    return text_ == nullptr ? std::string(other) : *text_;
  }
  operator std::optional<std::string>() const {  // NOLINT(google-explicit-constructor): as optional
    return text_ == nullptr ? std::nullopt : std::optional(*text_);
  }

  friend bool operator==(const TransactionNote& left, const TransactionNote& right) {
    return left.text_ == right.text_ || (left && right && *left == *right);
  }
  friend bool operator==(const TransactionNote& left, std::nullopt_t) { return !left; }
  friend bool operator==(const TransactionNote& left, std::string_view right) {
    return left && *left == right;
  }
  friend bool operator==(const TransactionNote& left, const std::string& right) {
    return left == std::string_view(right);
  }
  friend bool operator==(const TransactionNote& left, const char* right) {
    return left == std::string_view(right);
  }
  friend bool operator==(const TransactionNote& left, const std::optional<std::string>& right) {
    return right ? left == std::string_view(*right) : !left;
  }

  /// The text, or "none".
  friend std::ostream& operator<<(std::ostream& out, const TransactionNote& note) {
    return out << (note ? std::string_view(*note) : std::string_view("none"));
  }

 private:
  std::shared_ptr<const std::string> text_;
};

/// Makes notes of texts that are read one after the other; equal neighbours share one.
class NoteReader {
 public:
  [[nodiscard]] TransactionNote note(const std::optional<std::string_view>& text) {
    if (!text) {
      return std::nullopt;
    }
    if (last_ != *text) {
      last_ = *text;
    }
    return last_;
  }

 private:
  TransactionNote last_;
};

}  // namespace corvane
