// EDIDs of any content, and the texts that the kernel has beside them. The sum is also made right,
// so that what lies behind it is reached.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "readers/battery/Batteries.h"
#include "readers/display/Displays.h"
#include "readers/display/Edid.h"

namespace {

using namespace quenlor;

void require(bool condition) {
  if (!condition) std::abort();
}

void checkEdid(const std::string& bytes) {
  const auto edid = parseEdid(bytes);
  if (!edid) return;
  require(edid->manufacturer.empty() || edid->manufacturer.size() == 3);
  require(edid->model.size() <= 39 && edid->serialNumber.size() <= 39);  // 13 characters of UTF-8
  require(!edid->year || (*edid->year > 1990 && *edid->year <= 2245));
  require(!edid->week || (edid->year && *edid->week >= 1 && *edid->week <= 54));
  require(edid->width.has_value() == edid->height.has_value());
  require(!edid->preferredMode || edid->preferredMode->width <= 4095);
}

std::string withRightSum(std::string bytes) {
  if (bytes.size() < 128) bytes.resize(128);
  bytes.replace(0, 8, std::string("\x00\xFF\xFF\xFF\xFF\xFF\xFF\x00", 8));
  bytes[18] = 1;
  unsigned sum = 0;
  for (size_t i = 0; i < 127; ++i) sum += static_cast<uint8_t>(bytes[i]);
  bytes[127] = static_cast<char>(256 - sum % 256);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  checkEdid(bytes);
  require(parseEdid(withRightSum(bytes)).has_value());
  checkEdid(withRightSum(bytes));
  connectorOf(bytes);
  parseFirstMode(bytes);
  const auto battery = parseBattery("BAT0", bytes);
  require(!battery || !battery->health || *battery->health <= 100);
  return 0;
}
