#include "exchange/panels/import_export_field_setup_view_controller.h"

#include <algorithm>
#include <random>
#include <utility>

namespace corvane {
namespace {

using Setup = ImportExportFieldSetupViewController;
using FieldOrder = std::vector<std::string>;

/// A row between `lowest` and the last of `totalRows`, both included.
int randomRow(int lowest, int totalRows) {
  thread_local std::mt19937 generator{std::random_device()()};
  return std::uniform_int_distribution(std::min(lowest, totalRows - 1), totalRows - 1)(generator);
}

bool contains(const FieldOrder& order, const std::string& field) {
  return std::ranges::find(order, field) != order.end();
}

}  // namespace

JSONValue Setup::DefaultBasicConfiguration::json() const {
  JSONValue object;
  writeLayout(*this, object);
  return object;
}

Setup::DefaultBasicConfiguration Setup::DefaultBasicConfiguration::fromJSON(
    const JSONValue& value) {
  DefaultBasicConfiguration configuration;
  readLayout(value, configuration);
  return configuration;
}

void Setup::prepare(Mode mode, std::vector<std::string> allFields,
                    std::map<std::string, std::string> titlesByField, int totalRows,
                    SampleStringValueProvider sampleProvider, ConfigurationPointer configuration) {
  mode_ = mode;
  allFields_ = std::move(allFields);
  titlesByField_ = std::move(titlesByField);
  totalRows_ = totalRows;
  sampleStringValueProvider_ = std::move(sampleProvider);
  configuration_ = std::move(configuration);
  update();
}

void Setup::setConfiguration(ConfigurationPointer configuration) {
  if (*configuration == *configuration_) {
    return;
  }
  configuration_ = std::move(configuration);
  update();
}

void Setup::update() {
  updateSamples();
  std::erase_if(selectedRows_, [this](std::size_t row) { return row >= numberOfRows(); });
  if (viewDidUpdate) {
    viewDidUpdate();
  }
}

void Setup::updateSamples() {
  if (totalRows_ <= 1) {
    sampleIndex1_ = totalRows_ == 1 ? std::optional(0) : std::nullopt;
    sampleIndex2_ = std::nullopt;
    return;
  }
  sampleIndex1_ = mode_ == Mode::importing && configuration_->includesHeaderRow ? 1 : 0;
  if (!sampleIndex2_) {
    sampleIndex2_ = randomRow(*sampleIndex1_ + 1, totalRows_);
  }
}

std::string Setup::titleOf(const std::string& field) const {
  const auto title = titlesByField_.find(field);
  return title == titlesByField_.end() ? "?" : title->second;
}

std::optional<int> Setup::sampleIndex(int example) const {
  return example == 0 ? sampleIndex1_ : sampleIndex2_;
}

std::string Setup::orderText(std::size_t row) const {
  return std::to_string(row + 1) + ".";
}

std::vector<Setup::FieldItem> Setup::fieldItems(std::size_t row) const {
  const FieldOrder& order = configuration_->fieldOrder;
  std::vector<FieldItem> items;
  for (const std::string& field : allFields_) {
    const CheckState state = order[row] == field      ? CheckState::on
                             : contains(order, field) ? CheckState::mixed
                                                      : CheckState::off;
    items.push_back({titleOf(field), field, state});
  }
  if (mode_ == Mode::importing) {
    items.push_back({"Ignore Field " + std::to_string(row + 1), "",
                     order[row].empty() ? CheckState::on : CheckState::off});
  }
  return items;
}

Setup::ExampleCell Setup::exampleCell(std::size_t row, int example) const {
  const auto sample = sampleIndex(example);
  std::string text;
  if (sample && sampleStringValueProvider_) {
    text = sampleStringValueProvider_(*sample, static_cast<int>(row)).value_or("");
  }
  return {std::move(text), configuration_->fieldOrder[row].empty()};
}

std::string Setup::exampleTitle(int example) const {
  const auto sample = sampleIndex(example);
  if (!sample) {
    return "";
  }
  // The line of the file on which the row stands.
  const bool isBelowHeader = mode_ == Mode::exporting && configuration_->includesHeaderRow;
  return "Preview (Row " + std::to_string(*sample + (isBelowHeader ? 2 : 1)) + ")";
}

CheckBox Setup::importHasHeaderRowCheckboxButton() const {
  const bool hasHeader = configuration_->includesHeaderRow;
  const int dataRows = std::max(0, totalRows_ - (hasHeader ? 1 : 0));
  return {.isOn = hasHeader,
          .title = "File includes header row (" + std::to_string(dataRows) + " data rows, " +
                   std::to_string(numberOfRows()) + " fields)",
          .isHidden = mode_ != Mode::importing};
}

Button Setup::addButton() const {
  return {.isEnabled = numberOfRows() < allFields_.size(), .isHidden = mode_ != Mode::exporting};
}

Button Setup::removeButton() const {
  return {.isEnabled = !selectedRows_.empty() && selectedRows_.size() < numberOfRows(),
          .isHidden = mode_ != Mode::exporting};
}

Button Setup::resetButton() const {
  return {.isEnabled = configuration_->fieldOrder != allFields_,
          .isHidden = mode_ != Mode::exporting};
}

void Setup::setSelectedRows(std::set<std::size_t> rows) {
  selectedRows_ = std::move(rows);
  update();
}

void Setup::changeConfiguration(ConfigurationPointer configuration) {
  configuration_ = std::move(configuration);
  if (configurationChangedHandler) {
    configurationChangedHandler(configuration_);
  }
  update();
}

void Setup::setIncludesHeaderRow(bool includes) {
  changeConfiguration(changed(*configuration_, [=](ImportExportConfiguration& configuration) {
    configuration.includesHeaderRow = includes;
  }));
}

void Setup::setFieldOrder(FieldOrder order, const std::string& actionName) {
  const FieldOrder former = configuration_->fieldOrder;
  if (order == former) {
    return;
  }
  undoManager->registerUndo(shared_from_this(), [former, actionName](Setup& self) {
    self.setFieldOrder(former, actionName);
  });
  undoManager->setActionName(actionName);
  changeConfiguration(changed(*configuration_, [&](ImportExportConfiguration& configuration) {
    configuration.fieldOrder = std::move(order);
  }));
}

void Setup::changeField(std::size_t row, const std::string& field) {
  FieldOrder order = configuration_->fieldOrder;
  if (!field.empty()) {
    const auto other = std::ranges::find(order, field);
    if (other != order.end()) {
      *other = order[row];
    }
  }
  order[row] = field;
  setFieldOrder(std::move(order),
                field.empty() ? "Change to Ignore Field" : "Change to “" + titleOf(field) + "”");
}

void Setup::addField() {
  FieldOrder order = configuration_->fieldOrder;
  const auto missing = std::ranges::find_if(
      allFields_, [&](const std::string& field) { return !contains(order, field); });
  if (missing == allFields_.end()) {
    return;
  }
  const std::size_t position = selectedRows_.empty() ? order.size() : *selectedRows_.rbegin() + 1;
  order.insert(order.begin() + static_cast<std::ptrdiff_t>(position), *missing);
  setFieldOrder(std::move(order), "Add “" + titleOf(*missing) + "”");
  setSelectedRows({position});
}

void Setup::removeSelectedFields() {
  if (!removeButton().isEnabled) {
    return;
  }
  const FieldOrder& order = configuration_->fieldOrder;
  FieldOrder kept;
  for (std::size_t row = 0; row < order.size(); ++row) {
    if (!selectedRows_.contains(row)) {
      kept.push_back(order[row]);
    }
  }
  const std::string name = selectedRows_.size() == 1
                               ? "Remove “" + titleOf(order[*selectedRows_.begin()]) + "”"
                               : "Remove " + std::to_string(selectedRows_.size()) + " Fields";
  selectedRows_.clear();
  setFieldOrder(std::move(kept), name);
}

void Setup::resetFields() {
  setFieldOrder(allFields_, "Reset Field Order");
}

void Setup::moveFields(const std::set<std::size_t>& rows, std::size_t target) {
  if (rows.empty()) {
    return;
  }
  const FieldOrder& order = configuration_->fieldOrder;
  FieldOrder before;
  FieldOrder moved;
  FieldOrder behind;
  for (std::size_t row = 0; row < order.size(); ++row) {
    FieldOrder& part = rows.contains(row) ? moved : row < target ? before : behind;
    part.push_back(order[row]);
  }
  const std::string name = moved.size() == 1 ? "Move “" + titleOf(moved.front()) + "”"
                                             : "Move " + std::to_string(moved.size()) + " Fields";
  before.insert(before.end(), moved.begin(), moved.end());
  before.insert(before.end(), behind.begin(), behind.end());
  setFieldOrder(std::move(before), name);
}

void Setup::complete(bool goesOn) {
  const auto self = shared_from_this();
  if (auto handler = std::exchange(completionHandler, nullptr)) {
    handler(goesOn);
  }
}

}  // namespace corvane
