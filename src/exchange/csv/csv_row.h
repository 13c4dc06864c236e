// The rows of a delimited text, packed so that a large file takes little more than its own size.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// Walks over anything with size() and operator[]; what it points to is made on the way.
template <typename Sequence>
class IndexIterator {
 public:
  using iterator_concept = std::forward_iterator_tag;
  using iterator_category = std::input_iterator_tag;
  using value_type = std::decay_t<decltype(std::declval<const Sequence&>()[0])>;
  using difference_type = std::ptrdiff_t;
  using reference = value_type;
  using pointer = void;

  IndexIterator() = default;
  IndexIterator(const Sequence* sequence, std::size_t index) : sequence_(sequence), index_(index) {}

  value_type operator*() const { return (*sequence_)[index_]; }
  IndexIterator& operator++() {
    ++index_;
    return *this;
  }
  IndexIterator operator++(int) {
    IndexIterator before = *this;
    ++index_;
    return before;
  }
  friend bool operator==(const IndexIterator& left, const IndexIterator& right) {
    return left.index_ == right.index_;
  }

 private:
  const Sequence* sequence_ = nullptr;
  std::size_t index_ = 0;
};

/// One row: a sequence of texts that somebody else holds. Good until that one changes or goes away.
class CSVRow {
 public:
  using value_type = std::string_view;
  using const_iterator = IndexIterator<CSVRow>;

  CSVRow() = default;

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] bool empty() const { return size_ == 0; }
  /// The field at `index`, which is below size(). Empty where the row was padded.
  [[nodiscard]] std::string_view operator[](std::size_t index) const {
    assert(index < size_);
    if (index >= held_) {
      return {};
    }
    const std::uint32_t start = index == 0 ? start_ : ends_[index - 1];
    return {characters_ + start, ends_[index] - start};
  }
  [[nodiscard]] const_iterator begin() const { return {this, 0}; }
  [[nodiscard]] const_iterator end() const { return {this, size_}; }

  /// The line of the text on which the row starts, from 1; 0 where nobody has told.
  [[nodiscard]] std::uint32_t line() const { return line_; }

  /// The fields as texts of their own.
  [[nodiscard]] std::vector<std::string> strings() const { return {begin(), end()}; }

  friend bool operator==(const CSVRow& left, const CSVRow& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end());
  }

 private:
  friend class CSVTable;
  CSVRow(const char* characters, const std::uint32_t* ends, std::uint32_t start, std::uint32_t line,
         std::size_t held, std::size_t size)
      : characters_(characters),
        ends_(ends),
        start_(start),
        line_(line),
        held_(held),
        size_(size) {}

  const char* characters_ = nullptr;
  const std::uint32_t* ends_ = nullptr;  ///< where each field ends in characters_
  std::uint32_t start_ = 0;              ///< where the first one starts
  std::uint32_t line_ = 0;
  std::size_t held_ = 0;  ///< the fields that were read; the others are empty
  std::size_t size_ = 0;
};

/// Rows of fields: the text of all of them in one piece, four bytes for each field and eight for
/// each row. It holds less than 4 GiB of text, and is filled field by field.
class CSVTable {
 public:
  /// More text than this cannot be held.
  static constexpr std::size_t maximumTextLength = UINT32_MAX - 1;

  [[nodiscard]] std::size_t size() const { return rowEnds_.size(); }
  [[nodiscard]] bool empty() const { return rowEnds_.empty(); }
  /// The number of fields of the longest row.
  [[nodiscard]] std::size_t width() const { return width_; }

  /// The row at `index`, with the fields that it was given.
  [[nodiscard]] CSVRow row(std::size_t index) const { return rowOfSize(index, fieldCount(index)); }
  /// The row at `index`, filled up with empty fields to the width of the table.
  [[nodiscard]] CSVRow operator[](std::size_t index) const { return rowOfSize(index, width_); }
  [[nodiscard]] IndexIterator<CSVTable> begin() const { return {this, 0}; }
  [[nodiscard]] IndexIterator<CSVTable> end() const { return {this, size()}; }

  /// Makes room. What is not filled is never touched, so a generous guess costs nothing.
  void reserve(std::size_t rows, std::size_t fields, std::size_t textLength);

  // Building the last row.
  void appendToField(std::string_view text) { characters_.append(text); }
  [[nodiscard]] bool isFieldEmpty() const { return characters_.size() == fieldStart(); }
  void finishField() { fieldEnds_.push_back(static_cast<std::uint32_t>(characters_.size())); }
  [[nodiscard]] bool hasUnfinishedRow() const { return fieldEnds_.size() > rowStart(); }
  void finishRow(std::uint32_t line = 0);

  void append(const CSVRow& row);
  /// Forgets all rows and keeps the room.
  void clear();

 private:
  [[nodiscard]] std::size_t fieldStart() const {
    return fieldEnds_.empty() ? 0 : fieldEnds_.back();
  }
  [[nodiscard]] std::size_t rowStart() const { return rowEnds_.empty() ? 0 : rowEnds_.back(); }
  [[nodiscard]] std::size_t fieldCount(std::size_t row) const {
    return rowEnds_[row] - (row == 0 ? 0 : rowEnds_[row - 1]);
  }
  [[nodiscard]] CSVRow rowOfSize(std::size_t index, std::size_t size) const;

  std::string characters_;
  std::vector<std::uint32_t> fieldEnds_;  ///< in characters_
  std::vector<std::uint32_t> rowEnds_;    ///< in fieldEnds_
  std::vector<std::uint32_t> rowLines_;   ///< where each row starts in the text
  std::size_t width_ = 0;
};

/// One column of a table: its field in each row, empty where a row is too short. Good as long as
/// the table.
class CSVColumn {
 public:
  using value_type = std::string_view;
  using const_iterator = IndexIterator<CSVColumn>;

  CSVColumn(const CSVTable& table, std::size_t index) : table_(&table), index_(index) {}

  [[nodiscard]] std::size_t size() const { return table_->size(); }
  [[nodiscard]] bool empty() const { return table_->empty(); }
  [[nodiscard]] std::string_view operator[](std::size_t rowIndex) const {
    const CSVRow row = table_->row(rowIndex);
    return index_ < row.size() ? row[index_] : std::string_view();
  }
  [[nodiscard]] const_iterator begin() const { return {this, 0}; }
  [[nodiscard]] const_iterator end() const { return {this, size()}; }

 private:
  const CSVTable* table_;
  std::size_t index_;
};

}  // namespace corvane
