// What a workspace keeps in its file, and how it answers files that are not as they should be.

#include <cerrno>
#include <limits>

#include "platform/async/dispatch_queue.h"
#include "storage/workspace_world.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

TEST(WorkspaceDocument, KeepsItsContentThroughSavingAndOpening) {
  WorkspaceWorld world;
  GeneralProperties::RegressionSettings settings;
  settings.batchStrategy = InvestmentStrategy::buyAndHold();
  settings.detailStrategy = InvestmentStrategy::defaultStrategy();
  settings.detailStrategy->stopLossBuyMax = Decimal::greatestFiniteMagnitude();
  settings.detailScenario = InvestmentScenario::defaultScenario();
  StoredState state;
  {
    const auto document = world.newDocument();
    state = StoredState::of(world.deposit(*document, "1234.56"));
    auto gone = std::make_shared<NamedProvider>("Gone");
    document->model()->watchlistEquities = {world.provider->equityWithId("XYZ"),
                                            gone->equityWithId("GONE"),
                                            world.provider->equityWithId("ABC")};
    gone.reset();
    document->model()->tradingScenarioSettings = settings;
    document->save(world.file);
    document->save(world.files / "Copy.corvane");
    EXPECT_EQ(document->displayName(), "Copy");
  }
  EXPECT_THAT(namesIn(world.surroundings.temporaryDirectory), IsEmpty());
  for (const fs::path& file : {world.file, world.files / "Copy.corvane"}) {
    EXPECT_THAT(namesIn(file), UnorderedElementsAre("General.json", "LocalPortfolios.sqlite3"));
  }
  EXPECT_EQ(JSONValue::parse(readText(world.file / "General.json")).at("watchlistSymbols").text(),
            R"([{"provider":"Shared","identifier":"XYZ"},{"provider":"?","identifier":"GONE"},)"
            R"({"provider":"Shared","identifier":"ABC"}])");

  const auto document = world.open(world.file);
  const auto& model = *document->model();
  EXPECT_THAT(model.watchlistEquities, ElementsAre(world.provider->equityWithId("XYZ"),
                                                   world.provider->equityWithId("ABC")));
  EXPECT_EQ(model.tradingScenarioSettings, settings);
  EXPECT_EQ(model.lastSavedAppVersion, "100");
  ASSERT_EQ(model.portfolios().size(), 1U);
  state.name.clear();  // no name is in the file until the properties are saved
  EXPECT_EQ(StoredState::of(model.portfolios().front()), state);
  EXPECT_THAT(world.refreshed, ElementsAre(&model));
  EXPECT_FALSE(document->isDocumentEdited());

  // Under test the provider without data answers for everything, whoever it was.
  const auto nominal = std::make_shared<NamedProvider>("Nominal");
  world.surroundings.makeQuoteProviderUnderTest = [&] { return nominal; };
  const auto underTest = world.open(world.file)->model();
  EXPECT_THAT(underTest->watchlistEquities,
              ElementsAre(nominal->equityWithId("XYZ"), nominal->equityWithId("GONE"),
                          nominal->equityWithId("ABC")));
}

TEST(WorkspaceDocument, TakesPackagesWithLessOrMoreThanItsOwnFiles) {
  WorkspaceWorld world;
  fs::create_directory(world.file);
  writeText(world.file / "LocalPortfolios.sqlite3", "");
  writeText(world.file / "Notes.txt", "of the user");
  writeText(world.file / "Empty.txt", "");
  const auto before = contentsOf(world.files);
  const auto document = world.open(world.file);
  EXPECT_THAT(document->model()->portfolios(), IsEmpty());
  EXPECT_EQ(document->model()->lastSavedAppVersion, std::nullopt);
  EXPECT_EQ(contentsOf(world.files), before);
  EXPECT_EQ(fs::status(document->workingDirectoryURL()).permissions(), fs::perms::owner_all);

  document->save(world.file);
  EXPECT_THAT(namesIn(world.file),
              UnorderedElementsAre("General.json", "LocalPortfolios.sqlite3", "Notes.txt"));
  SQLiteDatabase database(world.file / "LocalPortfolios.sqlite3", SQLiteDatabase::Mode::readOnly);
  SQLiteStatement version = database.query("PRAGMA user_version;");
  ASSERT_TRUE(version.step());
  EXPECT_EQ(version.integer(0), 2);
}

