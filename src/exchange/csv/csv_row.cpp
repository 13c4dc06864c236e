#include "exchange/csv/csv_row.h"

namespace corvane {

void CSVTable::reserve(std::size_t rows, std::size_t fields, std::size_t textLength) {
  rowEnds_.reserve(rows);
  rowLines_.reserve(rows);
  fieldEnds_.reserve(fields);
  characters_.reserve(textLength);
}

void CSVTable::finishRow(std::uint32_t line) {
  width_ = std::max(width_, fieldEnds_.size() - rowStart());
  rowLines_.push_back(line);
  rowEnds_.push_back(static_cast<std::uint32_t>(fieldEnds_.size()));
}

void CSVTable::append(const CSVRow& row) {
  if (row.held_ > 0) {
    const std::uint32_t length = row.ends_[row.held_ - 1] - row.start_;
    const auto shift = static_cast<std::uint32_t>(characters_.size()) - row.start_;
    characters_.append(row.characters_ + row.start_, length);
    for (std::size_t index = 0; index < row.held_; ++index) {
      fieldEnds_.push_back(row.ends_[index] + shift);  // modulo 2^32 where the row moves down
    }
  }
  finishRow(row.line_);
}

void CSVTable::clear() {
  characters_.clear();
  fieldEnds_.clear();
  rowEnds_.clear();
  rowLines_.clear();
  width_ = 0;
}

CSVRow CSVTable::rowOfSize(std::size_t index, std::size_t size) const {
  assert(index < this->size());
  const std::size_t first = index == 0 ? 0 : rowEnds_[index - 1];
  return {characters_.data(), fieldEnds_.data() + first, first == 0 ? 0 : fieldEnds_[first - 1],
          rowLines_[index],   fieldCount(index),         size};
}

}  // namespace corvane
