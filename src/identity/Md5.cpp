// MD5 message digest of RFC 1321, for identity values; not used for anything that must resist
// attack.
#include <algorithm>
#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>

#include "identity/Identity.h"

namespace quenlor {
namespace {

constexpr size_t kBlockSize = 64;
constexpr size_t kLengthOffset = 56;  // the bit count fills the last eight bytes of the last block
constexpr size_t kDigestSize = 16;
constexpr size_t kChecksumBufferSize = 36;

// floor(2^32 * abs(sin(i + 1))), i from 0.
constexpr uint32_t SINES[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

// Rotations of the four steps that repeat through each round.
constexpr int ROTATIONS[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

uint32_t readWord(const unsigned char* bytes) {
  return bytes[0] | static_cast<uint32_t>(bytes[1]) << 8 | static_cast<uint32_t>(bytes[2]) << 16 |
         static_cast<uint32_t>(bytes[3]) << 24;
}

void writeWord(uint32_t word, unsigned char* bytes) {
  for (int i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(word >> (8 * i));
}

uint32_t mix(unsigned round, uint32_t b, uint32_t c, uint32_t d) {
  switch (round) {
    case 0:
      return (b & c) | (~b & d);
    case 1:
      return (b & d) | (c & ~d);
    case 2:
      return b ^ c ^ d;
    default:
      return c ^ (b | ~d);
  }
}

unsigned wordIndex(unsigned round, unsigned step) {
  constexpr unsigned kFactors[4] = {1, 5, 3, 7};
  constexpr unsigned kOffsets[4] = {0, 1, 5, 0};
  return (kFactors[round] * step + kOffsets[round]) % 16;
}

void addBlock(uint32_t chain[4], const unsigned char* block) {
  uint32_t a = chain[0];
  uint32_t b = chain[1];
  uint32_t c = chain[2];
  uint32_t d = chain[3];
  for (unsigned step = 0; step < 64; ++step) {
    const unsigned round = step / 16;
    const uint32_t word = readWord(block + size_t{4} * wordIndex(round, step));
    const uint32_t sum = a + mix(round, b, c, d) + word + SINES[step];
    a = d;
    d = c;
    c = b;
    b += std::rotl(sum, ROTATIONS[round][step % 4]);
  }
  chain[0] += a;
  chain[1] += b;
  chain[2] += c;
  chain[3] += d;
}

uint64_t bitCount(const md5file_context& context) {
  return static_cast<uint64_t>(context.bitCount[1]) << 32 | context.bitCount[0];
}

size_t blockFill(const md5file_context& context) {
  return static_cast<size_t>(bitCount(context) / 8 % kBlockSize);
}

void hexDigits(const unsigned char digest[kDigestSize], char* text) {
  constexpr char kDigits[] = "0123456789abcdef";
  for (size_t i = 0; i < kDigestSize; ++i) {
    text[2 * i] = kDigits[digest[i] >> 4];
    text[2 * i + 1] = kDigits[digest[i] & 15];
  }
  text[2 * kDigestSize] = '\0';
}

}  // namespace

void md5file_clear(md5file_context* context) {
  *context = {{0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476}, {0, 0}, {}};
}

void md5file_addn(md5file_context* context, const unsigned char* bytes, size_t length) {
  size_t fill = blockFill(*context);
  const uint64_t bits = bitCount(*context) + static_cast<uint64_t>(length) * 8;
  context->bitCount[0] = static_cast<uint32_t>(bits);
  context->bitCount[1] = static_cast<uint32_t>(bits >> 32);
  while (length > 0) {
    const size_t piece = std::min(length, kBlockSize - fill);
    std::memcpy(context->block + fill, bytes, piece);
    bytes += piece;
    length -= piece;
    fill += piece;
    if (fill < kBlockSize) return;
    addBlock(context->chain, context->block);
    fill = 0;
  }
}

void md5file_add(md5file_context* context, unsigned char byte) { md5file_addn(context, &byte, 1); }

void md5file_hash(md5file_context* context, unsigned char digest[16]) {
  unsigned char length[8];
  writeWord(context->bitCount[0], length);
  writeWord(context->bitCount[1], length + 4);
  md5file_add(context, 0x80);
  while (blockFill(*context) != kLengthOffset) md5file_add(context, 0);
  md5file_addn(context, length, sizeof length);
  for (size_t i = 0; i < 4; ++i) writeWord(context->chain[i], digest + 4 * i);
  explicit_bzero(context, sizeof *context);
}

void md5file_sprint_hash(md5file_context* context, char text[33]) {
  unsigned char digest[kDigestSize];
  md5file_hash(context, digest);
  hexDigits(digest, text);
}

char* md5_checksum(const char* text) {
  if (text == nullptr || *text == '\0') return nullptr;
  auto* checksum = static_cast<char*>(std::calloc(kChecksumBufferSize, 1));
  if (checksum == nullptr) return nullptr;
  md5file_context context;
  md5file_clear(&context);
  md5file_addn(&context, reinterpret_cast<const unsigned char*>(text), std::strlen(text));
  md5file_sprint_hash(&context, checksum);
  return checksum;
}

std::string md5Text(const std::string& text) {
  char* checksum = md5_checksum(text.c_str());
  if (checksum == nullptr) return {};
  std::string result(checksum);
  std::free(checksum);
  return result;
}

namespace {

using Digest = std::array<unsigned char, kDigestSize>;
using Block = std::array<unsigned char, kBlockSize>;

// Digest of a block and what follows it.
Digest digestOf(const Block& start, const unsigned char* rest, size_t length) {
  md5file_context context;
  md5file_clear(&context);
  md5file_addn(&context, start.data(), start.size());
  md5file_addn(&context, rest, length);
  Digest digest{};
  md5file_hash(&context, digest.data());
  return digest;
}

Block keyBlock(const std::string& key, unsigned char pad) {
  Block block{};
  if (key.size() <= block.size()) {
    std::copy(key.begin(), key.end(), block.begin());
  } else {
    md5file_context context;
    md5file_clear(&context);
    md5file_addn(&context, reinterpret_cast<const unsigned char*>(key.data()), key.size());
    md5file_hash(&context, block.data());
  }
  for (unsigned char& byte : block) byte ^= pad;
  return block;
}

}  // namespace

std::string hmacMd5Text(const std::string& key, const std::string& message) {
  constexpr unsigned char kInnerPad = 0x36;
  constexpr unsigned char kOuterPad = 0x5C;
  const auto* bytes = reinterpret_cast<const unsigned char*>(message.data());
  const Digest inner = digestOf(keyBlock(key, kInnerPad), bytes, message.size());
  const Digest outer = digestOf(keyBlock(key, kOuterPad), inner.data(), inner.size());
  char text[2 * kDigestSize + 1];
  hexDigits(outer.data(), text);
  return text;
}

}  // namespace quenlor
