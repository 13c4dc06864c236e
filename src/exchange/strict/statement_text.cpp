#include "exchange/strict/statement_text.h"

#include <algorithm>
#include <utility>

#include "platform/system/file_manager.h"
#include "platform/text/unicode/utf8.h"

namespace corvane {
namespace {

/// Whether every other one of the first bytes is 0: text of Western letters in UTF-16. `first` is
/// where the zeros are expected.
bool hasZeros(std::string_view bytes, std::size_t first) {
  constexpr std::size_t looked = 64;
  if (bytes.size() < 4 || bytes.size() % 2 != 0) {
    return false;
  }
  for (std::size_t i = first; i < std::min(bytes.size(), looked); i += 2) {
    if (bytes[i] != '\0') {
      return false;
    }
  }
  return true;
}

}  // namespace

StatementText decodedStatement(std::string bytes, TextEncoding otherwise) {
  const bool isMarked = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
  if (!isMarked && hasZeros(bytes, 1)) {
    bytes.insert(0, "\xFF\xFE");  // the mark tells the order of the bytes
    return {decodedText(std::move(bytes), TextEncoding::utf16), TextEncoding::utf16};
  }
  if (isMarked || hasZeros(bytes, 0)) {
    return {decodedText(std::move(bytes), TextEncoding::utf16), TextEncoding::utf16};
  }
  const TextEncoding encoding = isUTF8(bytes) ? TextEncoding::utf8 : otherwise;
  return {withoutByteOrderMark(decodedText(std::move(bytes), encoding)), encoding};
}

StatementText readStatementText(const std::filesystem::path& file, TextEncoding otherwise) {
  return decodedStatement(files::read(file), otherwise);
}

std::string_view displayName(TextEncoding encoding) {
  switch (encoding) {
    case TextEncoding::utf8:
      return "UTF-8";
    case TextEncoding::utf16:
      return "UTF-16";
    case TextEncoding::windowsLatin1:
      return "windows-1252";
    case TextEncoding::latin9:
      break;
  }
  return "ISO 8859-15";
}

}  // namespace corvane
