#include "platform/data/xml.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace corvane {
namespace {

/// Writes the events down: <a x=1>, text, </a>.
class Recorder : public XMLHandler {
 public:
  std::string events;
  std::string abortAt;
  std::string throwAt;

  void startElement(std::string_view name, const Attributes& attributes) override {
    events += "<" + std::string(name);
    for (const auto& [key, value] : attributes) {
      events += " " + key + "=" + value;
    }
    events += ">";
    if (name == abortAt) {
      abortParsing();
    }
    if (name == throwAt) {
      throw std::runtime_error("thrown by the handler");
    }
  }
  void endElement(std::string_view name) override { events += "</" + std::string(name) + ">"; }
  void characters(std::string_view text) override { events += text; }
};

std::string eventsOf(const std::string& document) {
  Recorder recorder;
  parseXML(document, recorder);
  return recorder.events;
}

std::string nested(int depth) {
  std::string document;
  for (int i = 0; i < depth; ++i) {
    document += "<a>";
  }
  for (int i = 0; i < depth; ++i) {
    document += "</a>";
  }
  return document;
}

TEST(XML, TellsElementsAttributesAndText) {
  EXPECT_EQ(eventsOf("<?xml version=\"1.0\"?><a y='2' x='1'>t&amp;<b/><![CDATA[<]]></a>"),
            "<a x=1 y=2>t&<b></b><</a>");
  EXPECT_EQ(eventsOf("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>"), "<a>é</a>");
}

TEST(XML, ReadsAcrossThePiecesOfALongDocument) {
  const std::string text(3 << 20, 'x');
  EXPECT_EQ(eventsOf("<a>" + text + "</a>"), "<a>" + text + "</a>");
}

TEST(XML, SaysWhereADocumentIsMalformed) {
  Recorder recorder;
  try {
    parseXML("<a>\n<b></c></a>", recorder);
    FAIL() << "a mismatched tag was taken";
  } catch (const XMLError& error) {
    EXPECT_EQ(error.description(), "Line 2, column 6: mismatched tag.");
  }
  EXPECT_EQ(recorder.events, "<a>\n<b>");
  for (const auto& document :
       {std::string(""), std::string("<a>"), std::string("<a/><b/>"), std::string("\0<a/>", 5),
        std::string("<a>\xFF</a>"), std::string("<a b=1/>"), std::string("<a>&unknown;</a>")}) {
    EXPECT_THROW(eventsOf(document), XMLError) << document;
  }
}

TEST(XML, RefusesDeepNestingAndEntitiesOfItsOwn) {
  EXPECT_NO_THROW(eventsOf(nested(256)));
  EXPECT_THROW(eventsOf(nested(257)), XMLError);
  EXPECT_THROW(eventsOf(nested(1'000'000)), XMLError);
  EXPECT_THROW(eventsOf("<!DOCTYPE a [<!ENTITY b \"c\">]><a>&b;</a>"), XMLError);
  EXPECT_THROW(eventsOf("<!DOCTYPE a SYSTEM \"a.dtd\"><a>1&b;2</a>"), XMLError);
}

TEST(XML, StopsWhenTheHandlerAsksForItOrThrows) {
  Recorder aborting;
  aborting.abortAt = "b";
  parseXML("<a><b><c/></b></a> malformed <", aborting);
  EXPECT_EQ(aborting.events, "<a><b>");
  Recorder throwing;
  throwing.throwAt = "b";
  EXPECT_THROW(parseXML("<a><b/><c/></a>", throwing), std::runtime_error);
  EXPECT_EQ(throwing.events, "<a><b>");
}

}  // namespace
}  // namespace corvane
