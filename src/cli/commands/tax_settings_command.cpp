#include <tuple>

#include "cli/commands/commands.h"
#include "cli/console/listing.h"
#include "cli/console/workspace_file.h"
#include "storage/workspace/tax_settings_change.h"

namespace corvane::cli {
namespace {

/// The settings that the options ask for; those of the workspace where they are silent.
TaxSettings settingsOf(const CommandLine& line, TaxSettings settings) {
  if (const auto text = line.value("--year-start")) {
    const auto start = dayOfEveryYear(*text);
    if (!start) {
      throw UsageError("“" + *text + "” is not a day such as 04-06.");
    }
    std::tie(settings.startMonth, settings.startDay) = *start;
  }
  if (const auto word = line.value("--country")) {
    const auto country = taxCountryNamed(*word);
    if (!country) {
      throw UsageError("“" + *word + "” is none of none, canada and unitedKingdom.");
    }
    settings.country = *country;
  }
  if (const auto word = line.value("--counted-on")) {
    if (*word != "settlement" && *word != "trade") {
      throw UsageError("“" + *word + "” is neither settlement nor trade.");
    }
    settings.byTradeDate = *word == "trade";
  }
  return settings;
}

PortfolioTaxRole roleOf(const CommandLine& line) {
  const auto role = taxRoleNamed(line.required("--role"));
  if (!role) {
    throw UsageError("“" + line.required("--role") +
                     "” is none of taxable, registered, affiliated and notMine.");
  }
  const bool isAffiliated = *role == TaxRole::affiliated;
  const std::string person = line.value("--person").value_or("");
  if (isAffiliated == person.empty()) {
    throw UsageError(isAffiliated ? "An affiliated portfolio needs --person."
                                  : "--person is that of an affiliated portfolio.");
  }
  if (line.has("--registered-account") && !isAffiliated) {
    throw UsageError("--registered-account goes with the role affiliated.");
  }
  return {*role, person, line.has("--registered-account")};
}

std::vector<Listing::Field> roleFields() {
  using enum Listing::Kind;
  return {{"portfolio", "Portfolio"},
          {"role", "Role"},
          {"person", "Person"},
          {"registeredAccount", "Registered Account", boolean},
          {"proposedRole", "Proposed"}};
}

void writePortfolios(const WorkspaceModel& model, ListingFormat format, std::ostream& out) {
  Listing listing(roleFields());
  for (const PortfolioPointer& portfolio : model.portfolios()) {
    const auto role = model.taxRoleOf(portfolio);
    const auto proposed = role ? std::nullopt : proposedTaxRole(portfolio->name);
    const auto wordOf = [](const std::optional<PortfolioTaxRole>& told) {
      return told ? std::string(wordFor(told->role)) : std::string();
    };
    listing.add({portfolio->name, wordOf(role), role ? role->person : "",
                 role ? (role->isRegistered ? "true" : "false") : "", wordOf(proposed)});
  }
  listing.write(format, out);
}

void writeSettings(const WorkspaceModel& model, std::ostream& out) {
  const TaxSettings& settings = model.taxSettings;
  const auto twoDigits = [](int number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  out << "The tax year starts on " << twoDigits(settings.startMonth) << '-'
      << twoDigits(settings.startDay) << ".\nRules: " << wordFor(settings.country)
      << ".\nCounted on: " << (settings.byTradeDate ? "trade" : "settlement") << ".\n\n";
}

void showOrChange(const CommandLine& line, const Console& console) {
  WorkspaceFile workspace(line.word(0), console);
  const auto& model = workspace.document()->model();
  const TaxSettings settings = settingsOf(line, model->taxSettings);
  if (line.has("--role") != line.has("--portfolio")) {
    throw UsageError("--role and --portfolio go together.");
  }
  if (!line.has("--role") && (line.has("--person") || line.has("--registered-account"))) {
    throw UsageError("--person and --registered-account go with --role.");
  }
  const bool changes = line.has("--role") || settings != model->taxSettings;
  if (changes) {
    workspace.requireSound();
    changeTaxSettings(model, settings, nullptr);
    if (line.has("--role")) {
      changeTaxRole(model, workspace.portfolio(line.required("--portfolio")), roleOf(line),
                    nullptr);
    }
    workspace.save();
    return;
  }
  const ListingFormat format = listingFormat(line);
  if (format == ListingFormat::table) {
    writeSettings(*model, console.out);
  }
  writePortfolios(*model, format, console.out);
}

}  // namespace

Command taxSettingsCommand() {
  return {
      .name = "tax-settings",
      .summary = "Shows or changes what a workspace keeps about taxes.",
      .words = {"WORKSPACE"},
      .options = joined(
          {{"--year-start", "MM-DD", "the first day of the tax year, such as 04-06"},
           {"--country", "COUNTRY", "whose rules hold", false, false, "none canada unitedKingdom"},
           {"--counted-on", "DAY", "the day that counts of a trade", false, false,
            "settlement trade"},
           {"--portfolio", "NAME", "the portfolio whose role is set"},
           {"--role", "ROLE", "what it is to your taxes", false, false,
            "taxable registered affiliated notMine"},
           {"--person", "NAME", "whose an affiliated portfolio is"},
           {"--registered-account", "", "an affiliated portfolio is a registered account"}},
          listingOptions()),
      .explanation =
          "Without a change to make, the settings and the role of each portfolio are shown. A "
          "portfolio\nwhose role nobody has set counts as taxable; a role is proposed where its "
          "name tells of a\nregistered account, and never set by itself. --csv and --json write "
          "the portfolios.\n",
      .listings = {{"", roleFields()}},
      .run = &showOrChange};
}

}  // namespace corvane::cli
