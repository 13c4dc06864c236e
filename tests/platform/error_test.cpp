#include "platform/error.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane {
namespace {

class SampleError : public ErrorValue<SampleError> {
 public:
  explicit SampleError(std::string text) : text_(std::move(text)) {}
  [[nodiscard]] std::optional<std::string> description() const override { return text_; }
  [[nodiscard]] bool hasSameValues(const SampleError& other) const { return text_ == other.text_; }

 private:
  std::string text_;
};

class OtherError : public ErrorValue<OtherError> {
 public:
  [[nodiscard]] std::optional<std::string> description() const override { return std::nullopt; }
  [[nodiscard]] bool hasSameValues(const OtherError&) const { return true; }
};

TEST(Error, IsEqualToOneOfItsTypeWithTheSameValues) {
  EXPECT_EQ(SampleError("a"), SampleError("a"));
  EXPECT_FALSE(SampleError("a") == SampleError("b"));
  EXPECT_FALSE(SampleError("a").isEqual(OtherError()));
}

TEST(Error, KeepsItsTypeThroughAResultAndAThrow) {
  const Result<int> result = failure(SampleError("gone"));
  ASSERT_FALSE(result.has_value());
  try {
    result.error()->raise();
    FAIL() << "raise() returned";
  } catch (const SampleError& error) {
    EXPECT_EQ(error.description(), "gone");
  }
}

}  // namespace
}  // namespace corvane
