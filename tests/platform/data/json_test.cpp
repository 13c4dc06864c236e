#include "platform/data/json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/data/json_reader.h"

namespace corvane {
namespace {

std::string reasonOf(const std::string& document) {
  try {
    (void)JSONValue::parse(document);
  } catch (const JSONError& error) {
    return *error.description();
  }
  return "accepted";
}

TEST(JSON, ReadsAndWritesNumbersUnchanged) {
  for (const auto* number :
       {"0", "-0", "1.50", "1e5", "1E+05", "-12.5e-300", "18446744073709551616",
        "340282366920938463463374607431768211455e127", "1e999999"}) {
    EXPECT_EQ(JSONValue::parse(number).text(), number);
    EXPECT_EQ(JSONValue::parse("{\"a\":[" + std::string(number) + " ]}").text(),
              "{\"a\":[" + std::string(number) + "]}");
    EXPECT_EQ(JSONNumber::fromText(number)->text(), number);
  }
  for (const auto* document : {"null", " true ", "\"a\"", "[]", "{}", " 7 \n"}) {
    EXPECT_EQ(reasonOf(document), "accepted") << document;
  }
  EXPECT_EQ(JSONValue(std::int64_t{-9223372036854775807 - 1}).text(), "-9223372036854775808");
}

TEST(JSON, KeepsTextsAndTheOrderOfFields) {
  const std::string document = R"({"b":null,"a":[true,false,"é\"\\\n\u0001😀",{}],"":[]})";
  const JSONValue value = JSONValue::parse(" \n" + document + "\t");
  EXPECT_EQ(value.text(), document);
  EXPECT_EQ(JSONValue::parse(value.prettyText()), value);
  EXPECT_EQ(value.at("a").array()[2].string(), "é\"\\\n\x01😀");
  EXPECT_EQ(JSONValue::parse(R"("\u00e9\ud83d\ude00\/")").string(), "é😀/");
  EXPECT_EQ(JSONValue::parse(R"({"a":1,"b":2,"a":3})").text(), R"({"a":3,"b":2})");
}

TEST(JSON, WritesOnlyWhatItCanReadAgain) {
  for (const auto& [bytes, written] : std::vector<std::pair<std::string, std::string>>{
           {"a\xFF"
            "b",
            "a\uFFFDb"},
           {"\xC3", "\uFFFD"},
           {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
           {"\uFFFDé", "\uFFFDé"},
           {std::string("\0\x1F\x7F", 3), std::string("\0\x1F\x7F", 3)}}) {
    JSONValue value;
    value.set(bytes, bytes);
    EXPECT_EQ(JSONValue::parse(value.text()).at(written).string(), written);
  }
}

TEST(JSON, PrintsForPeople) {
  EXPECT_EQ(JSONValue::parse(R"({"a":[1,2],"b":{},"c":[]})").prettyText(),
            "{\n  \"a\": [\n    1,\n    2\n  ],\n  \"b\": {},\n  \"c\": []\n}");
}

TEST(JSON, RefusesWhateverIsNotJSON) {
  for (const std::string document : {"",
                                     " ",
                                     "{",
                                     "[1,]",
                                     "[1 2]",
                                     "[,1]",
                                     "{\"a\" 1}",
                                     "{\"a\":1,}",
                                     "{a:1}",
                                     "{\"a\":}",
                                     "[1]]",
                                     "1 2",
                                     "\"a\" 5",
                                     "true 5",
                                     "null 5",
                                     "nul",
                                     "[nul]",
                                     "nullx",
                                     "[truee]",
                                     "01",
                                     "[01]",
                                     "1.",
                                     ".5",
                                     "+1",
                                     "1e",
                                     "[1e+]",
                                     "0x1",
                                     "NaN",
                                     "--1",
                                     "\"a",
                                     "\"\\x\"",
                                     "\"\\u12\"",
                                     "\"\\ud800\"",
                                     "\"\t\"",
                                     "\"\xFF\"",
                                     "[\"\xC0\x80\"]",
                                     "'a'",
                                     "[1]x",
                                     "{\"a\":1}{",
                                     "//",
                                     "[1,/**/2]",
                                     "}",
                                     "]",
                                     "\xEF\xBB\xBF",
                                     "[\"a\"\"b\"]",
                                     "{\"a\":1 \"b\":2}",
                                     "{1:2}",
                                     "[1:2]",
                                     "tru",
                                     "-"}) {
    EXPECT_NE(reasonOf(document), "accepted") << document;
  }
  EXPECT_EQ(reasonOf(std::string("[1]\0", 4)), "something follows the document");
}

TEST(JSON, RefusesDeepNestingWithoutHarm) {
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
  };
  EXPECT_EQ(reasonOf(nested(JSONCursor::maximumDepth)), "accepted");
  EXPECT_THAT(reasonOf(nested(JSONCursor::maximumDepth + 1)),
              ::testing::HasSubstr("the nesting is too deep"));
  EXPECT_NE(reasonOf(nested(1'000'000)), "accepted");
  EXPECT_NE(reasonOf(std::string(1'000'000, '[')), "accepted");
}

