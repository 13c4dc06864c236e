#include "storage/application/info_dictionary.h"

#include <cstdlib>
#include <iostream>

#include "platform/system/file_manager.h"

namespace corvane {

InfoDictionary InfoDictionary::fromFile(const std::filesystem::path& file) {
  try {
    return InfoDictionary(JSONValue::parse(files::read(file)));
  } catch (const Error& error) {
    std::cout << "The program's description cannot be read: " << error << std::endl;
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
    std::cerr << "The program is not packaged as it should be: " << fileName << " has no " << key
              << "." << std::endl;
    std::abort();
  }
  return *value;
}

}  // namespace corvane
