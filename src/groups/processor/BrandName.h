// A processor's brand string as a name of its family.
#pragma once

#include <string>

namespace quenlor {

// Without the marks "(R)", "(TM)" and "(C)" in any case and without a speed behind "@"; blanks are
// merged. "Intel(R) Xeon(R) CPU E5-2680 v4 @ 2.40GHz" is "Intel Xeon CPU E5-2680 v4".
std::string plainBrandName(const std::string& brand);

}  // namespace quenlor
