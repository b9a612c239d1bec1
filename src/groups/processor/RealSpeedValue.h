// Nominal clock speeds.
#pragma once

#include <cstdint>

namespace quenlor {

// The rating, in MHz, under which a processor with the measured clock (MHz) is sold: 2793 is 2800,
// 733 stays 733.
uint32_t RealSpeedValue(uint32_t mhz);

}  // namespace quenlor
