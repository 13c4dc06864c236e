#include "exchange/strict/statement_text.h"

#include <algorithm>

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

/// Decodes text of one byte a character piece by piece, so that what is between holds little.
std::string decodedPieces(std::string_view bytes, TextEncoding encoding) {
  constexpr std::size_t piece = 1 << 20;
  if (encoding != TextEncoding::windowsLatin1 && encoding != TextEncoding::latin9) {
    return decodedText(std::string(bytes), encoding);
  }
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 16);
  for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) {
    text += decodedText(std::string(bytes.substr(0, piece)), encoding);
  }
  return text;
}

}  // namespace

StatementText decodedStatement(std::string_view bytes, TextEncoding otherwise) {
  const bool isMarked = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
  if (!isMarked && hasZeros(bytes, 1)) {
    // The mark tells the order of the bytes.
    return {decodedText("\xFF\xFE" + std::string(bytes), TextEncoding::utf16), TextEncoding::utf16};
  }
  if (isMarked || hasZeros(bytes, 0)) {
    return {decodedText(std::string(bytes), TextEncoding::utf16), TextEncoding::utf16};
  }
  if (isUTF8(bytes)) {
    return {withoutByteOrderMark(std::string(bytes)), TextEncoding::utf8};
  }
  return {withoutByteOrderMark(decodedPieces(bytes, otherwise)), otherwise};
}

std::optional<std::string_view> plainStatement(std::string_view bytes) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  const bool isUTF16 = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF") ||
                       hasZeros(bytes, 0) || hasZeros(bytes, 1);
  if (isUTF16 || !isUTF8(bytes)) {
    return std::nullopt;
  }
  bytes.remove_prefix(bytes.starts_with(mark) ? mark.size() : 0);
  return bytes;
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
