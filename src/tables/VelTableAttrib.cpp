// One typed value in its block, and the storage forms of texts and times.
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string>

#include "tables/Render.h"
#include "tables/ValueBlock.h"
#include "tables/VelTable.h"

namespace quenlor {
namespace {

static_assert(sizeof(wchar_t) == 4, "stored strings hold 32-bit characters");

constexpr uint32_t kNoBlockId = 0;
constexpr uint32_t kNoBlockType = 0x80000000;
// The longest contents whose block length still fits its 32 bits.
constexpr uint32_t kMaxOctets = 0xFFFFFFFF - (kBlockHeaderSize + 4);
constexpr uint32_t kMaxTextBytes = (0xFFFFFFFF - (kBlockHeaderSize + 8)) / 4;

// A new block with its header; the value is zero. Owned by the caller (delete[]).
unsigned char* newBlock(uint32_t id, uint32_t type, uint32_t valueSize) {
  const uint32_t header[] = {static_cast<uint32_t>(kBlockHeaderSize) + valueSize, id, type};
  static_assert(sizeof header == kBlockHeaderSize);
  auto* block = new unsigned char[header[0]]();
  std::memcpy(block, header, sizeof header);
  return block;
}

template <class Number>
unsigned char* newNumberBlock(uint32_t id, VelType type, Number value) {
  unsigned char* block = newBlock(id, type, sizeof value);
  std::memcpy(block + kBlockHeaderSize, &value, sizeof value);
  return block;
}

uint32_t textLength(const char* text) {
  return text == nullptr ? 0 : static_cast<uint32_t>(strnlen(text, kMaxTextBytes));
}

// Stands for a byte that is no text in the locale. The "C" locale has no U+FFFD.
wchar_t replacementCharacter() {
  constexpr wchar_t kReplacement = L'\xFFFD';
  char bytes[MB_LEN_MAX];
  std::mbstate_t state{};
  const bool expressible = std::wcrtomb(bytes, kReplacement, &state) != static_cast<size_t>(-1);
  return expressible ? kReplacement : L'?';
}

// Converts character by character: a byte that is no text costs that byte, not the rest of the
// value, since agents run without LANG on machines whose texts are UTF-8. Some encodings make two
// characters of one sequence and give the second with no byte used, possibly at the end of the
// text; those of JIS X 0213 would give it for ever. No more characters than bytes are stored, which
// cuts texts only in an encoding (TSCII) that has two characters for a single byte.
std::wstring toWide(const char* text, size_t length) {
  std::wstring wide;
  wide.reserve(length);
  const char* const end = text + length;
  std::mbstate_t state{};
  bool isSecond = false;  // the last character came with no byte used
  while (text <= end && wide.size() < length) {
    wchar_t character = 0;
    const auto left = static_cast<size_t>(end - text) + 1;  // with the terminator
    size_t used = std::mbrtowc(&character, text, left, &state);
    if (used == 0 && character == L'\0') break;
    if (used == 0 && isSecond) {
      isSecond = false;
      state = {};
      continue;
    }
    isSecond = used == 0;
    if (used > left) {  // no text, or cut off in the middle
      character = replacementCharacter();
      used = 1;
      state = {};
    }
    wide += character;
    text += used;
  }
  return wide;
}

}  // namespace

VelTableAttrib::VelTableAttrib(uint32_t id, unsigned char value)
    : m_block(newNumberBlock(id, VEL_UCHAR, value)) {}
VelTableAttrib::VelTableAttrib(uint32_t id, unsigned short value)
    : m_block(newNumberBlock(id, VEL_USHORT, value)) {}
VelTableAttrib::VelTableAttrib(uint32_t id, uint32_t value)
    : m_block(newNumberBlock(id, VEL_ULONG, value)) {}
VelTableAttrib::VelTableAttrib(uint32_t id, _uquad value)
    : m_block(newNumberBlock(id, VEL_UQUAD, value)) {}
VelTableAttrib::VelTableAttrib(uint32_t id, float value)
    : m_block(newNumberBlock(id, VEL_FLOAT, value)) {}
VelTableAttrib::VelTableAttrib(uint32_t id, double value)
    : m_block(newNumberBlock(id, VEL_DOUBLE, value)) {}
VelTableAttrib::VelTableAttrib(uint32_t id, unsigned long long value)
    : m_block(newNumberBlock(id, VEL_ULONGLONG, value)) {}
VelTableAttrib::VelTableAttrib(uint32_t id, long long value)
    : m_block(newNumberBlock(id, VEL_LONGLONG, value)) {}

VelTableAttrib::VelTableAttrib(uint32_t id, const char* text)
    : m_block(newBlock(id, VEL_STRING, SizeAsVelString(text))) {
  StringToVelString(text, m_block + kBlockHeaderSize);
}

VelTableAttrib::VelTableAttrib(uint32_t id, std::u32string_view text) {
  const auto length = static_cast<uint32_t>(std::min<size_t>(text.size(), kMaxTextBytes));
  const uint32_t count = length + 1;  // with the terminator
  m_block = newBlock(id, VEL_STRING, static_cast<uint32_t>(sizeof count) * (count + 1));
  std::memcpy(m_block + kBlockHeaderSize, &count, sizeof count);
  std::memcpy(m_block + kBlockHeaderSize + sizeof count, text.data(), length * sizeof(char32_t));
}

VelTableAttrib::VelTableAttrib(uint32_t id, const unsigned char* bytes, uint32_t length) {
  const uint32_t count = bytes == nullptr ? 0 : std::min(length, kMaxOctets);
  m_block = newBlock(id, VEL_OCTETSTRING, static_cast<uint32_t>(sizeof count) + count);
  std::memcpy(m_block + kBlockHeaderSize, &count, sizeof count);
  if (count != 0) std::memcpy(m_block + kBlockHeaderSize + sizeof count, bytes, count);
}

VelTableAttrib::VelTableAttrib(uint32_t id, long seconds)
    : m_block(newBlock(id, VEL_DATETIME, kDateTimeSize)) {
  char characters[kDateTimeSize];
  TimeToVelDateTime(seconds, characters);
  std::memcpy(m_block + kBlockHeaderSize, characters, sizeof characters);
}

VelTableAttrib::~VelTableAttrib() {
  delete[] m_block;
  m_block = nullptr;
}

uint32_t VelTableAttrib::getId() const {
  return m_block == nullptr ? kNoBlockId : blockAttribId(m_block);
}

uint32_t VelTableAttrib::getType() const {
  return m_block == nullptr ? kNoBlockType : blockType(m_block);
}

void VelTableAttrib::toString() const {
  if (m_block != nullptr) PrintVelAttribValue(m_block);
}

uint32_t SizeAsVelString(const char* text) { return 4 * textLength(text) + 8; }

void StringToVelString(const char* text, unsigned char* destination) {
  const std::wstring wide = toWide(text, textLength(text));
  const auto count = static_cast<uint32_t>(wide.size()) + 1;
  std::memcpy(destination, &count, sizeof count);
  std::memcpy(destination + sizeof count, wide.c_str(), count * sizeof(wchar_t));
}

uint32_t SizeofVelString(const unsigned char* velString) {
  return readNumber<uint32_t>(velString) * 4 + 4;
}

void TimeToVelDateTime(time_t seconds, char* destination) {
  std::memset(destination, 0, kDateTimeSize);
  struct tm local;
  if (localtime_r(&seconds, &local) == nullptr) return;
  const long year = 1900L + local.tm_year;
  if (year < 0 || year > 9999) return;  // 26 characters cannot hold it
  char text[96];
  std::snprintf(text, sizeof text, "%04ld-%02d-%02d-%02d.%02d.%02d.000000", year, local.tm_mon + 1,
                local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
  std::memcpy(destination, text, kDateTimeSize);
}

}  // namespace quenlor
