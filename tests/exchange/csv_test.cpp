#include "exchange/csv/csv.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace corvane {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <CSVView View = Enumerated>
CSV<View> read(std::string text) {
  return CSV<View>(std::move(text), CSVDelimiter::comma());
}

TEST(CSV, HoldsHeaderRowsAndColumns) {
  const auto csv = read("\uFEFFa,b,c\n1\n1,2,3,4\n\n");
  EXPECT_EQ(csv.text(), "a,b,c\n1\n1,2,3,4\n\n");
  EXPECT_THAT(csv.header(), ElementsAre("a", "b", "c"));
  ASSERT_EQ(csv.content().rows().size(), 3U);
  EXPECT_THAT(csv.content().rows()[0], ElementsAre("1", "", "", ""));
  EXPECT_THAT(csv.content().rows()[1], ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(csv.content().rows()[2], ElementsAre("", "", "", ""));

  const auto columns = csv.content().columns();
  ASSERT_EQ(columns.value().size(), 3U);
  EXPECT_EQ((*columns)[1].header, "b");
  EXPECT_THAT((*columns)[1].rows, ElementsAre("", "2", ""));

  std::vector<std::size_t> lengths;
  csv.enumerateAsArray(0, std::nullopt, [&](const CSVRow& row) { lengths.push_back(row.size()); });
  EXPECT_THAT(lengths, ElementsAre(3, 1, 4, 1));
}

TEST(CSV, IsEmptyWithoutARowAndHasNoRowsAfterAHeader) {
  EXPECT_THAT(read("").header(), IsEmpty());
  EXPECT_THAT(read("\uFEFF").header(), IsEmpty());
  EXPECT_TRUE(read("").content().rows().empty());
  EXPECT_THAT(read("a,b").header(), ElementsAre("a", "b"));
  EXPECT_TRUE(read("a,b").content().rows().empty());
}

TEST(CSV, LoadsWhatIsAskedFor) {
  const CSV<> csv("a\n1\n2\n3", CSVDelimiter::comma(), false, 2);
  EXPECT_EQ(csv.content().rows().size(), 2U);
  EXPECT_FALSE(csv.content().columns().has_value());
  EXPECT_THROW(read("a\n1\n\"2\"x"), CSVParseError);
}

TEST(CSV, GivesRowsAsDictionaries) {
  const auto csv = read<Named>("b,a,b\n1,2,3\n4\n");
  const auto rows = csv.content().rows();
  EXPECT_EQ(rows[0]["a"], "2");
  EXPECT_EQ(rows[0]["b"], "3");
  EXPECT_EQ(rows[1]["b"], "4");
  EXPECT_EQ(rows[1]["a"], std::nullopt);
  EXPECT_EQ(rows[1]["c"], std::nullopt);
  const auto columns = csv.content().columns();
  EXPECT_THAT(columns.value()["a"].value(), ElementsAre("2", ""));
  EXPECT_FALSE(columns.value()["c"].has_value());
  EXPECT_EQ(read<Named>("").content().rows().size(), 0U);
  EXPECT_EQ(read<Named>("a,b\n1\n").serialized(), "a,b\n1,");
}

TEST(CSV, WritesItselfSoThatItIsReadBackTheSame) {
  const std::string text = "a,\"b,c\"\n\"d\"\"e\",f\nü,";
  EXPECT_EQ(read("a,\"b,c\"\n d\"\"e,\"f\"\n\"ü\"\n").serialized(), text);
  EXPECT_EQ(read(text).serialized(), text);
  EXPECT_EQ(read("ü").data(TextEncoding::windowsLatin1), "\xFC");
}

TEST(CSV, StaysGoodWhenItIsMoved) {
  auto csv = read("a,b\n1,2");
  const CSV<> moved = std::move(csv);
  EXPECT_THAT(moved.header(), ElementsAre("a", "b"));
  EXPECT_EQ(moved.content().columns().value()[1].header, "b");
}

TEST(CSV, TakesAMillionColumnsAndAsManyRows) {
  std::string text(1'000'000, ',');
  text += std::string(1'000'000, '\n');
  const auto csv = read(text);
  EXPECT_EQ(csv.header().size(), 1'000'001U);
  EXPECT_EQ(csv.content().rows().size(), 999'999U);
  EXPECT_EQ(csv.content().columns().value()[999'999].rows[999'998], "");
}

class CSVFile : public ::testing::Test {
 protected:
  ~CSVFile() override { files::remove(folder_); }

  std::filesystem::path file(std::string_view bytes) const {
    const auto path = folder_ / "file.csv";
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }

  const std::filesystem::path folder_ =
      files::makePrivateDirectory(std::filesystem::temp_directory_path());
};

TEST_F(CSVFile, IsReadWithAGuessedDelimiter) {
  const CSV<> csv(file("\uFEFFa;b\n1;2\n"));
  EXPECT_EQ(csv.delimiter(), CSVDelimiter::semicolon());
  EXPECT_THAT(csv.content().rows()[0], ElementsAre("1", "2"));
  const CSV<> latin(file("\xE4;b"), CSVDelimiter::comma(), TextEncoding::windowsLatin1);
  EXPECT_THAT(latin.header(), ElementsAre("ä;b"));
}

TEST_F(CSVFile, IsRefusedWhereItIsNoText) {
  EXPECT_THROW(CSV<>(file("a,\xFF")), TextEncodingError);
  EXPECT_THROW(CSV<>(file("a\"b")), CSVParseError);
  EXPECT_THROW(CSV<>{folder_}, FileError);
  EXPECT_THROW(CSV<>{folder_ / "missing"}, FileError);
}

TEST_F(CSVFile, CanBelongToTheProgram) {
  EXPECT_FALSE(CSV<>::fromResource("no-such-table", "csv").has_value());
  // It is found and read, and no delimited text.
  EXPECT_THROW((void)CSV<>::fromResource("iso-4217-list-one", "xml"), CSVParseError);
}

}  // namespace
}  // namespace corvane
