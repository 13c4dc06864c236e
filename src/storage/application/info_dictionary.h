// What the program knows about itself: its version and the names of its documents.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/data/json.h"

namespace corvane {

/// The content of "Info.json" among the program's data files. Any thread.
class InfoDictionary {
 public:
  static constexpr std::string_view fileName = "Info.json";

  explicit InfoDictionary(JSONValue content) : content_(std::move(content)) {}

  /// Reads the file. A missing or damaged one counts as empty: what it should name is then missing.
  [[nodiscard]] static InfoDictionary fromFile(const std::filesystem::path& file);

  /// The build number, by which versions are compared, and the version for people. A program that
  /// was packaged without them stops here with a text that says so.
  [[nodiscard]] std::string bundleVersion() const { return required("CFBundleVersion"); }
  [[nodiscard]] std::string shortVersion() const { return required("CFBundleShortVersionString"); }

  [[nodiscard]] std::optional<std::string> userGuideFilename() const {
    return find("CorvaneUserGuideFilename");
  }
  [[nodiscard]] std::optional<std::string> releaseNotesFilename() const {
    return find("CorvaneReleaseNotesFilename");
  }

 private:
  [[nodiscard]] std::optional<std::string> find(std::string_view key) const;
  [[nodiscard]] std::string required(std::string_view key) const;

  JSONValue content_;
};

}  // namespace corvane
