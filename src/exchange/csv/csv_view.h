// The two shapes in which the rows of a delimited text can be looked at.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "exchange/csv/csv_delimiter.h"
#include "exchange/csv/csv_row.h"

namespace corvane {

/// What a view of a CSV is: it is made from the header and the text after it, has rows, has columns
/// where they were asked for, and can write itself as delimited text.
template <typename View>
concept CSVView = requires(const View& view, const CSVRow& header, std::string_view text,
                           const CSVDelimiter& delimiter, bool loadColumns,
                           std::optional<std::int64_t> rowLimit) {
  typename View::Row;
  typename View::Column;
  View(header, text, delimiter, loadColumns, rowLimit);
  { view.rows()[0] } -> std::convertible_to<typename View::Row>;
  { view.columns().has_value() } -> std::convertible_to<bool>;
  { view.serialized(header, delimiter) } -> std::same_as<std::string>;
};

/// Rows by number, all of them as long as the longest.
class Enumerated {
 public:
  using Row = CSVRow;
  struct Column {
    std::string_view header;
    CSVColumn rows;  ///< the cells below the header
  };

  /// One column for each field of the header, in order. Good as long as the view.
  class Columns {
   public:
    [[nodiscard]] std::size_t size() const { return view_->header().size(); }
    [[nodiscard]] bool empty() const { return size() == 0; }
    [[nodiscard]] Column operator[](std::size_t index) const {
      return {view_->header()[index], CSVColumn(view_->rows(), index)};
    }
    [[nodiscard]] IndexIterator<Columns> begin() const { return {this, 0}; }
    [[nodiscard]] IndexIterator<Columns> end() const { return {this, size()}; }

   private:
    friend class Enumerated;
    explicit Columns(const Enumerated& view) : view_(&view) {}
    const Enumerated* view_;
  };

  /// Reads the rows after the first one; see parseRows.
  Enumerated(const CSVRow& header, std::string_view text, const CSVDelimiter& delimiter,
             bool loadColumns, std::optional<std::int64_t> rowLimit);

  /// The rows without the header: a sequence with size() and [].
  [[nodiscard]] const CSVTable& rows() const { return rows_; }
  [[nodiscard]] CSVTable takeRows() && { return std::move(rows_); }
  /// None unless they were asked for.
  [[nodiscard]] std::optional<Columns> columns() const {
    return hasColumns_ ? std::optional(Columns(*this)) : std::nullopt;
  }
  [[nodiscard]] std::string serialized(const CSVRow& header, const CSVDelimiter& delimiter) const;

  /// Where in the text a quote stands that is never closed; see parseRows.
  [[nodiscard]] std::optional<std::size_t> unclosedQuote() const { return unclosedQuote_; }

 private:
  [[nodiscard]] CSVRow header() const { return header_.empty() ? CSVRow() : header_[0]; }

  CSVTable header_;
  CSVTable rows_;
  std::optional<std::size_t> unclosedQuote_;
  bool hasColumns_;
};

/// Rows by the names in the header. Of two columns with one name, the later one that a row has a
/// field for counts.
class Named {
 public:
  /// A row as a dictionary from header to value.
  class Row {
   public:
    /// None where the header has no such name, or the row no such field.
    [[nodiscard]] std::optional<std::string_view> operator[](std::string_view name) const;

   private:
    friend class Named;
    Row(const Named& view, CSVRow fields) : view_(&view), fields_(fields) {}
    const Named* view_;
    CSVRow fields_;
  };

  class Rows {
   public:
    [[nodiscard]] std::size_t size() const { return view_->rows_.size(); }
    [[nodiscard]] bool empty() const { return size() == 0; }
    [[nodiscard]] Row operator[](std::size_t index) const {
      return {*view_, view_->rows_.row(index)};
    }
    [[nodiscard]] IndexIterator<Rows> begin() const { return {this, 0}; }
    [[nodiscard]] IndexIterator<Rows> end() const { return {this, size()}; }

   private:
    friend class Named;
    explicit Rows(const Named& view) : view_(&view) {}
    const Named* view_;
  };

  /// The value of each row under one name, empty where it has none.
  class Column {
   public:
    using value_type = std::string_view;
    using const_iterator = IndexIterator<Column>;

    [[nodiscard]] std::size_t size() const { return view_->rows_.size(); }
    [[nodiscard]] std::string_view operator[](std::size_t rowIndex) const {
      return view_->rows()[rowIndex][name_].value_or(std::string_view());
    }
    [[nodiscard]] const_iterator begin() const { return {this, 0}; }
    [[nodiscard]] const_iterator end() const { return {this, size()}; }

   private:
    friend class Named;
    Column(const Named& view, std::string_view name) : view_(&view), name_(name) {}
    const Named* view_;
    std::string_view name_;
  };

  /// A dictionary from header to column.
  class Columns {
   public:
    [[nodiscard]] std::optional<Column> operator[](std::string_view name) const;

   private:
    friend class Named;
    explicit Columns(const Named& view) : view_(&view) {}
    const Named* view_;
  };

  /// Reads the rows after the first one; see parseRows.
  Named(const CSVRow& header, std::string_view text, const CSVDelimiter& delimiter,
        bool loadColumns, std::optional<std::int64_t> rowLimit);

  /// The rows without the header. Good as long as the view.
  [[nodiscard]] Rows rows() const { return Rows(*this); }
  /// None unless they were asked for. Good as long as the view.
  [[nodiscard]] std::optional<Columns> columns() const {
    return hasColumns_ ? std::optional(Columns(*this)) : std::nullopt;
  }
  [[nodiscard]] std::string serialized(const CSVRow& header, const CSVDelimiter& delimiter) const;

 private:
  /// The places of the columns called `name`, ascending.
  [[nodiscard]] std::vector<std::uint32_t>::const_iterator firstNamed(std::string_view name) const;

  CSVTable header_;
  CSVTable rows_;
  std::vector<std::uint32_t> columnsByName_;  ///< places in the header, by name, then ascending
  bool hasColumns_;
};

}  // namespace corvane
