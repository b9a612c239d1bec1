#include "groups/processor/RealSpeedValue.h"

#include "tables/VelTable.h"

namespace quenlor {

namespace {

// Measured megahertz above a full hundred, up to a limit, and the rating they stand for.
struct Rating {
  uint32_t upTo;
  uint32_t rated;
};

// Uneven, and meant so: recorded processor identities depend on every row.
constexpr Rating RATINGS[] = {{15, 0},  {29, 20}, {39, 33}, {57, 50}, {62, 60},
                              {70, 66}, {77, 75}, {85, 80}, {91, 90}, {99, 100}};

}  // namespace

uint32_t RealSpeedValue(uint32_t mhz) {
  if (mhz >= 71 && mhz <= 79) return 75;
  if (mhz >= 186 && mhz <= 189) return 188;
  const uint32_t rest = mhz % 100;
  const Rating* rating = RATINGS;
  while (rest > rating->upTo) ++rating;
  return saturateToUlong(uint64_t{mhz} - rest + rating->rated);
}

}  // namespace quenlor
