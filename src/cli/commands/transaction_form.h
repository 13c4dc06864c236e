// The form for one transaction, filled by the options of a command.
#pragma once

#include <string>
#include <vector>

#include "cli/console/command_line.h"
#include "presentation/transactions/edit_transaction_view_controller.h"

namespace corvane::cli {

/// The form takes no entry of these fields. In the form's own words.
class EntryRefusal : public ErrorValue<EntryRefusal> {
 public:
  explicit EntryRefusal(std::string text) : text_(std::move(text)) {}
  [[nodiscard]] std::optional<std::string> description() const override { return text_; }
  [[nodiscard]] bool hasSameValues(const EntryRefusal& other) const { return text_ == other.text_; }

 private:
  std::string text_;
};

/// The options that stand for the fields of the form.
[[nodiscard]] std::vector<Option> transactionOptions();

/// Fills the fields of `form`, which is loaded, in the order in which a person goes through them,
/// so that those that nothing is said of follow as they do on the screen. Amounts and days are
/// written alike in every locale. Throws UsageError for what cannot be understood and for fields
/// that the kind of transaction does not have, EntryRefusal for what a field does not take.
void fillForm(EditTransactionViewController& form, const CommandLine& line);

/// The order of a filled form. Throws EntryRefusal with what is missing, and OrderError.
[[nodiscard]] Order orderOf(const EditTransactionViewController& form);

}  // namespace corvane::cli
