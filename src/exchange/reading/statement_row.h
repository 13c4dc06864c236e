// A row of a statement as it would be recorded, with what becomes of it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ledger/transaction/basic_transaction.h"

namespace corvane {

/// What becomes of a row.
enum class RowVerdict : std::uint8_t {
  isNew,
  present,         ///< already in the ledger
  perhapsPresent,  ///< it, or one like it: left out unless the user says otherwise
  leftOut,
  belongs,  ///< to another line, with which it is one transaction
  asks,     ///< something that only the user knows
  refused,  ///< no transaction comes of it
  ledgerRefuses
};

/// "new", "already there" and so on.
[[nodiscard]] std::string_view displayName(RowVerdict verdict);

/// What only the user knows of a row.
struct RowQuestion {
  enum class About { symbol, currency, rate, kind };
  About about = About::symbol;
  /// What the file calls it: the ISIN or name of an equity, the code of a currency, the word for
  /// the kind.
  std::string subject;
  std::string name;      ///< of the equity, where the subject is its ISIN
  std::string currency;  ///< of the row, where it is told
  std::string proposal;  ///< an answer that may be right; empty for none
  friend bool operator==(const RowQuestion&, const RowQuestion&) = default;
};

/// One row, as StatementRows hands it out. A plain value.
struct StatementRow {
  std::uint32_t line = 0;  ///< of the file, from 1
  RowVerdict verdict = RowVerdict::isNew;
  std::string reason;                   ///< of every verdict but isNew
  std::string remedy;                   ///< a sentence of what to say on the console
  std::optional<RowQuestion> question;  ///< whose answer would help
  std::string kind;                     ///< in the words of layouts
  std::string symbol;                   ///< or what stands in its place
  /// What is recorded: one transaction, or a sale and the tax that was withheld. None where nothing
  /// can be made of the row.
  std::vector<BasicTransaction> transactions;
  std::string rate;                  ///< of a foreign row, and where it is from
  std::optional<std::int64_t> time;  ///< nanoseconds of the day
  std::string id;                    ///< the broker's number of the row
};

}  // namespace corvane
