// The user's settings.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/async/dispatch_queue.h"
#include "platform/async/subscription.h"
#include "platform/data/json.h"

namespace corvane {

/// Settings by key, kept in one JSON file. A setting that is absent or of another type than asked
/// for reads as nothing, and the caller has its default.
///
/// Every change is written at once and atomically. Just before, the file is read again, with other
/// programs kept out of its folder for the moment, so that one that runs beside this one keeps its
/// settings; keys that nobody here knows are kept too.
/// A damaged file is put aside under another name. One that cannot be read or written is left
/// alone, and settings hold for this run. Of either, one line of the log tells. Any
/// thread.
class UserDefaults {
 public:
  /// The settings in `file`, which need not exist.
  explicit UserDefaults(std::filesystem::path file);
  UserDefaults(const UserDefaults&) = delete;
  UserDefaults& operator=(const UserDefaults&) = delete;

  /// The program's own: settings.json in its configuration folder, or a file of another name that
  /// nameStandard() was called with. Where there can be no such folder they hold for this run.
  [[nodiscard]] static UserDefaults& standard();
  /// To be called before standard() is used for the first time.
  static void nameStandard(std::string fileName);

  /// Why settings hold for this run only; none where they are kept.
  [[nodiscard]] ErrorPointer problem() const;

  [[nodiscard]] std::optional<bool> boolean(std::string_view key) const;
  [[nodiscard]] std::optional<std::int64_t> integer(std::string_view key) const;
  [[nodiscard]] std::optional<double> real(std::string_view key) const;
  [[nodiscard]] std::optional<std::string> string(std::string_view key) const;
  [[nodiscard]] std::optional<std::vector<std::string>> stringList(std::string_view key) const;
  /// Whatever stands there.
  [[nodiscard]] std::optional<JSONValue> value(std::string_view key) const;

  /// Calls `handler` on `queue` after the setting under `key` has changed: set to another value or
  /// removed here, or found changed by another program when this one writes. Until the subscription
  /// ends.
  [[nodiscard]] Subscription observe(std::string key, std::function<void()> handler,
                                     std::shared_ptr<DispatchQueue> queue = DispatchQueue::main());

  void set(std::string_view key, JSONValue value);
  void setReal(std::string_view key, double value);
  void setStringList(std::string_view key, const std::vector<std::string>& list);
  void remove(std::string_view key);

 private:
  struct Observation;

  /// Settings without a file.
  explicit UserDefaults(const Error& problem);
  void readAgain();
  void giveUpFile(const Error& problem);
  void tellChanges(const JSONValue& before);
  template <typename Change>
  void apply(Change change);

  const std::filesystem::path file_;
  mutable std::mutex mutex_;
  JSONValue settings_{JSONValue::Object()};
  ErrorPointer problem_;
  std::vector<std::weak_ptr<const Observation>> observations_;
};

}  // namespace corvane
