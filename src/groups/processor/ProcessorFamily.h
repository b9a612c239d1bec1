// Names of processor families, from the processor descriptions of the hardware configuration file.
#pragma once

#include <memory>
#include <vector>

#include "base/String.h"
#include "factory/GroupFactory.h"

namespace quenlor {

// Family name by the descriptions that the group factory holds; "Unknown" when none fits. The
// vendor and model-name texts are those of /proc/cpuinfo.
String getEnum(const char* vendor, int chipFamily, int chipModel, const char* modelName);

// The same by the given descriptions; the first that fits wins.
String familyNameIn(const std::vector<std::unique_ptr<ProcessorInfo>>& descriptions,
                    const char* vendor, int chipFamily, int chipModel, const char* modelName);

}  // namespace quenlor
