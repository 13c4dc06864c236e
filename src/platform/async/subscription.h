// What keeps a handler in its place.
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace corvane {

/// Keeps a handler in its place for as long as it lives: one who hears of something holds it, and
/// hears no more when it has gone. Where it outlives what it hears of, it keeps nothing.
class [[nodiscard]] Subscription {
 public:
  Subscription() = default;
  /// Ends when `kept` is let go.
  explicit Subscription(std::shared_ptr<const void> kept) : kept_(std::move(kept)) {}
  Subscription(Subscription&&) noexcept = default;
  Subscription& operator=(Subscription&&) noexcept = default;
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;
  ~Subscription() = default;

  /// Whether there is one that has not been ended.
  [[nodiscard]] explicit operator bool() const { return kept_ != nullptr; }
  /// Ends it before its scope does.
  void reset() { kept_.reset(); }

 private:
  std::shared_ptr<const void> kept_;
};

/// Has `slot`, a handler that one view at a time takes, call `handler` until the subscription ends;
/// then the slot does nothing, unless somebody else has taken it meanwhile. The slot must outlive
/// the subscription: a view declares it behind what holds the controller. To be taken and ended on
/// the thread that calls the slot.
template <typename... Arguments>
[[nodiscard]] Subscription subscribe(
    std::function<void(Arguments...)>& slot,
    std::type_identity_t<std::function<void(Arguments...)>> handler) {
  struct Taken {
    std::shared_ptr<const std::function<void(Arguments...)>> handler;
    void operator()(Arguments... arguments) const {
      const auto called = handler;  // may end the subscription
      (*called)(std::forward<Arguments>(arguments)...);
    }
  };
  auto kept = std::make_shared<const std::function<void(Arguments...)>>(std::move(handler));
  slot = Taken{kept};
  return Subscription(std::shared_ptr<const void>(kept.get(), [&slot, kept](const void*) {
    if (const auto* taken = slot.template target<Taken>();
        taken != nullptr && taken->handler == kept) {
      slot = [](Arguments...) {};
    }
  }));
}

}  // namespace corvane
