// Text on its way between the program, which speaks UTF-8, and Qt.
#pragma once

#include <QString>
#include <filesystem>
#include <string>
#include <string_view>

namespace corvane::desktop {

[[nodiscard]] inline QString qtText(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

[[nodiscard]] inline std::string utf8Text(const QString& text) {
  return text.toStdString();
}

[[nodiscard]] inline QString qtPath(const std::filesystem::path& path) {
  return QString::fromStdU16String(path.u16string());
}

[[nodiscard]] inline std::filesystem::path filePath(const QString& path) {
  return std::filesystem::path(path.toStdU16String());
}

}  // namespace corvane::desktop
