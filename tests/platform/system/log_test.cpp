#include "platform/system/log.h"

#include <gtest/gtest.h>

#include <memory>

namespace corvane {
namespace {

struct Priceless {};
std::ostream& operator<<(std::ostream& out, const Priceless& /*value*/) {
  ADD_FAILURE() << "nobody listens";
  return out;
}

TEST(Log, IsHeardWhileSomebodyListens) {
  Log::write(Priceless{});
  std::string heard;
  auto listening = std::make_unique<Subscription>(
      Log::listen([&](std::string_view line) { heard.append(line) += "|"; }));
  Log::write("Received ", 3, " cookies.");
  const auto second = Log::listen([&](std::string_view line) { heard.append(line) += "!"; });
  Log::write("a");
  listening.reset();
  Log::write("b");
  EXPECT_EQ(heard, "Received 3 cookies.|a|a!b!");
}

}  // namespace
}  // namespace corvane
