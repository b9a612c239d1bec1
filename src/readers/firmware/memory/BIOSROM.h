// Copies of physical memory, for readers that do not want to hold a mapping.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quenlor {

class BIOSROM {
 public:
  static constexpr int kReadFailed = 37;

  // Copies count bytes of physical memory from physAddr on into buf, through a mapping of
  // "/dev/mem" or, where that cannot be mapped, by reading it. size is ignored. 0, or kReadFailed.
  static int getPhysMem(void* buf, int size, uint64_t physAddr, size_t count);
};

}  // namespace quenlor
