// Any bytes as JSON: what the tree accepts is written and read back equal, and walking the document
// accepts it too. finish() accepts exactly the documents that the tree does.

#include "platform/data/json.h"

#include <cstdint>
#include <cstdlib>

#include "platform/data/json_reader.h"

namespace {

void walk(corvane::JSONCursor& cursor) {
  switch (cursor.type()) {
    case corvane::JSONCursor::Type::array:
      cursor.forEachElement([](corvane::JSONCursor& element) { walk(element); });
      break;
    case corvane::JSONCursor::Type::object:
      // Every other field is skipped.
      cursor.forEachField([](std::string_view key, corvane::JSONCursor& value) {
        if (key.size() % 2 == 0) {
          walk(value);
        }
      });
      break;
    case corvane::JSONCursor::Type::number:
      (void)cursor.numberText();
      break;
    case corvane::JSONCursor::Type::string:
      (void)cursor.string();
      break;
    case corvane::JSONCursor::Type::boolean:
      (void)cursor.boolean();
      break;
    case corvane::JSONCursor::Type::null:
      break;
  }
}

bool canWalk(std::string_view document) {
  try {
    corvane::JSONReader(document).read(walk);
    return true;
  } catch (const corvane::JSONError&) {
    return false;
  }
}

bool canFinish(std::string_view document) {
  try {
    corvane::JSONReader(document).finish();
    return true;
  } catch (const corvane::JSONError&) {
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view document(reinterpret_cast<const char*>(data), size);
  const bool walked = canWalk(document);
  corvane::JSONValue value;
  try {
    value = corvane::JSONValue::parse(document);
  } catch (const corvane::JSONError& error) {
    (void)error.description();
    if (canFinish(document)) {
      std::abort();
    }
    return 0;
  }
  const bool isSame = corvane::JSONValue::parse(value.text()) == value &&
                      corvane::JSONValue::parse(value.prettyText()) == value;
  if (!walked || !isSame || !canFinish(document)) {
    std::abort();
  }
  return 0;
}
