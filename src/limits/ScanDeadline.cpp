#include "limits/ScanDeadline.h"

#include <algorithm>

#include "host/ScanState.h"
#include "limits/ConfiguredLimit.h"

namespace quenlor {
namespace {

constexpr int64_t kIdleLimit = 900000;
constexpr int64_t kBeyondConfiguredLimit = 60000;
constexpr int64_t kBeyondScanLimit = 5000;

}  // namespace

void announceClassicDeadline() {
  const int64_t configured = configuredLimit().value_or(0);
  scanState().idleLimit = std::max(kIdleLimit, configured + kBeyondConfiguredLimit);
  scanState().scanLimit = 0;
}

void announceScanDeadline(int64_t scanLimit) {
  scanState().idleLimit = std::max(kIdleLimit, scanLimit + kBeyondScanLimit);
  scanState().scanLimit = scanLimit + kBeyondScanLimit;
}

}  // namespace quenlor
