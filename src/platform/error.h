// The base of every error that a user may see, and the result type of asynchronous work.
//
// Each subsystem has its own error values, made of named alternatives, and derives them from
// VariantError, or from ErrorValue where there is but one. Synchronous operations throw them;
// asynchronous ones deliver them in a Result. Nothing else is thrown across the border of a folder.
// All of it is safe on any thread.
#pragma once

#include <exception>
#include <expected>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <typeinfo>
#include <utility>
#include <variant>

namespace corvane {

/// What went wrong, as a value that can be shown, compared in a test, and kept.
class Error : public std::exception {
 public:
  /// The text for the user; none where the error has nothing to say.
  [[nodiscard]] virtual std::optional<std::string> description() const = 0;

  /// What the user can do about it, or the reason behind it; mostly none.
  [[nodiscard]] virtual std::optional<std::string> recoverySuggestion() const {
    return std::nullopt;
  }

  /// A way around what was refused, where recoverySuggestion() has nothing to say; mostly none.
  [[nodiscard]] virtual std::optional<std::string> advice() const { return std::nullopt; }

  /// What stands below the description wherever an error is shown; empty where there is nothing.
  [[nodiscard]] std::string furtherText() const {
    auto text = recoverySuggestion();
    return text ? *text : advice().value_or("");
  }

  /// Whether `other` is of the same type and has the same case and the same values.
  [[nodiscard]] virtual bool isEqual(const Error& other) const = 0;

  /// A copy that outlives the `catch` clause in which this error was seen.
  [[nodiscard]] virtual std::shared_ptr<const Error> copy() const = 0;

  [[noreturn]] virtual void raise() const = 0;

  /// For the messages of the C++ runtime and of test frameworks only; users get description().
  [[nodiscard]] const char* what() const noexcept override { return typeid(*this).name(); }

  friend bool operator==(const Error& left, const Error& right) { return left.isEqual(right); }

  friend std::ostream& operator<<(std::ostream& out, const Error& error) {
    return out << error.description().value_or("(an error without a description)");
  }
};

using ErrorPointer = std::shared_ptr<const Error>;

/// Gives a concrete error its comparison, copy and throw. `Derived` is copyable and has a member
/// `bool hasSameValues(const Derived&) const`.
template <typename Derived>
class ErrorValue : public Error {
 public:
  [[nodiscard]] bool isEqual(const Error& other) const final {
    const auto* same = dynamic_cast<const Derived*>(&other);
    return same != nullptr && self().hasSameValues(*same);
  }
  [[nodiscard]] ErrorPointer copy() const final { return std::make_shared<const Derived>(self()); }
  [[noreturn]] void raise() const final { throw Derived(self()); }

 private:
  [[nodiscard]] const Derived& self() const { return static_cast<const Derived&>(*this); }
};

/// An error that is one of several cases, each with values of its own. `Cases` is a struct of the
/// alternatives, which are comparable, and calls their std::variant `Case`; what it names is named
/// by the error as well. `Derived` inherits the constructor.
template <typename Derived, typename Cases>
class VariantError : public ErrorValue<Derived>, public Cases {
 public:
  using Case = typename Cases::Case;

  explicit VariantError(Case what) : case_(std::move(what)) {}

  [[nodiscard]] const Case& which() const { return case_; }

  /// This case's values, or null where the error is of another case.
  template <typename Alternative>
  [[nodiscard]] const Alternative* as() const {
    return std::get_if<Alternative>(&case_);
  }

  [[nodiscard]] bool hasSameValues(const Derived& other) const { return case_ == other.which(); }

 private:
  Case case_;
};

/// The outcome of asynchronous work: a value, or the error that prevented it, never null.
template <typename T>
using Result = std::expected<T, ErrorPointer>;

/// `error` as the failing side of a Result.
inline std::unexpected<ErrorPointer> failure(const Error& error) {
  return std::unexpected<ErrorPointer>(error.copy());
}

}  // namespace corvane