TEST(WorkspaceDocument, RefusesDamagedPackagesAndLeavesThemAlone) {
  WorkspaceWorld world;
  const auto withGeneral = [](const std::string& text) {
    return [text](const fs::path& file) { writeText(file / "General.json", text); };
  };
  const auto withSQL = [](const std::string& sql) {
    return [sql](const fs::path& file) { WorkspaceWorld::change(file, sql); };
  };
  const auto description = [](const fs::path& file, const std::string& reason) {
    return "Cannot read “" + file.string() + "”: " + reason + ".";
  };
  const fs::path database = world.file / "LocalPortfolios.sqlite3";
  struct Case {
    const char* name;
    std::function<void(const fs::path&)> damage;
    std::string error;  ///< empty where the package opens
  };
  const Case cases[] = {
      {"truncated",
       [](const fs::path& file) {
         const auto path = file / "LocalPortfolios.sqlite3";
         fs::resize_file(path, fs::file_size(path) / 2);
       },
       "The database reports: database disk image is malformed."},
      {"no database",
       [](const fs::path& file) {
         writeText(file / "LocalPortfolios.sqlite3", std::string(5000, 'x'));
       },
       "The database reports: file is not a database."},
      {"general properties cut off", withGeneral(R"({"appBundleVersion":)"), "General.json"},
      {"general properties of another kind", withGeneral("[]"), "General.json: "},
      {"watchlist entry without identifier",
       withGeneral(R"({"watchlistSymbols":[{"provider":"Shared"}]})"),
       "General.json: watchlistSymbols[0].identifier: the field is missing"},
      {"strategy without a field",
       withGeneral(R"({"lastTradingScenarioSettings":{"batchStrategy":{"targetBuySpread":1}}})"),
       "General.json: lastTradingScenarioSettings.batchStrategy.targetBuyMax: the field is "
       "missing"},
      {"unknown bar length",
       withGeneral(R"({"lastTradingScenarioSettings":{"detailScenario":{"fromDateComponents":{},)"
                   R"("toDateComponents":{},"quoteInterval":{"day":2},"initialInvestment":1}}})"),
       "The length of a price bar is none of those that can be had."},
      {"unknown currency",
       withSQL("UPDATE portfolios SET name = 'Savings', primaryCurrency = 12345678901;"),
       "“Family.corvane” cannot be opened: portfolio “Savings”: Currency number \"12345678901\" "
       "is not recognized."},
      {"settings of a portfolio cut off",
       withSQL("UPDATE portfolios SET name = 'Savings', settings = '{';"),
       "“Family.corvane” cannot be opened: portfolio “Savings”: "},
      {"portfolio without a date", withSQL("UPDATE portfolios SET dateCreated = 'never';"),
       "Missing portfolio data."},
      {"link in place of the database",
       [](const fs::path& file) {
         fs::rename(file / "LocalPortfolios.sqlite3", file.parent_path() / "elsewhere");
         fs::create_symlink("../elsewhere", file / "LocalPortfolios.sqlite3");
       },
       description(database, "Too many levels of symbolic links")},
      {"folder in place of the database",
       [](const fs::path& file) {
         fs::remove(file / "LocalPortfolios.sqlite3");
         fs::create_directory(file / "LocalPortfolios.sqlite3");
       },
       description(database, "Is a directory")},
      {"file in place of the package",
       [](const fs::path& file) {
         fs::remove_all(file);
         writeText(file, "text");
       },
       "The files of “" + world.file.string() + "” cannot be listed: Not a directory."},
      {"link to nowhere",
       [](const fs::path& file) {
         fs::remove_all(file);
         fs::create_symlink("nowhere", file);
       },
       "The files of “" + world.file.string() + "” cannot be listed: No such file or directory."},
      {"a newer database", withSQL("PRAGMA user_version = 3;"), ""},
      {"null and unknown fields", withGeneral(R"({"watchlistSymbols":null,"later":1})"), ""},
  };
  for (const Case& damaged : cases) {
    SCOPED_TRACE(damaged.name);
    fs::remove_all(world.files);
    fs::create_directory(world.files);
    damaged.damage(world.savedWorkspace());
    const auto before = contentsOf(world.files);
    std::string error;
    try {
      (void)world.open(world.file);
    } catch (const Error& refused) {
      error = refused.description().value_or("without a description");
    }
    if (damaged.error.empty()) {
      EXPECT_EQ(error, "");
    } else {
      EXPECT_THAT(error, ::testing::HasSubstr(damaged.error));
    }
    EXPECT_EQ(contentsOf(world.files), before);
    EXPECT_THAT(namesIn(world.surroundings.temporaryDirectory), IsEmpty());
  }
}

TEST(WorkspaceDocument, OpensWithALedgerThatCannotBeReadAndKeepsIt) {
  WorkspaceWorld world;
  WorkspaceWorld::change(world.savedWorkspace(), "UPDATE transactions SET type = 10;");
  const auto before = contentsOf(world.files);
  const auto document = world.open(world.file);
  const auto portfolio = document->model()->portfolios().front();
  EXPECT_THAT(portfolio->transactions(), IsEmpty());
  const auto error = errorOf([&] { world.deposit(*document, "5"); });
  EXPECT_THAT(*error->description(), ::testing::HasSubstr("Unknown transaction type (10)"));
  EXPECT_EQ(contentsOf(world.files), before);
}

