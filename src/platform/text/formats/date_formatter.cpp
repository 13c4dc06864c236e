#include "platform/text/formats/date_formatter.h"

#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/text/formats/recent_cache.h"
#include "platform/text/unicode/icu_text.h"
#include "platform/time/calendar.h"

namespace corvane {
namespace {

using Format = std::unique_ptr<icu::SimpleDateFormat>;

icu::DateFormat::EStyle icuStyle(DateFormatter::Style style) {
  switch (style) {
    case DateFormatter::Style::shortStyle:
      return icu::DateFormat::kShort;
    case DateFormatter::Style::mediumStyle:
      return icu::DateFormat::kMedium;
    case DateFormatter::Style::longStyle:
      return icu::DateFormat::kLong;
    case DateFormatter::Style::fullStyle:
      return icu::DateFormat::kFull;
    case DateFormatter::Style::none:
      break;
  }
  return icu::DateFormat::kNone;
}

/// Calls `visit(character, isField)` for each character of a pattern of date fields; `isField`
/// tells letters that stand for a field from literal text.
template <typename Visit>
void forEachCharacter(const icu::UnicodeString& pattern, Visit visit) {
  bool isQuoted = false;
  for (std::int32_t index = 0; index < pattern.length(); ++index) {
    const char16_t character = pattern.charAt(index);
    if (character == u'\'') {
      isQuoted = !isQuoted;
    }
    const bool isLetter =
        (character >= u'a' && character <= u'z') || (character >= u'A' && character <= u'Z');
    visit(character, isLetter && !isQuoted);
  }
}

bool hasField(const icu::UnicodeString& pattern, std::u16string_view fields) {
  bool found = false;
  forEachCharacter(pattern, [&](char16_t character, bool isField) {
    found = found || (isField && fields.find(character) != std::u16string_view::npos);
  });
  return found;
}

icu::UnicodeString withPlainYears(const icu::UnicodeString& pattern) {
  if (hasField(pattern, u"wW")) {
    return pattern;
  }
  icu::UnicodeString result;
  forEachCharacter(pattern, [&](char16_t character, bool isField) {
    result.append(isField && character == u'Y' ? u'y' : character);
  });
  return result;
}

icu::UnicodeString patternOf(const DateFormatter& settings, const icu::Locale& locale,
                             UErrorCode& status) {
  if (settings.format) {
    return withPlainYears(toIcu(*settings.format));
  }
  if (settings.localizedTemplate) {
    const std::unique_ptr<icu::DateTimePatternGenerator> generator(
        icu::DateTimePatternGenerator::createInstance(locale, status));
    return U_SUCCESS(status) ? generator->getBestPattern(toIcu(*settings.localizedTemplate), status)
                             : icu::UnicodeString();
  }
  if (settings.dateStyle == DateFormatter::Style::none &&
      settings.timeStyle == DateFormatter::Style::none) {
    return {};
  }
  const std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
      icuStyle(settings.dateStyle), icuStyle(settings.timeStyle), locale));
  icu::UnicodeString pattern;
  if (const auto* simple = dynamic_cast<const icu::SimpleDateFormat*>(format.get())) {
    simple->toPattern(pattern);
  }
  return pattern;
}

/// A Gregorian calendar for all years, as our own is. The caller owns it.
std::unique_ptr<icu::GregorianCalendar> makeCalendar(const TimeZone& zone, UErrorCode& status) {
  auto calendar = std::make_unique<icu::GregorianCalendar>(
      icu::TimeZone::createTimeZone(toIcu(zone.identifier())), status);
  constexpr double beforeAllDates = -1e17;
  calendar->setGregorianChange(beforeAllDates, status);
  calendar->setRepeatedWallTimeOption(UCAL_WALLTIME_FIRST);
  calendar->setLenient(false);
  return calendar;
}

Format makeFormat(const icu::UnicodeString& pattern, const icu::Locale& locale,
                  const TimeZone& zone, FormattingContext context) {
  UErrorCode status = U_ZERO_ERROR;
  auto format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
  format->adoptCalendar(makeCalendar(zone, status).release());
  format->setContext(toIcu(context), status);
  return U_SUCCESS(status) ? std::move(format) : nullptr;
}

bool isPartOfWord(char16_t character) {
  // The halves of a pair stand for a letter outside the basic plane.
  constexpr std::uint32_t wordCategories = U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK | U_GC_CS_MASK;
  return (U_GET_GC_MASK(character) & wordCategories) != 0;
}

/// `text` with each run of spaces and signs as one space, and none at the ends.
icu::UnicodeString withPlainSeparators(const icu::UnicodeString& text) {
  icu::UnicodeString result;
  for (std::int32_t index = 0; index < text.length(); ++index) {
    const char16_t character = text.charAt(index);
    if (isPartOfWord(character)) {
      result.append(character);
    } else if (!result.isEmpty() && !result.endsWith(u' ')) {
      result.append(u' ');
    }
  }
  return result.trim();
}

/// The same for a pattern: words in its literal text stay.
icu::UnicodeString patternWithPlainSeparators(const icu::UnicodeString& pattern) {
  icu::UnicodeString result;
  forEachCharacter(pattern, [&](char16_t character, bool isField) {
    if (isField || character == u'\'' || isPartOfWord(character)) {
      result.append(character);
    } else if (!result.isEmpty() && !result.endsWith(u' ')) {
      result.append(u' ');
    }
  });
  return result.trim();
}

