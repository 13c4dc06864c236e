// The layout of a delimited text file, as an import or an export is set up with it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/json.h"

namespace corvane {

/// What stands between the cells of a line.
enum class ImportExportFieldDelimiter { comma, tab };

/// "comma" or "tab", as stored settings have it.
[[nodiscard]] std::string_view rawValue(ImportExportFieldDelimiter delimiter);
[[nodiscard]] std::optional<ImportExportFieldDelimiter> fieldDelimiterWithRawValue(
    std::string_view rawValue);
/// ',' or a tab.
[[nodiscard]] char separator(ImportExportFieldDelimiter delimiter);

/// The layout of a file. A broker's own configuration derives from ImportExportConfigurationValue
/// and adds its settings; the framework copies, compares and changes it without knowing them.
struct ImportExportConfiguration {
  ImportExportFieldDelimiter fieldDelimiter = ImportExportFieldDelimiter::comma;
  bool includesHeaderRow = true;
  /// The field of each column, by its raw name. The empty name stands for a column that an import
  /// ignores.
  std::vector<std::string> fieldOrder;

  virtual ~ImportExportConfiguration() = default;

  /// Whether `other` is of the same type and has the same values.
  [[nodiscard]] virtual bool isEqual(const ImportExportConfiguration& other) const = 0;
  [[nodiscard]] virtual std::unique_ptr<ImportExportConfiguration> copy() const = 0;

  friend bool operator==(const ImportExportConfiguration& left,
                         const ImportExportConfiguration& right) {
    return left.isEqual(right);
  }

 protected:
  ImportExportConfiguration() = default;
  ImportExportConfiguration(const ImportExportConfiguration&) = default;
  ImportExportConfiguration& operator=(const ImportExportConfiguration&) = default;
  [[nodiscard]] bool hasSameLayout(const ImportExportConfiguration& other) const {
    return fieldDelimiter == other.fieldDelimiter && includesHeaderRow == other.includesHeaderRow &&
           fieldOrder == other.fieldOrder;
  }
};

/// A configuration that is handed around; never null, never changed.
using ConfigurationPointer = std::shared_ptr<const ImportExportConfiguration>;

/// Gives a concrete configuration its comparison and copy. `Derived` is copyable and has a member
/// `bool hasSameSettings(const Derived&) const` for what it adds to the layout.
template <typename Derived>
struct ImportExportConfigurationValue : ImportExportConfiguration {
  [[nodiscard]] bool isEqual(const ImportExportConfiguration& other) const final {
    const auto* same = dynamic_cast<const Derived*>(&other);
    return same != nullptr && hasSameLayout(*same) && self().hasSameSettings(*same);
  }
  [[nodiscard]] std::unique_ptr<ImportExportConfiguration> copy() const final {
    return std::make_unique<Derived>(self());
  }

 private:
  [[nodiscard]] const Derived& self() const { return static_cast<const Derived&>(*this); }
};

/// `configuration` after `change(ImportExportConfiguration&)`.
template <typename Change>
[[nodiscard]] ConfigurationPointer changed(const ImportExportConfiguration& configuration,
                                           const Change& change) {
  auto copy = configuration.copy();
  change(*copy);
  return copy;
}

/// `configuration` with delimiter, header row and field order of `layout`.
[[nodiscard]] ConfigurationPointer withLayout(const ImportExportConfiguration& configuration,
                                              const ImportExportConfiguration& layout);

/// Writes the layout into the JSON object of a configuration, with the keys "fieldDelimiter",
/// "includesHeaderRow" and "fieldOrder".
void writeLayout(const ImportExportConfiguration& configuration, JSONValue& object);
/// Reads it back. Throws JSONError where one of the three is missing or is something else; then
/// nothing has been changed.
void readLayout(const JSONValue& object, ImportExportConfiguration& configuration);

}  // namespace corvane
