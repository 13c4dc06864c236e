// Work that was never saved is found again after its program was killed.

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>

#include "platform/async/dispatch_queue.h"
#include "storage/workspace_world.h"

namespace corvane::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using RecoveryAnswer = DocumentShell::RecoveryAnswer;

class WorkspaceRecovery : public ::testing::Test {
 protected:
  WorkspaceRecovery() { world.savedWorkspace(); }

  /// Runs `work` on a document of the saved file in a program of its own, which ends at once.
  void killAfter(const std::function<void(WorkspaceDocument&)>& work) {
    const pid_t child = fork();
    if (child == 0) {
      const auto document = world.open(world.file);
      work(*document);
      kill(getpid(), SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_THAT(copies(), ::testing::Not(IsEmpty()));
  }
  [[nodiscard]] std::vector<std::string> copies() const {
    return namesIn(world.surroundings.temporaryDirectory);
  }

  WorkspaceWorld world;
  UserDefaults defaults{world.folder / "settings.json"};
  DocumentController controller{world.surroundings, defaults};
};

TEST_F(WorkspaceRecovery, OpensUnsavedWorkAsADraftWhereTheUserWantsIt) {
  killAfter([&](WorkspaceDocument& document) {
    world.deposit(document, "5");
    document.model()->watchlistEquities = {world.provider->equityWithId("XYZ")};
    document.updateChangeCount(Document::ChangeType::done);
  });
  const auto before = contentsOf(world.files);

  controller.offerRecovery();
  EXPECT_THAT(world.shell->takeHeard(), ElementsAre("recover Family"));
  EXPECT_THAT(controller.documents(), IsEmpty());
  EXPECT_THAT(copies(), SizeIs(1)) << "later";

  world.shell->recovery = RecoveryAnswer::recover;
  controller.offerRecovery();
  EXPECT_THAT(world.shell->takeHeard(), ElementsAre("recover Family", "show Recovered Family"));
  ASSERT_THAT(controller.documents(), SizeIs(1));
  const auto document = controller.documents().front();
  EXPECT_EQ(document->model()->portfolios().front()->transactions().size(), 2U);
  EXPECT_THAT(document->model()->watchlistEquities,
              ElementsAre(world.provider->equityWithId("XYZ")));
  EXPECT_FALSE(document->fileURL());
  EXPECT_TRUE(document->isDocumentEdited());
  EXPECT_EQ(contentsOf(world.files), before);

  // While it is open nobody else finds it, and once it is saved nobody will.
  controller.offerRecovery();
  EXPECT_THAT(world.shell->takeHeard(), IsEmpty());
  world.shell->location = world.files / "Rescued.corvane";
  EXPECT_TRUE(controller.saveDocument(document));
  EXPECT_TRUE(controller.closeAllDocuments());
  EXPECT_EQ(world.open(world.files / "Rescued.corvane")
                ->model()
                ->portfolios()
                .front()
                ->transactions()
                .size(),
            2U);
}

TEST_F(WorkspaceRecovery, SurvivesASecondDeathAndKeepsItsName) {
  killAfter([&](WorkspaceDocument& document) { world.deposit(document, "5"); });
  const pid_t child = fork();
  if (child == 0) {
    world.shell->recovery = RecoveryAnswer::recover;
    controller.offerRecovery();
    world.deposit(*controller.documents().front(), "6");
    kill(getpid(), SIGKILL);
  }
  int status = 0;
  waitpid(child, &status, 0);
  world.shell->recovery = RecoveryAnswer::recover;
  controller.offerRecovery();
  ASSERT_THAT(controller.documents(), SizeIs(1));
  EXPECT_EQ(controller.documents().front()->displayName(), "Recovered Family");
  EXPECT_EQ(controller.documents().front()->model()->portfolios().front()->transactions().size(),
            3U);
}

TEST_F(WorkspaceRecovery, RemovesWhatIsSavedOrNotWantedWithoutAQuestionTooMany) {
  const auto living = world.open(world.file);
  world.deposit(*living, "1");
  killAfter([](WorkspaceDocument&) {});
  killAfter([&](WorkspaceDocument& document) {
    world.deposit(document, "5");
    document.undoManager()->undo();
  });
  killAfter([&](WorkspaceDocument& document) {
    world.deposit(document, "5");
    document.save(world.files / "Other.corvane");
  });
  EXPECT_THAT(copies(), SizeIs(4));
  controller.offerRecovery();
  EXPECT_THAT(world.shell->takeHeard(), IsEmpty());
  EXPECT_THAT(copies(), SizeIs(1)) << "that of a document which is open";

  killAfter([&](WorkspaceDocument& document) { world.deposit(document, "5"); });
  world.shell->recovery = RecoveryAnswer::discard;
  controller.offerRecovery();
  EXPECT_THAT(world.shell->takeHeard(), ElementsAre("recover Family"));
  EXPECT_THAT(copies(), SizeIs(1));
}

TEST_F(WorkspaceRecovery, DoesNotOfferWhatWasSavedJustBeforeTheEnd) {
  for (const bool isEditedAgain : {false, true}) {
    killAfter([&](WorkspaceDocument& document) {
      world.deposit(document, "5");
      const auto note =
          world.surroundings.temporaryDirectory / copies().front() / WorkingCopy::noteName;
      const std::string said = readText(note);
      document.save(world.file);
      if (isEditedAgain) {
        world.deposit(document, "6");
      }
      writeText(note, said);
    });
    controller.offerRecovery();
    EXPECT_THAT(world.shell->takeHeard(), SizeIs(isEditedAgain ? 1 : 0));
    EXPECT_THAT(copies(), SizeIs(isEditedAgain ? 1 : 0));
  }
}

TEST_F(WorkspaceRecovery, LeavesACopyThatCannotBeOpenedForAnotherAttempt) {
  killAfter([&](WorkspaceDocument& document) {
    world.deposit(document, "5");
    writeText(document.workingDirectoryURL() / WorkspaceDocument::generalPropertiesName, "{");
  });
  world.shell->recovery = RecoveryAnswer::recover;
  for (int attempt = 0; attempt < 2; ++attempt) {
    controller.offerRecovery();
    const auto heard = world.shell->takeHeard();
    ASSERT_THAT(heard, SizeIs(2));
    EXPECT_THAT(heard.back(), ::testing::HasSubstr("General.json"));
    EXPECT_THAT(controller.documents(), IsEmpty());
  }
}

TEST_F(WorkspaceRecovery, TellsOfADamagedFileOnceItIsOpen) {
  {
    std::fstream file(world.file / WorkspaceDocument::databaseName,
                      std::ios::in | std::ios::out | std::ios::binary);
    // The root of an index, which opening does not look at.
    SQLiteDatabase database(world.file / WorkspaceDocument::databaseName,
                            SQLiteDatabase::Mode::immutable);
    SQLiteStatement root = database.query(
        "SELECT rootpage FROM sqlite_schema WHERE name = 'transactionSettlementDateIndex';");
    ASSERT_TRUE(root.step());
    file.seekp((*root.integer(0) - 1) * 4096);
    file << std::string(4096, '\x5a');
  }
  controller.openDocument(world.file);
  EXPECT_TRUE(
      MainLoop::runUntil([&] { return world.shell->heard.size() > 1; }, std::chrono::seconds(20)));
  EXPECT_THAT(world.shell->heard.back(),
              ::testing::StartsWith("error for Family: “Family.corvane” is damaged: "));
}

}  // namespace
}  // namespace corvane::testing
