// The sheet in which the user says what stands in which column of a file.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/controls/form_controls.h"
#include "exchange/brokers/import_export_broker.h"
#include "exchange/brokers/import_export_configuration.h"
#include "platform/async/undo_manager.h"
#include "platform/data/json.h"

namespace corvane {

/// A table with a row for each column of the file: its number, its field, and two samples of what
/// stands there. State and rules without widgets. Held by shared pointer, for its undo steps; main
/// queue only.
class ImportExportFieldSetupViewController
    : public std::enable_shared_from_this<ImportExportFieldSetupViewController> {
 public:
  enum class Mode { importing, exporting };
  /// The text of a cell by row and column, both from 0.
  using SampleStringValueProvider = std::function<std::optional<std::string>(int row, int column)>;

  /// What the view holds until it is handed a real configuration.
  struct DefaultBasicConfiguration : ImportExportConfigurationValue<DefaultBasicConfiguration> {
    [[nodiscard]] bool hasSameSettings(const DefaultBasicConfiguration& /*other*/) const {
      return true;
    }
    [[nodiscard]] JSONValue json() const;
    /// Throws JSONError.
    [[nodiscard]] static DefaultBasicConfiguration fromJSON(const JSONValue& value);
  };

  static constexpr std::string_view draggedRowPasteboardType =
      "ca.orlend.Corvane.ImportExportFieldIndex";
  /// The table's columns, by identifier.
  static constexpr std::array<std::string_view, 4> tableColumns = {"order", "field", "example1",
                                                                   "example2"};

  /// What the setup is for.
  void prepare(Mode mode, std::vector<std::string> allFields,
               std::map<std::string, std::string> titlesByField, int totalRows,
               SampleStringValueProvider sampleProvider, ConfigurationPointer configuration);

  [[nodiscard]] std::optional<Mode> mode() const { return mode_; }
  [[nodiscard]] const std::vector<std::string>& allFields() const { return allFields_; }
  [[nodiscard]] const std::map<std::string, std::string>& titlesByField() const {
    return titlesByField_;
  }
  [[nodiscard]] int totalRows() const { return totalRows_; }
  /// The rows shown as examples.
  [[nodiscard]] std::optional<int> sampleIndex1() const { return sampleIndex1_; }
  [[nodiscard]] std::optional<int> sampleIndex2() const { return sampleIndex2_; }

  [[nodiscard]] const ConfigurationPointer& configuration() const { return configuration_; }
  /// Shows another configuration; the handler is not told.
  void setConfiguration(ConfigurationPointer configuration);

  /// Told of each change that is made here.
  std::function<void(ConfigurationPointer)> configurationChangedHandler;
  /// Told once whether the user goes on.
  std::move_only_function<void(bool)> completionHandler;
  /// Keeps the setup as a layout of this name, and returns the file that it is in; none where the
  /// broker has no layouts. Throws Error.
  std::function<std::filesystem::path(const std::string& name)> rememberLayoutHandler;
  /// The broker's own settings, shown beside the table; may be null.
  std::shared_ptr<AccessoryConfigurationViewController> accessoryViewController;
  /// Takes the undo steps of all changes.
  const std::shared_ptr<UndoManager> undoManager = std::make_shared<UndoManager>();
  /// Set by the shell: shows the state again. Change the configuration in it and it is called
  /// again.
  std::function<void()> viewDidUpdate;

  // What the view shows.

  enum class CheckState { off, on, mixed };
  struct FieldItem {
    std::string title;
    std::string field;  ///< the raw name, empty for "Ignore Field"
    CheckState state;
    friend bool operator==(const FieldItem&, const FieldItem&) = default;
  };
  struct ExampleCell {
    std::string text;  ///< in the monospaced system font
    bool isSecondary;  ///< in the colour of secondary labels, since the column is ignored
    friend bool operator==(const ExampleCell&, const ExampleCell&) = default;
  };

  [[nodiscard]] std::size_t numberOfRows() const { return configuration_->fieldOrder.size(); }
  /// "3."
  [[nodiscard]] std::string orderText(std::size_t row) const;
  /// The pop-up of a row.
  [[nodiscard]] std::vector<FieldItem> fieldItems(std::size_t row) const;
  /// The cells of the columns "example1" (0) and "example2" (1).
  [[nodiscard]] ExampleCell exampleCell(std::size_t row, int example) const;
  [[nodiscard]] std::string exampleTitle(int example) const;
  [[nodiscard]] bool allowsMultipleSelection() const { return mode_ == Mode::exporting; }
  [[nodiscard]] CheckBox importHasHeaderRowCheckboxButton() const;
  [[nodiscard]] Button addButton() const;
  [[nodiscard]] Button removeButton() const;
  [[nodiscard]] Button resetButton() const;

  [[nodiscard]] const std::set<std::size_t>& selectedRows() const { return selectedRows_; }
  void setSelectedRows(std::set<std::size_t> rows);

  // What the user does.

  void setIncludesHeaderRow(bool includes);
  /// Gives a row the field `field`, which may be empty for an import. A row that has it already
  /// takes the old field of this one.
  void changeField(std::size_t row, const std::string& field);
  void addField();
  void removeSelectedFields();
  void resetFields();
  /// Moves rows in front of the row `target`, or behind the last one where that is the number of
  /// rows. They keep their order.
  void moveFields(const std::set<std::size_t>& rows, std::size_t target);
  void submit() { complete(true); }
  void cancel() { complete(false); }

 private:
  void updateSamples();
  void setFieldOrder(std::vector<std::string> order, const std::string& actionName);
  void changeConfiguration(ConfigurationPointer configuration);
  void complete(bool goesOn);
  void update();
  [[nodiscard]] std::string titleOf(const std::string& field) const;
  [[nodiscard]] std::optional<int> sampleIndex(int example) const;

  std::optional<Mode> mode_;
  std::vector<std::string> allFields_;
  std::map<std::string, std::string> titlesByField_;
  int totalRows_ = 0;
  std::optional<int> sampleIndex1_;
  std::optional<int> sampleIndex2_;
  SampleStringValueProvider sampleStringValueProvider_;
  ConfigurationPointer configuration_ = std::make_shared<DefaultBasicConfiguration>();
  std::set<std::size_t> selectedRows_;
};

}  // namespace corvane
