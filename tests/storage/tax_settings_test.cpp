// What a workspace keeps about taxes.

#include "storage/workspace/tax_settings_change.h"
#include "storage/workspace_world.h"

namespace corvane::testing {
namespace {

TEST(TaxSettings, AreKeptWithTheWorkspaceAndCanBeUndone) {
  WorkspaceWorld world;
  const TaxSettings british{4, 6, TaxCountry::unitedKingdom, true};
  const PortfolioTaxRole kims{TaxRole::affiliated, "Kim", true};
  {
    const auto document = world.newDocument();
    world.deposit(*document, "10");
    const auto& model = document->model();
    const PortfolioPointer portfolio = model->portfolios().front();
    document->save(world.file);
    EXPECT_EQ(readText(world.file / "General.json").find("tax"), std::string::npos)
        << "a workspace that nobody has asked about taxes says nothing of them";

    int heard = 0;
    const auto token = NotificationCenter::defaultCenter().addObserver(
        taxSettingsDidChange, model.get(), [&](const auto&) { ++heard; });
    changeTaxSettings(model, british, document->undoManager());
    changeTaxRole(model, portfolio, kims, document->undoManager());
    EXPECT_EQ(heard, 2);
    EXPECT_TRUE(document->isDocumentEdited());
    EXPECT_TRUE(document->undoManager()->undo() && document->undoManager()->undo());
    EXPECT_EQ(model->taxSettings, TaxSettings());
    EXPECT_EQ(model->taxRoleOf(portfolio), std::nullopt);
    EXPECT_FALSE(document->isDocumentEdited());
    EXPECT_TRUE(document->undoManager()->redo() && document->undoManager()->redo());
    changeTaxRole(model, portfolio, kims, document->undoManager());
    EXPECT_EQ(heard, 6) << "what is so already is no change";
    document->save(world.file);
  }
  const auto document = world.open(world.file);
  const auto& model = document->model();
  EXPECT_EQ(model->taxSettings, british);
  EXPECT_EQ(model->taxRoleOf(model->portfolios().front()), kims);
}

TEST(TaxSettings, OfANewerProgramKeepNoWorkspaceFromOpening) {
  const auto read = GeneralProperties::fromJSON(
      R"({"taxSettings":{"yearStart":"02-29","country":"mars","countedOn":"trade","x":1},)"
      R"("portfolioTaxRoles":{"1":{"role":"trust"},"2":{"role":"registered"},"x":{"role":"taxable"}}})");
  EXPECT_EQ(read.taxSettings, (TaxSettings{.byTradeDate = true}));
  EXPECT_EQ(read.taxRoles, (std::map<std::int64_t, PortfolioTaxRole>{{2, {TaxRole::registered}}}));
}

TEST(TaxSettings, CutYearsWhereTheyStart) {
  const TaxSettings british{4, 6};
  EXPECT_EQ(british.lastDay(2023), (YearMonthDay{2024, 4, 5}));
  EXPECT_EQ(british.yearOf({2024, 4, 5}), 2023);
  EXPECT_EQ(british.yearOf({2024, 4, 6}), 2024);
  EXPECT_EQ((TaxSettings{3, 1}.lastDay(2023)), (YearMonthDay{2024, 2, 29}));
}

TEST(TaxSettings, ProposeARegisteredAccountByWholeWords) {
  for (const char* name : {"RRSP", "My tfsa 2", "Kim-RESP", "Mon CELI", "LIRA"}) {
    EXPECT_EQ(proposedTaxRole(name), PortfolioTaxRole{TaxRole::registered}) << name;
  }
  for (const char* name : {"", "Celine", "Cash", "CELIÉ", "Lirabank", "RRSPs"}) {
    EXPECT_EQ(proposedTaxRole(name), std::nullopt) << name;
  }
}

}  // namespace
}  // namespace corvane::testing
