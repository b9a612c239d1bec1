// When the system was installed: no interface tells, so the oldest plausible evidence does.
#pragma once

#include <ctime>
#include <optional>
#include <vector>

namespace quenlor {

// The oldest of the dates that is not before 2000 (images carry 1970, or their builder's clock) and
// not after `now`; seconds since the epoch.
std::optional<time_t> oldestPlausible(const std::vector<time_t>& dates, time_t now);

// Birth of the root file system, times of /etc/machine-id, of the ssh host keys and of the
// installers' logs; by statx, nothing is opened.
std::optional<time_t> readInstallDate(time_t now);

}  // namespace quenlor
