#include "platform/system/user_defaults.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <iterator>
#include <utility>

#include "platform/system/file_manager.h"
#include "platform/system/log.h"

namespace corvane {
namespace {

/// Calls `read` with the setting; none where the setting is absent or `read` finds another type.
template <typename Read>
auto readSetting(const JSONValue& settings, std::string_view key, Read read)
    -> std::optional<decltype(read(settings))> {
  const JSONValue* setting = settings.find(key);
  if (setting == nullptr) {
    return std::nullopt;
  }
  try {
    return read(*setting);
  } catch (const JSONError&) {
    return std::nullopt;
  }
}

template <typename Number>
std::optional<Number> numberOf(const JSONValue& settings, std::string_view key) {
  const JSONValue* setting = settings.find(key);
  if (setting == nullptr) {
    return std::nullopt;
  }
  try {
    const std::string& text = setting->number().text();
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
  } catch (const JSONError&) {
    return std::nullopt;
  }
}

/// Keeps other programs' settings out of the folder of `file` while it lives, and waits for them to
/// leave. Where the volume has no locks, or the folder is missing, there is none to keep.
class FolderLock {
 public:
  explicit FolderLock(const std::filesystem::path& file)
      : folder_(::open(file.has_parent_path() ? file.parent_path().c_str() : ".",
                       O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    while (folder_ >= 0 && ::flock(folder_, LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock() {
    if (folder_ >= 0) {
      ::close(folder_);
    }
  }

 private:
  const int folder_;
};

std::string& standardFileName() {
  static std::string name = "settings.json";
  return name;
}

/// A name beside `file` that nothing has yet.
std::filesystem::path nameAside(const std::filesystem::path& file) {
  std::filesystem::path aside = file.string() + ".damaged";
  std::error_code error;
  for (int i = 2; std::filesystem::exists(std::filesystem::symlink_status(aside, error)); ++i) {
    aside = file.string() + ".damaged-" + std::to_string(i);
  }
  return aside;
}

}  // namespace

struct UserDefaults::Observation {
  std::string key;
  std::function<void()> handler;
  std::shared_ptr<DispatchQueue> queue;
};

UserDefaults::UserDefaults(std::filesystem::path file) : file_(std::move(file)) {
  const FolderLock folderLock(file_);
  readAgain();
}

UserDefaults::UserDefaults(const Error& problem) {
  giveUpFile(problem);
}

UserDefaults& UserDefaults::standard() {
  static const std::unique_ptr<UserDefaults> defaults = [] {
    try {
      return std::make_unique<UserDefaults>(files::configDirectory() / standardFileName());
    } catch (const FileError& error) {
      return std::unique_ptr<UserDefaults>(new UserDefaults(error));
    }
  }();
  return *defaults;
}

void UserDefaults::nameStandard(std::string fileName) {
  standardFileName() = std::move(fileName);
}

ErrorPointer UserDefaults::problem() const {
  const std::lock_guard lock(mutex_);
  return problem_;
}

void UserDefaults::giveUpFile(const Error& problem) {
  problem_ = problem.copy();
  Log::write(problem, " Settings hold for this run only.");
}

void UserDefaults::readAgain() {
  try {
    JSONValue read = JSONValue::parse(files::read(file_));
    (void)read.object();
    settings_ = std::move(read);
  } catch (const FileError& error) {
    if (error.number != ENOENT) {
      giveUpFile(error);
    }
  } catch (const JSONError& error) {
    const auto aside = nameAside(file_);
    std::error_code failed;
    std::filesystem::rename(file_, aside, failed);
    Log::write("The settings in “", file_.string(), "” are damaged (", *error.description(), "); ",
               failed ? "they are overwritten" : "they are kept as “" + aside.string() + "”", ".");
  }
}

template <typename Change>
void UserDefaults::apply(Change change) {
  const std::lock_guard lock(mutex_);
  const FolderLock folderLock(file_);
  const JSONValue before = settings_;
  if (problem_ == nullptr) {
    readAgain();
  }
  change(settings_);
  tellChanges(before);
  if (problem_ != nullptr) {
    return;
  }
  try {
    files::writeAtomically(file_, settings_.prettyText() + "\n");
  } catch (const FileError& error) {
    giveUpFile(error);
  }
}

Subscription UserDefaults::observe(std::string key, std::function<void()> handler,
                                   std::shared_ptr<DispatchQueue> queue) {
  auto observation = std::make_shared<const Observation>(
      Observation{std::move(key), std::move(handler), std::move(queue)});
  const std::lock_guard lock(mutex_);
  std::erase_if(observations_, [](const auto& known) { return known.expired(); });
  observations_.push_back(observation);
  return Subscription(std::move(observation));
}

void UserDefaults::tellChanges(const JSONValue& before) {
  const auto valueIn = [](const JSONValue& settings, std::string_view key) {
    const JSONValue* value = settings.find(key);
    return value == nullptr ? std::nullopt : std::optional(*value);
  };
  for (const auto& weakObservation : observations_) {
    const auto observation = weakObservation.lock();
    if (observation == nullptr ||
        valueIn(before, observation->key) == valueIn(settings_, observation->key)) {
      continue;
    }
    observation->queue->async([weakObservation] {
      if (const auto living = weakObservation.lock()) {
        living->handler();
      }
    });
  }
}

std::optional<bool> UserDefaults::boolean(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  return readSetting(settings_, key, [](const JSONValue& setting) { return setting.boolean(); });
}

std::optional<std::int64_t> UserDefaults::integer(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  return numberOf<std::int64_t>(settings_, key);
}

std::optional<double> UserDefaults::real(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  return numberOf<double>(settings_, key);
}

std::optional<std::string> UserDefaults::string(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  return readSetting(settings_, key, [](const JSONValue& setting) { return setting.string(); });
}

std::optional<std::vector<std::string>> UserDefaults::stringList(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  return readSetting(settings_, key, [](const JSONValue& setting) {
    std::vector<std::string> list;
    for (const JSONValue& element : setting.array()) {
      list.push_back(element.string());
    }
    return list;
  });
}

std::optional<JSONValue> UserDefaults::value(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  return readSetting(settings_, key, [](const JSONValue& setting) { return setting; });
}

void UserDefaults::set(std::string_view key, JSONValue value) {
  apply([&](JSONValue& settings) { settings.set(key, std::move(value)); });
}

void UserDefaults::setReal(std::string_view key, double value) {
  char text[32];
  const auto end = std::to_chars(std::begin(text), std::end(text), value).ptr;
  // JSON has no infinity and no NaN: such a setting is none.
  if (const auto number = JSONNumber::fromText({text, end})) {
    set(key, *number);
  } else {
    remove(key);
  }
}

void UserDefaults::setStringList(std::string_view key, const std::vector<std::string>& list) {
  set(key, JSONValue::Array(list.begin(), list.end()));
}

void UserDefaults::remove(std::string_view key) {
  apply([&](JSONValue& settings) { settings.remove(key); });
}

}  // namespace corvane
