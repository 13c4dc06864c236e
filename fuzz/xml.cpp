// Any bytes as an XML document: events stay balanced, and a fault is an XMLError.

#include "platform/data/xml.h"

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

class BalanceChecker : public corvane::XMLHandler {
 public:
  void startElement(std::string_view name, const Attributes&) override {
    open_.emplace_back(name);
    if (name == "abort") {
      abortParsing();
    }
  }
  void endElement(std::string_view name) override {
    if (open_.empty() || open_.back() != name) {
      std::abort();
    }
    open_.pop_back();
  }
  void characters(std::string_view) override {
    if (open_.empty()) {
      std::abort();
    }
  }

 private:
  std::vector<std::string> open_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  BalanceChecker checker;
  try {
    corvane::parseXML({reinterpret_cast<const char*>(data), size}, checker);
  } catch (const corvane::XMLError& error) {
    (void)error.description();
  }
  return 0;
}
