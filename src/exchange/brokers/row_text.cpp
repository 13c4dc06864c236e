#include "exchange/brokers/row_text.h"

namespace corvane {

std::string rowText(const std::vector<std::string>& cells, ImportExportFieldDelimiter delimiter) {
  std::string text;
  for (const std::string& cell : cells) {
    if (!text.empty()) {
      text += separator(delimiter);
    }
    text += '"';
    for (const char character : cell) {
      text.append(character == '"' ? 2 : 1, character);
    }
    text += '"';
  }
  return text + "\r\n";
}

}  // namespace corvane
