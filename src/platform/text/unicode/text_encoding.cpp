#include "platform/text/unicode/text_encoding.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <limits>
#include <memory>

#include "platform/text/unicode/icu_text.h"
#include "platform/text/unicode/utf8.h"

namespace corvane {
namespace {

using Converter = std::unique_ptr<UConverter, decltype(&ucnv_close)>;

std::string_view nameOf(TextEncoding encoding) {
  switch (encoding) {
    case TextEncoding::utf8:
      return "UTF-8";
    case TextEncoding::utf16:
      return "UTF-16";
    case TextEncoding::latin9:
      return "ISO-8859-15";
    case TextEncoding::windowsLatin1:
      break;
  }
  return "windows-1252";
}

/// A converter that stops at what it cannot convert.
Converter converterFor(TextEncoding encoding) {
  UErrorCode status = U_ZERO_ERROR;
  Converter converter(ucnv_open(nameOf(encoding).data(), &status), &ucnv_close);
  ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
  return converter;
}

/// ICU counts in 32 bits.
constexpr std::size_t longestConversion = std::numeric_limits<std::int32_t>::max() / 4;

}  // namespace

std::optional<std::string> TextEncodingError::description() const {
  const std::string name(nameOf(encoding));
  return isReading ? "The file is not " + name + " text."
                   : "The text has characters that " + name + " cannot write.";
}

std::optional<std::string> TextEncodingError::recoverySuggestion() const {
  return isReading ? std::optional<std::string>("Save it as " + std::string(nameOf(encoding)) +
                                                " in the program that it comes from.")
                   : std::nullopt;
}

std::string decodedText(std::string bytes, TextEncoding encoding) {
  const TextEncodingError failure(encoding, true);
  if (encoding == TextEncoding::utf8) {
    return isUTF8(bytes) ? std::move(bytes) : throw failure;
  }
  if (bytes.size() > longestConversion) {
    throw failure;
  }
  UErrorCode status = U_ZERO_ERROR;
  const Converter converter = converterFor(encoding);
  const icu::UnicodeString text(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                converter.get(), status);
  return U_SUCCESS(status) ? toUtf8(text) : throw failure;
}

std::string encodedText(std::string text, TextEncoding encoding) {
  const TextEncodingError failure(encoding, false);
  if (!isUTF8(text)) {
    throw failure;
  }
  if (encoding == TextEncoding::utf8) {
    return text;
  }
  if (text.size() > longestConversion) {
    throw failure;
  }
  UErrorCode status = U_ZERO_ERROR;
  const Converter converter = converterFor(encoding);
  const icu::UnicodeString characters = toIcu(text);
  std::string bytes(static_cast<std::size_t>(characters.length()) * 2 + 2, '\0');
  const std::int32_t length = characters.extract(
      bytes.data(), static_cast<std::int32_t>(bytes.size()), converter.get(), status);
  if (U_FAILURE(status)) {
    throw failure;
  }
  bytes.resize(static_cast<std::size_t>(length));
  return bytes;
}

std::string withoutByteOrderMark(std::string text) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  if (text.starts_with(mark)) {
    text.erase(0, mark.size());
  }
  return text;
}

}  // namespace corvane