TEST(WorkspaceDocument, KnowsOnlyItsOwnType) {
  WorkspaceWorld world;
  world.savedWorkspace();
  const auto document = world.newDocument();
  world.deposit(*document, "5");
  const auto before = contentsOf(world.files);
  using Unsupported = DocumentError::UnsupportedType;
  EXPECT_EQ(Unsupported::domain, "NSOSStatusErrorDomain");
  EXPECT_EQ(Unsupported::code, -4);
  const DocumentError expected(Unsupported{"public.folder"});
  EXPECT_EQ(errorOf<DocumentError>([&] { document->read(world.file, "public.folder"); }), expected);
  EXPECT_EQ(errorOf<DocumentError>([&] { document->write(world.files / "new", "public.folder"); }),
            expected);
  EXPECT_EQ(errorOf<DocumentError>([&] { document->save(world.files / "Family"); }),
            DocumentError(Unsupported{""}));
  EXPECT_EQ(contentsOf(world.files), before);
  EXPECT_EQ(document->model()->portfolios().front()->transactions().size(), 1U);
}

TEST(WorkspaceDocument, WarnsOfFilesFromANewerProgram) {
  struct Case {
    std::optional<std::string> saved;
    std::string running;
    bool warns;
  };
  const Case cases[] = {{"100", "100", false}, {"101", "100", true},   {"99", "100", false},
                        {"100", "99", true},   {"0.10", "0.9", true},  {"0.9", "0.10", false},
                        {"1.12", "1.2", true}, {"1.2", "1.12", false}, {"1.2.1", "1.2", true},
                        {"007", "7", false},   {"12b", "12a", true},   {std::nullopt, "100", false},
                        {"é", "z", true}};
  for (const auto& [saved, running, warns] : cases) {
    SCOPED_TRACE(saved.value_or("no version") + " opened by " + running);
    WorkspaceWorld world;
    world.surroundings.appBundleVersion = running;
    fs::create_directory(world.file);
    writeText(world.file / "General.json", GeneralProperties{.appBundleVersion = saved,
                                                             .appMarketingVersion = {},
                                                             .watchlistSymbols = {},
                                                             .lastTradingScenarioSettings = {}}
                                               .json());
    const auto document = world.open(world.file);
    const auto window = std::make_shared<ScriptedShell::Window>();
    document->makeWindowControllers(window);
    EXPECT_EQ(window->model.lock(), document->model());
    EXPECT_THAT(world.shell->alerts, IsEmpty()) << "the window is not up yet";
    MainLoop::drain();
    if (!warns) {
      EXPECT_THAT(world.shell->alerts, IsEmpty());
      continue;
    }
    EXPECT_THAT(
        world.shell->alerts,
        ElementsAre(DocumentAlert{
            "Family.corvane was created with a newer version of Corvane.",
            "Some data might be ignored, and could be lost on re-save. Update to the latest "
            "version for best results.",
            {"Continue"}}));
  }
}

TEST(WorkspaceDocument, GoesBackToItsFileOrStaysAsItIs) {
  WorkspaceWorld world;
  const auto document = world.open(world.savedWorkspace());
  world.deposit(*document, "5");
  document->revertToSaved();
  EXPECT_EQ(document->model()->portfolios().front()->transactions().size(), 1U);
  EXPECT_FALSE(document->isDocumentEdited());
  EXPECT_FALSE(document->undoManager()->canUndo());

  writeText(world.file / "General.json", "{");
  const auto before = contentsOf(world.files);
  world.deposit(*document, "7");
  const auto portfolio = document->model()->portfolios().front();
  EXPECT_THROW(document->revertToSaved(), DocumentError);
  EXPECT_EQ(contentsOf(world.files), before);
  EXPECT_EQ(document->model()->portfolios().front(), portfolio) << "views go on with it";
  EXPECT_EQ(portfolio->transactions().size(), 2U);
  EXPECT_TRUE(document->isDocumentEdited());
  document->undoManager()->undo();
  EXPECT_EQ(portfolio->transactions().size(), 1U);
  document->undoManager()->redo();
  document->save(world.files / "Other.corvane");
  EXPECT_EQ(world.open(world.files / "Other.corvane")
                ->model()
                ->portfolios()
                .front()
                ->transactions()
                .size(),
            2U);
}

TEST(WorkspaceDocument, NeverSavesWhatItCouldNotRead) {
  WorkspaceWorld world;
  writeText(world.savedWorkspace() / "General.json", "{");
  const auto before = contentsOf(world.files);
  const auto document = std::make_shared<WorkspaceDocument>(world.surroundings);
  EXPECT_THROW(document->open(world.file), DocumentError);
  EXPECT_EQ(
      errorOf<DocumentError>([&] { document->save(world.file, Document::Replacing::anything); }),
      DocumentError(DocumentError::NothingLoaded()));
  EXPECT_EQ(contentsOf(world.files), before);
}

}  // namespace
}  // namespace corvane::testing
