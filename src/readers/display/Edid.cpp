#include "readers/display/Edid.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "base/Text.h"

namespace quenlor {
namespace {

constexpr size_t kBlock = 128;
constexpr std::string_view kHeader("\x00\xFF\xFF\xFF\xFF\xFF\xFF\x00", 8);
constexpr std::array<size_t, 4> DESCRIPTORS = {54, 72, 90, 108};
constexpr size_t kDescriptor = 18;

constexpr uint8_t kSerialText = 0xFF;
constexpr uint8_t kFreeText = 0xFE;
constexpr uint8_t kNameText = 0xFC;

constexpr uint32_t kFirstYear = 1990;
constexpr uint8_t kModelYear = 0xFF;
constexpr uint8_t kLastWeek = 54;
// What makers leave in the number's place when they fill none in.
constexpr uint32_t kFillerNumber = 0x01010101;
// A timing tells the picture's size in mm, the block in cm. Where they differ by more, the timing
// holds a ratio.
constexpr uint32_t kRounding = 10;

// One block, or a part of it, of which only bytes within are asked for.
class Bytes {
 public:
  explicit Bytes(std::string_view bytes) : m_bytes(bytes) {}
  uint8_t at(size_t offset) const {
    return offset < m_bytes.size() ? static_cast<uint8_t>(m_bytes[offset]) : uint8_t{0};
  }
  std::string_view part(size_t offset, size_t size) const { return m_bytes.substr(offset, size); }

 private:
  std::string_view m_bytes;
};

bool isBaseBlock(std::string_view bytes) {
  if (bytes.size() < kBlock || !bytes.starts_with(kHeader)) return false;
  const std::string_view block = bytes.substr(0, kBlock);
  const unsigned sum = std::accumulate(block.begin(), block.end(), 0u, [](unsigned left, char c) {
    return left + static_cast<uint8_t>(c);
  });
  constexpr size_t kVersion = 18;
  return sum % 256 == 0 && block[kVersion] == 1;
}

// Three letters of five bits each; A is 1.
std::string manufacturerOf(const Bytes& block) {
  const unsigned word = block.at(8) * 256u + block.at(9);
  std::string letters;
  for (const unsigned shift : {10u, 5u, 0u}) {
    const unsigned letter = word >> shift & 0x1F;
    if (letter < 1 || letter > 26) return {};
    letters += static_cast<char>('A' + letter - 1);
  }
  return letters;
}

uint32_t numberOf(const Bytes& block) {
  const uint32_t low = block.at(12) | uint32_t{block.at(13)} << 8;
  return low | uint32_t{block.at(14)} << 16 | uint32_t{block.at(15)} << 24;
}

void takeDate(const Bytes& block, Edid& edid) {
  const uint8_t week = block.at(16);
  const uint8_t year = block.at(17);
  if (year == 0) return;  // nobody filled it in; the standard is younger
  edid.year = kFirstYear + year;
  if (week != kModelYear && week >= 1 && week <= kLastWeek) edid.week = week;
}

// The first two bytes tell: the third one of a timing may be 0, too.
bool isTiming(const Bytes& descriptor) { return descriptor.at(0) != 0 || descriptor.at(1) != 0; }

std::optional<uint8_t> tagOf(const Bytes& descriptor) {
  if (isTiming(descriptor) || descriptor.at(2) != 0) return {};
  return descriptor.at(3);
}

// Ended by a line feed, padded with blanks.
std::string textOf(const Bytes& descriptor) {
  const std::string_view text = descriptor.part(5, kDescriptor - 5);
  return utf8OfCodePage437(
      trimmed(text.substr(0, text.find_first_of(std::string_view("\n\0", 2)))));
}

// Eight low bits at one place, four high ones in the upper half of another.
uint32_t twelveBits(const Bytes& timing, size_t low, uint32_t high) {
  return timing.at(low) | high << 8;
}

std::optional<DisplayMode> modeOf(const Bytes& timing) {
  constexpr uint8_t kInterlaced = 0x80;
  DisplayMode mode{twelveBits(timing, 2, timing.at(4) >> 4u),
                   twelveBits(timing, 5, timing.at(7) >> 4u)};
  // An interlaced timing counts the lines of one of its two half pictures.
  if ((timing.at(17) & kInterlaced) != 0) mode.height *= 2;
  return mode.width != 0 && mode.height != 0 ? std::optional(mode) : std::nullopt;
}

uint32_t refined(uint32_t centimetres, uint32_t millimetres) {
  const uint32_t coarse = centimetres * 10;
  const uint32_t difference = std::max(coarse, millimetres) - std::min(coarse, millimetres);
  return difference <= kRounding ? millimetres : coarse;
}

void takeSize(const Bytes& block, const Bytes& timing, Edid& edid) {
  const uint32_t width = block.at(21);
  const uint32_t height = block.at(22);
  if (width == 0 || height == 0) return;
  edid.width = refined(width, twelveBits(timing, 12, timing.at(14) >> 4u));
  edid.height = refined(height, twelveBits(timing, 13, timing.at(14) & 0xFu));
}

void takeTexts(const Bytes& block, Edid& edid) {
  std::string panel;
  for (const size_t offset : DESCRIPTORS) {
    const Bytes descriptor(block.part(offset, kDescriptor));
    const auto tag = tagOf(descriptor);
    if (tag == kSerialText && edid.serialNumber.empty()) edid.serialNumber = textOf(descriptor);
    if (tag == kNameText && edid.model.empty()) edid.model = textOf(descriptor);
    if (tag == kFreeText) panel = textOf(descriptor);
  }
  // Panels of laptops have no name, but free texts: the maker's first, the panel's last.
  if (edid.model.empty()) edid.model = panel;
}

}  // namespace

std::optional<Edid> parseEdid(std::string_view bytes) {
  if (!isBaseBlock(bytes)) return {};
  const Bytes block(bytes.substr(0, kBlock));
  Edid edid;
  edid.manufacturer = manufacturerOf(block);
  takeDate(block, edid);
  takeTexts(block, edid);
  const uint32_t number = numberOf(block);
  if (edid.serialNumber.empty() && number != 0 && number != kFillerNumber) {
    edid.serialNumber = std::to_string(number);
  }
  const Bytes first(block.part(DESCRIPTORS[0], kDescriptor));
  const Bytes timing = isTiming(first) ? first : Bytes({});
  takeSize(block, timing, edid);
  edid.preferredMode = modeOf(timing);
  return edid;
}

}  // namespace quenlor
