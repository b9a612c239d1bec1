// The order of kernel names in which people count them: sda, sdb, ..., sdz, sdaa; nvme0n1 before
// nvme10n1; eth2 before eth10.
#pragma once

#include <string_view>

namespace quenlor {

// A strict total order over all byte strings, the same in every locale: runs of decimal digits
// compare by value, and so do the letters by which disks are counted (sdz, sdaa), in a path's parts
// too (/dev/sdz, /dev/sdaa). All else compares byte by byte.
bool naturalLess(std::string_view left, std::string_view right);

}  // namespace quenlor
