// /proc/cpuinfo as x86 kernels write it (arch/x86/kernel/cpu/proc.c): one block per online
// processor.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor {

// One block. What the kernel does not print, or prints as no number, is absent.
struct CpuinfoBlock {
  std::optional<uint32_t> processor;
  std::optional<uint32_t> physicalId, coreId;
  std::optional<uint32_t> siblings, cores;  // online threads and booted cores of the package
  std::optional<uint32_t> family, model, stepping;
  std::string vendor, modelName, microcode;
  std::string flags;  // of further blocks with one physical id empty: a kilobyte each
};

// Takes the file in pieces of any size.
class CpuinfoParser {
 public:
  void take(std::string_view piece);
  // Ends a last line without a line end.
  void finish();
  const std::vector<CpuinfoBlock>& blocks() const { return m_blocks; }
  // How many physical ids have a block with flags, which come last of what is taken.
  size_t knownPackages() const { return m_packages.size(); }

 private:
  void takeLine(std::string_view line);
  void takeFlags(std::string_view value);

  std::string m_pending;
  std::vector<CpuinfoBlock> m_blocks;
  std::set<uint32_t> m_packages;  // physical ids whose flags were taken
};

// The block that tells of a package: of its physical id, else of one of its processors. Null when
// there is none.
const CpuinfoBlock* blockOfPackage(const std::vector<CpuinfoBlock>& blocks,
                                   std::optional<uint32_t> physicalId,
                                   const std::vector<uint32_t>& processors);

}  // namespace quenlor
