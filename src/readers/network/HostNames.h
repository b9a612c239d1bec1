// Host names of addresses, by reverse look-up.
#pragma once

#include <netinet/in.h>

#include <optional>
#include <string>
#include <vector>

namespace quenlor {

// The official name of each address, in the same order; nothing where there is none. All are asked
// at once, since each takes tens of seconds when no name server answers. All threads are joined.
std::vector<std::optional<std::string>> hostNamesOf(const std::vector<in_addr>& addresses);

}  // namespace quenlor
