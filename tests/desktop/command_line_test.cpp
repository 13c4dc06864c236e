#include "desktop/app/command_line.h"

#include <gmock/gmock.h>

namespace corvane::desktop {
namespace {

using ::testing::HasSubstr;

CommandLine parsed(const QStringList& arguments) {
  const auto result = CommandLine::parse(arguments, "1.2");
  const auto* line = std::get_if<CommandLine>(&result);
  EXPECT_NE(line, nullptr);
  return line != nullptr ? *line : CommandLine{};
}

CommandLine::Message refusal(const QStringList& arguments) {
  const auto result = CommandLine::parse(arguments, "1.2");
  const auto* message = std::get_if<CommandLine::Message>(&result);
  EXPECT_NE(message, nullptr);
  return message != nullptr ? *message : CommandLine::Message{"", -1};
}

TEST(CommandLine, TakesAWorkspaceAndOptionsInAnyOrder) {
  const CommandLine line = parsed({"--sample-market", "Über uns.corvane", "--render", "out"});
  EXPECT_EQ(line.workspace, "Über uns.corvane");
  EXPECT_TRUE(line.usesSampleMarket);
  EXPECT_EQ(line.renderFolder, "out");
  EXPECT_EQ(parsed({}).workspace, std::nullopt);
  EXPECT_EQ(parsed({"--size", "1440x900"}).renderSize, QSize(1440, 900));
  EXPECT_EQ(parsed({"--font-size", "16"}).renderFontSize, 16);
  EXPECT_TRUE(parsed({"--high-contrast"}).rendersHighContrast);
  EXPECT_FALSE(parsed({}).rendersHighContrast);
}

TEST(CommandLine, SaysWhatIsWrong) {
  EXPECT_EQ(refusal({"--nonsense"}).exitStatus, 2);
  EXPECT_THAT(refusal({"--nonsense"}).text, HasSubstr("nonsense"));
  EXPECT_EQ(refusal({"one", "two"}).exitStatus, 2);
  EXPECT_EQ(refusal({"--render"}).exitStatus, 2);
  for (const char* size : {"", "1440", "1440x", "14x9", "1440x900x2", "99999x99999"}) {
    EXPECT_EQ(refusal({"--size", size}).exitStatus, 2) << size;
  }
  for (const char* points : {"", "large", "5.9", "37"}) {
    EXPECT_EQ(refusal({"--font-size", points}).exitStatus, 2) << points;
  }
  EXPECT_EQ(refusal({"--version"}).text, "Corvane 1.2");
  EXPECT_EQ(refusal({"--help"}).exitStatus, 0);
  EXPECT_THAT(refusal({"--help"}).text, HasSubstr("Usage: corvane [options]"));
}

}  // namespace
}  // namespace corvane::desktop
