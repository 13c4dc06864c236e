#include "platform/system/uuid.h"

#include <cstring>
#include <random>

namespace corvane {

UUID::UUID() {
  std::random_device random;
  for (std::size_t i = 0; i < bytes_.size(); i += 4) {
    const std::uint32_t word = random();
    std::memcpy(&bytes_[i], &word, sizeof word);
  }
  // The version, random, and the variant of the layout.
  bytes_[6] = static_cast<std::uint8_t>(0x40 | (bytes_[6] & 0x0F));
  bytes_[8] = static_cast<std::uint8_t>(0x80 | (bytes_[8] & 0x3F));
}

std::string UUID::string() const {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) {
      text += '-';
    }
    text += digits[bytes_[i] >> 4];
    text += digits[bytes_[i] & 0x0F];
  }
  return text;
}

}  // namespace corvane

std::size_t std::hash<corvane::UUID>::operator()(const corvane::UUID& uuid) const noexcept {
  std::size_t bits = 0;
  std::memcpy(&bits, uuid.bytes_.data(), sizeof bits);
  return bits;
}
