#include "storage/application/info_dictionary.h"

#include "platform/fatal_error.h"
#include "platform/system/file_manager.h"
#include "platform/system/log.h"

namespace corvane {

InfoDictionary InfoDictionary::fromFile(const std::filesystem::path& file) {
  try {
    return InfoDictionary(JSONValue::parse(files::read(file)));
  } catch (const Error& error) {
    Log::write("The program's description cannot be read: ", error);
    return InfoDictionary(JSONValue::Object());
  }
}

std::optional<std::string> InfoDictionary::find(std::string_view key) const {
  const JSONValue* value = content_.find(key);
  if (value == nullptr) {
    return std::nullopt;
  }
  return value->visit([](const auto& held) -> std::optional<std::string> {
    if constexpr (std::is_same_v<std::decay_t<decltype(held)>, std::string>) {
      return held;
    } else {
      return std::nullopt;
    }
  });
}

std::string InfoDictionary::required(std::string_view key) const {
  const auto value = find(key);
  if (!value) {
    fatalError("The program is not packaged as it should be: " + std::string(fileName) +
               " has no " + std::string(key) + ".");
  }
  return *value;
}

}  // namespace corvane
