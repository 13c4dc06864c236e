#include "exchange/pools/text_pool.h"

#include <cstring>
#include <functional>
#include <limits>

#include "exchange/strict/statement_error.h"

namespace corvane {

TextPool::TextPool() : recent_(recentCount, empty) {
  (void)placeFor(1);  // no text has the key of the empty one
}

TextPool::Key TextPool::add(std::string_view text) {
  if (text.empty()) {
    return empty;
  }
  Key& recent = recent_[std::hash<std::string_view>()(text) % recentCount];
  if (recent != empty && this->text(recent) == text) {
    return recent;
  }
  const auto length = static_cast<std::uint32_t>(text.size());
  const std::size_t place = placeFor(1 + (text.size() + unit - 1) / unit);
  std::byte* bytes = chunks_[place / unitsOfChunk] + place % unitsOfChunk * unit;
  std::memcpy(bytes, &length, sizeof length);
  std::memcpy(bytes + sizeof length, text.data(), text.size());
  recent = static_cast<Key>(place);
  return recent;
}

std::string_view TextPool::text(Key key) const {
  if (key == empty) {
    return {};
  }
  const std::byte* bytes = chunks_[key / unitsOfChunk] + key % unitsOfChunk * unit;
  std::uint32_t length = 0;
  std::memcpy(&length, bytes, sizeof length);
  return {reinterpret_cast<const char*>(bytes + sizeof length), length};
}

std::size_t TextPool::placeFor(std::size_t units) {
  const std::size_t left = chunks_.size() * unitsOfChunk - end_;
  if (units > left) {
    end_ = chunks_.size() * unitsOfChunk;
    const std::size_t count = (units + unitsOfChunk - 1) / unitsOfChunk;
    if (end_ + count * unitsOfChunk > std::numeric_limits<Key>::max()) {
      throw StatementError(0, "", "The file has more text than can be held.");
    }
    blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(count * unitsOfChunk * unit));
    for (std::size_t i = 0; i < count; ++i) {
      chunks_.push_back(blocks_.back().get() + i * unitsOfChunk * unit);
    }
  }
  const std::size_t place = end_;
  end_ += units;
  return place;
}

}  // namespace corvane
