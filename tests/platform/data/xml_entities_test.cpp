#include "platform/data/xml_entities.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace corvane {
namespace {

TEST(XMLEntities, StandForTheirCharacters) {
  constexpr auto cases = std::to_array<std::pair<const char*, const char*>>({
      {"", ""},
      {"no entities", "no entities"},
      {"A&amp;B &lt;C&gt; &quot;D&quot; &apos;E&apos;", "A&B <C> \"D\" 'E'"},
      {"&#65;&#233;&#8594;&#128512;", "Aé→😀"},
      {"&#x41;&#xE9;&#Xe9;&#x1F600;", "Aéé😀"},
      {"&amp;lt;", "&lt;"},
      // What is no entity stays.
      {"R&D", "R&D"},
      {"R&D; &", "R&D; &"},
      {"&nbsp;&AMP;&;&#;&#x;", "&nbsp;&AMP;&;&#;&#x;"},
      {"&#0;&#xD800;&#x110000;&#-5;&#12a;", "&#0;&#xD800;&#x110000;&#-5;&#12a;"},
      {"&#99999999999999999999;", "&#99999999999999999999;"},
      {"&&amp;", "&&"},
  });
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(unescapingXMLEntities(text), expected);
  }
}

}  // namespace
}  // namespace corvane
