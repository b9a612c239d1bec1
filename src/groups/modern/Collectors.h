// The modern source of every group, each beside the group's classic one.
#pragma once

#include "groups/modern/ModernGroup.h"

namespace quenlor {

void collectScanResult(ModernScan& scan, ModernTable& table);

}  // namespace quenlor
