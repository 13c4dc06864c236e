#include "platform/data/sha256.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace corvane {
namespace {

using HashWords = std::array<std::uint32_t, 8>;

constexpr std::size_t blockSize = 64;

constexpr std::array<std::uint32_t, 64> roundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

void takeBlock(HashWords& state, const unsigned char* block) {
  std::array<std::uint32_t, 64> words{};
  for (std::size_t i = 0; i < 16; ++i) {
    for (std::size_t byte = 0; byte < 4; ++byte) {
      words[i] = words[i] << 8U | block[i * 4 + byte];
    }
  }
  for (std::size_t i = 16; i < words.size(); ++i) {
    const std::uint32_t early = words[i - 15];
    const std::uint32_t late = words[i - 2];
    words[i] = words[i - 16] + (std::rotr(early, 7) ^ std::rotr(early, 18) ^ early >> 3U) +
               words[i - 7] + (std::rotr(late, 17) ^ std::rotr(late, 19) ^ late >> 10U);
  }
  auto [a, b, c, d, e, f, g, h] = state;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                ((e & f) ^ (~e & g)) + roundConstants[i] + words[i];
    const std::uint32_t second =
        (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const HashWords after = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state.size(); ++i) {
    state[i] += after[i];
  }
}

}  // namespace

std::string sha256(std::string_view bytes) {
  HashWords state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                     0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t whole = bytes.size() / blockSize * blockSize;
  for (std::size_t offset = 0; offset < whole; offset += blockSize) {
    takeBlock(state, data + offset);
  }
  // What is left, a bit that is set, zeros, and the number of bits.
  std::string rest(bytes.substr(whole));
  rest.push_back('\x80');
  rest.resize(rest.size() + (2 * blockSize - 8 - rest.size()) % blockSize, '\0');
  const std::uint64_t bits = std::uint64_t{bytes.size()} * 8;
  for (unsigned shift = 64; shift > 0; shift -= 8) {
    rest.push_back(static_cast<char>(bits >> (shift - 8)));
  }
  for (std::size_t offset = 0; offset < rest.size(); offset += blockSize) {
    takeBlock(state, reinterpret_cast<const unsigned char*>(rest.data()) + offset);
  }
  std::string digits;
  for (const std::uint32_t word : state) {
    for (unsigned shift = 32; shift > 0; shift -= 4) {
      digits.push_back("0123456789abcdef"[word >> (shift - 4) & 15U]);
    }
  }
  return digits;
}

}  // namespace corvane
