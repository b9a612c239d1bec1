// Attributes of the group Processor that tell single feature bits.
#pragma once

#include <cstdint>

namespace quenlor {

// Yes when any of the bits of CPUID leaf 1 EDX is set.
struct FlagAttribute {
  uint32_t id;
  uint32_t mask;
};

constexpr uint32_t featureBit(unsigned number) { return 1u << number; }

inline constexpr FlagAttribute FLAG_ATTRIBUTES[] = {
    {14, featureBit(0)},  {15, featureBit(1)},  {16, featureBit(2)},
    {17, featureBit(3)},  {18, featureBit(4)},  {19, featureBit(5)},
    {20, featureBit(6)},  {21, featureBit(7)},  {22, featureBit(8)},
    {23, featureBit(9)},  {24, featureBit(11)}, {25, featureBit(12)},
    {26, featureBit(13)}, {27, featureBit(14)}, {28, featureBit(15)},
    {29, featureBit(16)}, {30, featureBit(17)}, {31, featureBit(18)},
    {32, featureBit(23)}, {33, featureBit(24)}, {34, featureBit(25) | featureBit(26)},
};

}  // namespace quenlor
