// Display: the displays on connected outputs, as they describe themselves.
#include <optional>
#include <string>

#include "groups/modern/Collectors.h"
#include "readers/display/Displays.h"

namespace quenlor {
namespace {

// Attribute ids.
constexpr uint32_t kConnector = 2;
constexpr uint32_t kAdapter = 3;
constexpr uint32_t kManufacturer = 4;
constexpr uint32_t kModel = 5;
constexpr uint32_t kSerialNumber = 6;
constexpr uint32_t kYear = 7;
constexpr uint32_t kWeek = 8;
constexpr uint32_t kWidth = 9;
constexpr uint32_t kHeight = 10;
constexpr uint32_t kPreferredMode = 11;

std::string modeText(const std::optional<DisplayMode>& mode) {
  if (!mode) return {};
  return std::to_string(mode->width) + "x" + std::to_string(mode->height);
}

void addDisplay(const Display& display, ModernTable& table) {
  const Edid& edid = display.edid;
  table.addNumberedRow()
      .textAlways(kConnector, display.connector)
      .text(kAdapter, display.adapter ? display.adapter->text() : std::string())
      .text(kManufacturer, edid.manufacturer)
      .text(kModel, edid.model)
      .text(kSerialNumber, edid.serialNumber)
      .ulong(kYear, edid.year)
      .ulong(kWeek, edid.week)
      .ulong(kWidth, edid.width)
      .ulong(kHeight, edid.height)
      .text(kPreferredMode, modeText(display.preferredMode));
}

}  // namespace

void collectDisplays(ModernScan&, ModernTable& table) {
  const Displays found = readDisplays();
  table.outcome().merge(found.outcome);
  for (const Display& display : found.displays) addDisplay(display, table);
}

}  // namespace quenlor
