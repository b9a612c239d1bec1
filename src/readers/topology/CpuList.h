// The two forms in which the kernel writes a set of processors or nodes (lib/bitmap.c).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quenlor {

// Numbers, ascending, each once.
using CpuList = std::vector<uint32_t>;

// A number above this is none of a processor: kernels are built for 8192 at most.
inline constexpr uint32_t kLargestCpuNumber = 65535;

// "0-3,8,10-11" as numbers; blanks and a line end around it are no matter, an empty text is an
// empty set. Nothing for any other text and for numbers above kLargestCpuNumber.
std::optional<CpuList> parseCpuList(std::string_view text);

// "00000001,0000000f": words of 32 bits, the most significant first. Nothing for any other text.
std::optional<CpuList> parseCpuMap(std::string_view text);

}  // namespace quenlor
