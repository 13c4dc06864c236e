// OFX files as events: tags with and without ends, texts, headers, and files that are not whole.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/data/ofx.h"

namespace corvane {
namespace {

/// Writes the events of a file on one line: "A( B=text@3 )".
class OFXEventLine : public OFXHandler {
 public:
  std::string text;

  void startElement(std::string_view name, std::uint32_t /*line*/) override {
    text += std::string(name) + "( ";
  }
  void endElement(std::string_view /*name*/) override { text += ") "; }
  void value(std::string_view name, const std::string& value, std::uint32_t line) override {
    text += std::string(name) + "=" + value + "@" + std::to_string(line) + " ";
  }
};

/// The events of `file`, or what is wrong with it.
std::string ofxEvents(std::string_view file) {
  OFXEventLine events;
  try {
    parseOFX(file, events);
    return events.text;
  } catch (const OFXError& error) {
    return error.description().value();
  }
}

TEST(OFX, ReadsTagsWithAndWithoutEnds) {
  const std::string expected = "OFX( BANKTRANLIST( STMTTRN( TRNAMT=-1.50@4 NAME=Tea & Co@5 ) ) ) ";
  EXPECT_EQ(ofxEvents("OFXHEADER:100\n\n<OFX><BANKTRANLIST>\n<STMTTRN><TRNAMT>-1.50 \n<NAME>Tea "
                      "&amp; Co\n</STMTTRN></BANKTRANLIST></OFX>\n"),
            expected);
  EXPECT_EQ(ofxEvents("<?xml version=\"1.0\"?>\n<?OFX OFXHEADER=\"200\"?><!-- by hand -->\n"
                      "<OFX xmlns=\"x\"><banktranlist><STMTTRN>\n<TRNAMT>-1.50</TRNAMT>\n<NAME>\n"
                      "<![CDATA[Tea & Co]]></NAME></STMTTRN></BANKTRANLIST></OFX>"),
            expected);
  // Elements without a text are no holders of what follows them.
  EXPECT_EQ(ofxEvents("<OFX><A><MEMO><NAME>x</A><A><MEMO/><MEMO></MEMO><NAME>y</A></OFX>"),
            "OFX( A( MEMO=@1 NAME=x@1 ) A( MEMO=@1 MEMO=@1 NAME=y@1 ) ) ");
  EXPECT_EQ(ofxEvents("<OFX>\r\n<A>a < b\r\n  & c&nbsp;&#233;<B>2</OFX>"),
            "OFX( A=a < b & c é@2 B=2@3 ) ");
}

TEST(OFX, NamesTheLineOfWhatIsNotWhole) {
  EXPECT_EQ(ofxEvents("<OFX>\n<LIST>\n<A>1\n<A>2\n</LIST>\n<LIST>\n<A>3\n"),
            "Line 8: the file ends within “LIST”, which line 6 begins. It is not whole.");
  EXPECT_EQ(ofxEvents("<OFX>\n<LIST>\n<A>1\n"),
            "Line 4: the file ends within “OFX”, which line 1 begins. It is not whole.");
  EXPECT_EQ(ofxEvents("<OFX>\n<A>1\n</LIST>\n</OFX>"),
            "Line 3: “LIST” ends here, but “OFX” of line 1 is still open.");
  EXPECT_EQ(ofxEvents("<OFX>\n<LIST>\n<A>1</LIST>\n<LIST>\n<A>2\n</OFX>"),
            "Line 6: “OFX” ends here, but “LIST” of line 4 is still open.");
  EXPECT_EQ(ofxEvents("<OFX>\n<A>1</A>\n two</OFX>"), "Line 3: “two” stands in no element.");
  std::string deep;
  for (int i = 0; i < 100; ++i) {
    deep += "<D" + std::to_string(i) + ">";
  }
  std::string back;
  for (int i = 99; i >= 0; --i) {
    back += "</D" + std::to_string(i) + ">";
  }
  EXPECT_EQ(ofxEvents("<OFX>" + deep + "<X>1" + back + "</OFX>"),
            "Line 1: elements are nested too deep.");
}

TEST(OFX, IsKnownByItsStart) {
  EXPECT_TRUE(isOFX("\xEF\xBB\xBF\r\n<?xml version=\"1.0\"?>\n<?OFX OFXHEADER=\"200\"?>"));
  EXPECT_TRUE(isOFX("OFXHEADER:100 DATA:OFXSGML"));
  EXPECT_TRUE(isOFX("\n<ofx>\n<SIGNONMSGSRSV1>"));
  EXPECT_TRUE(isOFX(std::string_view("\xFF\xFEO\0F\0X\0H\0E\0A\0D\0E\0R\0", 20)));
  EXPECT_FALSE(isOFX("Date,Amount\n2025-01-01,\"<OFX>\"\n"));
  EXPECT_FALSE(isOFX("<html><body>Please sign in</body></html>"));
  EXPECT_FALSE(isOFX(""));

  const OFXHeader lines =
      ofxHeader("OFXHEADER:100\nVERSION:151\nENCODING:USASCII\nCHARSET:8859-15\n<OFX><CHARSET>1");
  EXPECT_EQ(lines.version + " " + lines.characterSet, "151 8859-15");
  const OFXHeader oneLine =
      ofxHeader("OFXHEADER:100 VERSION:102 ENCODING:UTF-8 CHARSET:NONE <OFX>");
  EXPECT_EQ(oneLine.version + " " + oneLine.characterSet, "102 UTF-8");
  const OFXHeader xml = ofxHeader(
      "<?xml version=\"1.0\" encoding=\"iso-8859-15\"?><?OFX OFXHEADER=\"200\" VERSION=\"211\"?>");
  EXPECT_EQ(xml.version + " " + xml.characterSet, "211 ISO-8859-15");
}

}  // namespace
}  // namespace corvane