icu::UnicodeString withMonth(const icu::UnicodeString& pattern, const char16_t* month) {
  icu::UnicodeString result;
  bool isInMonth = false;
  forEachCharacter(pattern, [&](char16_t character, bool isField) {
    const bool isMonth = isField && (character == u'M' || character == u'L');
    if (!isMonth) {
      result.append(character);
    } else if (!isInMonth) {
      result.append(month);
    }
    isInMonth = isMonth;
  });
  return result;
}

/// A way to read a text.
struct Reader {
  Format format;
  /// Whether the text is to be given with plain separators.
  bool takesPlainSeparators;
};

/// What is made for one set of settings.
struct DateFormats {
  Format writer;
  /// The likeliest first.
  std::vector<Reader> readers;
  bool showsTimeZone = false;
};

DateFormats makeDateFormats(const DateFormatter& settings) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Locale locale = toIcu(settings.locale);
  const icu::UnicodeString pattern = patternOf(settings, locale, status);
  if (U_FAILURE(status)) {
    return {};
  }
  DateFormats formats;
  formats.writer = makeFormat(pattern, locale, settings.timeZone, settings.context);
  formats.showsTimeZone = hasField(pattern, u"zZOvVXx");

  // A text without a zone is read as civil time, so that the clock changes of the zone cannot make
  // it impossible; the calendar then finds the moment.
  const TimeZone readingZone = formats.showsTimeZone ? settings.timeZone : TimeZone();
  const auto addReader = [&](const icu::UnicodeString& readingPattern, const icu::Locale& language,
                             bool takesPlainSeparators) {
    Format format = makeFormat(readingPattern, language, readingZone, FormattingContext::unknown);
    if (format != nullptr) {
      format->setBooleanAttribute(UDAT_PARSE_PARTIAL_LITERAL_MATCH, false, status);
      format->setLenient(static_cast<UBool>(settings.isLenient));
      formats.readers.push_back({std::move(format), takesPlainSeparators});
    }
  };
  addReader(pattern, locale, false);
  if (settings.isLenient) {
    const icu::UnicodeString plain = patternWithPlainSeparators(pattern);
    for (const icu::Locale& language : {locale, icu::Locale::getEnglish(), icu::Locale::getUK()}) {
      addReader(plain, language, true);
      if (hasField(plain, u"ML")) {
        for (const char16_t* month : {u"M", u"MMM", u"MMMM"}) {
          addReader(withMonth(plain, month), language, true);
        }
      }
    }
  }
  return formats;
}

const DateFormats& formatsFor(const DateFormatter& settings) {
  thread_local RecentCache<DateFormatter, DateFormats> formats;
  return formats.get(settings, makeDateFormats);
}

/// The date that all of `text` describes to `reader`.
std::optional<Date> read(const icu::SimpleDateFormat& reader, const icu::UnicodeString& text) {
  const std::unique_ptr<icu::Calendar> fields(reader.getCalendar()->clone());
  // Lenient readers forgive the form of a text, never a day that does not exist.
  fields->setLenient(false);
  fields->clear();
  fields->set(2000, UCAL_JANUARY, 1, 0, 0, 0);
  icu::ParsePosition position;
  reader.parse(text, *fields, position);
  if (position.getErrorIndex() >= 0 || position.getIndex() != text.length()) {
    return std::nullopt;
  }
  UErrorCode status = U_ZERO_ERROR;
  const UDate milliseconds = fields->getTime(status);
  return U_SUCCESS(status) ? std::optional(Date::since1970(milliseconds / 1000)) : std::nullopt;
}

/// The moment at which clocks of `zone` show what those in UTC show at `date`.
std::optional<Date> sameCivilTime(Date date, const TimeZone& zone) {
  using enum CalendarUnit;
  const double wholeSeconds = std::floor(date.timeIntervalSinceReferenceDate());
  const auto moment = Calendar(zone).date(
      Calendar().dateComponents({year, month, day, hour, minute, second}, date));
  return moment ? std::optional(*moment + (date.timeIntervalSinceReferenceDate() - wholeSeconds))
                : std::nullopt;
}

}  // namespace

std::string DateFormatter::pattern() const {
  UErrorCode status = U_ZERO_ERROR;
  return toUtf8(patternOf(*this, toIcu(locale), status));
}

std::string DateFormatter::string(Date date) const {
  const DateFormats& formats = formatsFor(*this);
  if (formats.writer == nullptr || !std::isfinite(date.timeIntervalSinceReferenceDate())) {
    return {};
  }
  icu::UnicodeString text;
  formats.writer->format(date.timeIntervalSince1970() * 1000, text);
  return toUtf8(text);
}

std::optional<Date> DateFormatter::date(std::string_view text) const {
  const DateFormats& formats = formatsFor(*this);
  const icu::UnicodeString given = toIcu(text);
  const icu::UnicodeString plain = withPlainSeparators(given);
  for (const Reader& reader : formats.readers) {
    const icu::UnicodeString& reading = reader.takesPlainSeparators ? plain : given;
    if (const auto date = reading.isEmpty() ? std::nullopt : read(*reader.format, reading)) {
      return formats.showsTimeZone ? date : sameCivilTime(*date, timeZone);
    }
  }
  return std::nullopt;
}

}  // namespace corvane
