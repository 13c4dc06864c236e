#include "presentation/taxes/tax_roles_form.h"

#include "platform/text/unicode/isolation.h"

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

std::string monthAndDay(const TaxSettings& settings) {
  const auto twoDigits = [](int number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  return twoDigits(settings.startMonth) + "-" + twoDigits(settings.startDay);
}

}  // namespace

TaxRolesForm::TaxRolesForm(std::shared_ptr<WorkspaceModel> model,
                           std::shared_ptr<UndoManager> undoManager)
    : settings(model->taxSettings),
      yearStart(monthAndDay(settings)),
      model_(std::move(model)),
      undoManager_(std::move(undoManager)) {
  for (const PortfolioPointer& portfolio : model_->portfolios()) {
    Line line{.portfolio = portfolio, .role = {}, .isConfirmed = false, .proposal = ""};
    if (const auto role = model_->taxRoleOf(portfolio)) {
      line.role = *role;
      line.isConfirmed = true;
    } else if (const auto proposed = proposedTaxRole(portfolio->name)) {
      line.role = *proposed;
      line.proposal = "Proposed by its name.";
    }
    lines.push_back(std::move(line));
  }
}

std::string TaxRolesForm::problem() const {
  if (!dayOfEveryYear(yearStart)) {
    return "“" + yearStart + "” is not a day that every year has, such as 04-06.";
  }
  for (const Line& line : lines) {
    if (line.role.role == TaxRole::affiliated && line.role.person.empty()) {
      return "Whose portfolio is “" + isolatedName(line.portfolio->name) + "”?";
    }
  }
  return "";
}

void TaxRolesForm::apply() {
  const auto start = dayOfEveryYear(yearStart);
  std::tie(settings.startMonth, settings.startDay) = *start;
  // What is changed one after the other is taken back at once.
  if (undoManager_ != nullptr) {
    undoManager_->beginUndoGrouping();
  }
  changeTaxSettings(model_, settings, undoManager_);
  for (Line& line : lines) {
    if (line.role.role != TaxRole::affiliated) {
      line.role.person.clear();
      line.role.isRegistered = false;
    }
    changeTaxRole(model_, line.portfolio, line.role, undoManager_);
  }
  if (undoManager_ != nullptr) {
    undoManager_->endUndoGrouping();
    undoManager_->setActionName("Tax Roles");
  }
}

}  // namespace corvane