TEST(JSON, SaysWhatIsWrongAndWhere) {
  EXPECT_THAT(reasonOf(R"({"chart":{"result":[{"meta":{}},{"close":[1,01]}]}})"),
              ::testing::StartsWith("chart.result[1].close[1]: "));
  const JSONValue value = JSONValue::parse(R"({"count":"7"})");
  try {
    (void)value.at("count").number("count");
    FAIL() << "text was taken for a number";
  } catch (const JSONError& error) {
    EXPECT_EQ(error, JSONError("count", "expected a number, found text"));
  }
  EXPECT_THROW((void)value.at("absent"), JSONError);
  EXPECT_EQ(value.find("absent"), nullptr);
}

TEST(JSON, BuildsDocuments) {
  JSONValue value;
  value.set("number", 7);
  value.set("list", JSONValue::Array{"a", true, {}});
  value.set("number", *JSONNumber::fromText("7.50"));
  value.set("gone", 1);
  value.remove("gone");
  EXPECT_EQ(value.text(), R"({"number":7.50,"list":["a",true,null]})");
}

TEST(JSONReader, WalksADocumentInItsOrder) {
  std::string seen;
  JSONReader reader(
      R"({"skipped":[{"x":[1]}],"bars":[{"t":1,"c":1.50},{"t":2,"c":null}],"n":"é"})");
  reader.read([&](JSONCursor& root) {
    root.forEachField([&](std::string_view key, JSONCursor& value) {
      if (key == "bars") {
        value.forEachElement([&](JSONCursor& bar) {
          bar.forEachField([&](std::string_view, JSONCursor& figure) {
            seen += figure.isNull() ? "null" : std::string(figure.numberText());
            seen += " ";
          });
        });
      } else if (key == "n") {
        seen += value.string();
      }
    });
  });
  EXPECT_EQ(seen, "1 1.50 2 null é");
}

TEST(JSONReader, FindsFaultsInWhatWasSkippedWhenItFinishes) {
  const auto readTexts = [](JSONReader& reader) {
    std::string_view seen;
    reader.read([&](JSONCursor& root) {
      root.forEachField([&](std::string_view key, JSONCursor& value) {
        if (key == "read") {
          seen = value.string();
        }
      });
    });
    return seen;
  };
  JSONReader sound(R"({"read":"\u00e9","skipped":[1,{"a":"\n"}]})");
  const std::string_view text = readTexts(sound);
  sound.finish();
  EXPECT_EQ(text, "é");
  for (const auto* skipped : {"{]}", "[1 2 x]", "[01]", "\"\\x\"", "nul"}) {
    JSONReader reader(R"({"read":"","skipped":)" + std::string(skipped) + "}");
    EXPECT_THROW((readTexts(reader), reader.finish()), JSONError) << skipped;
  }
}

TEST(JSONReader, HandsOutTheSameTextAgain) {
  JSONReader reader("[\"" + std::string(6000, 'x') + "\",\"\\u00e9\"]");
  reader.read([](JSONCursor& root) {
    root.forEachElement([](JSONCursor& element) {
      const auto* first = element.string().data();
      for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(element.string().data(), first);
      }
    });
  });
}

TEST(JSONReader, AcceptsAnySoundDocumentThatNobodyLooksInto) {
  const auto ignore = [](JSONCursor&) {};
  for (const auto* document : {"null", "true", "7", "\"a\"", "[1,2]", "{\"a\":1}", "[]"}) {
    EXPECT_NO_THROW(JSONReader(document).read(ignore)) << document;
  }
  for (const auto* document : {"null 5", "\"a\" 5", "7 5", "[01]", "[1]]", "{}{}"}) {
    EXPECT_THROW(JSONReader(document).read(ignore), JSONError) << document;
  }
}

TEST(JSONReader, NamesThePlaceOfAFailure) {
  const auto reasonOfReading = [](const std::string& document) {
    try {
      JSONReader(document).read([](JSONCursor& root) {
        root.forEachField([](std::string_view, JSONCursor& list) {
          list.forEachElement([](JSONCursor& element) { (void)element.numberText(); });
        });
      });
    } catch (const JSONError& error) {
      return *error.description();
    }
    return std::string("accepted");
  };
  EXPECT_EQ(reasonOfReading(R"({"list":[1,"2"]})"), "list[1]: expected a number, found text");
  EXPECT_EQ(reasonOfReading(R"({"list":{"a":1}})"), "list: expected an array, found an object");
  EXPECT_EQ(reasonOfReading(R"({"list":[1]} x)"), "something follows the document");
  EXPECT_EQ(reasonOfReading(R"(7)"), "expected an object, found a number");
  EXPECT_NE(reasonOfReading(R"({"list":[1)"), "accepted");
}

}  // namespace
}  // namespace corvane
