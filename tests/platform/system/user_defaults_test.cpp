#include "platform/system/user_defaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <thread>

#include "support/log_capture.h"
#include "support/temporary_folder.h"

namespace corvane {
namespace {

using ::testing::HasSubstr;
using testing::readText;
using testing::writeText;

class UserDefaultsTest : public ::testing::Test {
 protected:
  testing::TemporaryFolder folder;
  std::filesystem::path file = folder / "settings.json";
};

TEST_F(UserDefaultsTest, KeepsSettingsOfEveryType) {
  {
    UserDefaults defaults(file);
    EXPECT_EQ(defaults.boolean("b"), std::nullopt);
    defaults.set("b", true);
    defaults.set("i", -7);
    defaults.setReal("x", 0.1);
    defaults.setReal("none", std::nan(""));
    defaults.set("s", "é");
    defaults.setStringList("l", {"a", ""});
    defaults.set("gone", 1);
    defaults.remove("gone");
  }
  const UserDefaults again(file);
  EXPECT_EQ(again.boolean("b"), true);
  EXPECT_EQ(again.integer("i"), -7);
  EXPECT_EQ(again.real("x"), 0.1);
  EXPECT_EQ(again.real("i"), -7.0);
  EXPECT_EQ(again.string("s"), "é");
  EXPECT_EQ(again.stringList("l"), (std::vector<std::string>{"a", ""}));
  EXPECT_EQ(again.value("gone"), std::nullopt);
  EXPECT_EQ(again.value("none"), std::nullopt);
  EXPECT_EQ(again.integer("x"), std::nullopt) << "another type is no setting";
  EXPECT_EQ(again.boolean("i"), std::nullopt);
  EXPECT_EQ(again.stringList("s"), std::nullopt);
}

TEST_F(UserDefaultsTest, KeepsWhatItDoesNotKnow) {
  writeText(file, R"({"future":{"a":[1.50,null]},"b":false})");
  UserDefaults defaults(file);
  defaults.set("b", true);
  EXPECT_EQ(JSONValue::parse(readText(file)).text(), R"({"future":{"a":[1.50,null]},"b":true})");
}

TEST_F(UserDefaultsTest, TellsOfASettingThatHasChanged) {
  UserDefaults defaults(file);
  defaults.set("mode", "light");
  std::string seen;
  {
    const auto mode = defaults.observe("mode", [&] { seen += *defaults.string("mode") + " "; });
    const auto other = defaults.observe("other", [&] { seen += "other "; });
    defaults.set("mode", "light");
    defaults.set("unrelated", 1);
    MainLoop::drain();
    EXPECT_EQ(seen, "");
    defaults.set("mode", "dark");
    EXPECT_EQ(seen, "") << "the main queue hears of it";
    MainLoop::drain();
    EXPECT_EQ(seen, "dark ");
    UserDefaults(file).set("other", true);
    defaults.set("unrelated", 2);
    MainLoop::drain();
    EXPECT_EQ(seen, "dark other ") << "another program has changed it";
    defaults.remove("other");
  }
  MainLoop::drain();
  EXPECT_EQ(seen, "dark other ");
}

TEST_F(UserDefaultsTest, PutsADamagedFileAsideAndSaysSoOnce) {
  writeText(folder / "settings.json.damaged", "an earlier one");
  for (const std::string content : {"{\"a\":", "[1]", "\xFF", ""}) {
    writeText(file, content);
    const testing::LogCapture log;
    UserDefaults defaults(file);
    defaults.set("b", true);
    const std::string said = log.text();
    EXPECT_THAT(said, HasSubstr("are damaged"));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
    EXPECT_EQ(defaults.boolean("b"), true);
  }
  EXPECT_EQ(readText(folder / "settings.json.damaged"), "an earlier one");
  EXPECT_EQ(readText(folder / "settings.json.damaged-2"), "{\"a\":");
  EXPECT_EQ(readText(folder / "settings.json.damaged-3"), "[1]");
}

TEST_F(UserDefaultsTest, LosesNothingToAnotherThatWritesBesideIt) {
  UserDefaults first(file);
  UserDefaults second(file);
  first.set("a", 1);
  second.set("b", 2);
  first.set("c", 3);
  EXPECT_EQ(JSONValue::parse(readText(file)).text(), R"({"a":1,"b":2,"c":3})");
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] { first.set("t" + std::to_string(i), i); });
  }
  threads.clear();
  EXPECT_EQ(UserDefaults(file).integer("t3"), 3);
}

TEST_F(UserDefaultsTest, KeepsEverySettingOfTwoProgramsThatWriteAtOnce) {
  constexpr int count = 50;
  const auto key = [](int program, int i) {
    return std::to_string(program) + "-" + std::to_string(i);
  };
  pid_t programs[2];
  for (int program = 0; program < 2; ++program) {
    programs[program] = fork();
    ASSERT_GE(programs[program], 0);
    if (programs[program] == 0) {
      UserDefaults defaults(file);
      for (int i = 0; i < count; ++i) {
        defaults.set(key(program, i), i);
      }
      _exit(0);
    }
  }
  for (const pid_t program : programs) {
    int status = -1;
    ASSERT_EQ(waitpid(program, &status, 0), program);
    EXPECT_EQ(status, 0);
  }
  const UserDefaults defaults(file);
  for (int i = 0; i < count; ++i) {
    EXPECT_EQ(defaults.integer(key(0, i)), i);
    EXPECT_EQ(defaults.integer(key(1, i)), i);
  }
}

TEST_F(UserDefaultsTest, LosesNothingToATextThatIsNotUTF8) {
  UserDefaults defaults(file);
  defaults.set("kept", 1);
  defaults.set("name", "a\xFF");
  const UserDefaults again(file);
  EXPECT_EQ(again.integer("kept"), 1);
  EXPECT_EQ(again.string("name"), "a\uFFFD");
}

TEST_F(UserDefaultsTest, HoldsASettingThatCannotBeWritten) {
  std::filesystem::create_directory(folder / "folder");
  for (const auto& unusable : {folder / "absent/settings.json", folder / "folder"}) {
    const testing::LogCapture log;
    UserDefaults defaults(unusable);
    defaults.set("b", true);
    defaults.set("c", true);
    const std::string said = log.text();
    EXPECT_THAT(said, HasSubstr("Settings hold for this run only."));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
    EXPECT_EQ(defaults.boolean("b"), true);
  }
}

}  // namespace
}  // namespace corvane
