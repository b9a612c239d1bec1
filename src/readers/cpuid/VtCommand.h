// Processor queries by command name: what the collectors know about packages, cores and threads.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

namespace quenlor {

// The result of one command; the first field is 0 for success.
struct VtExecInfo {
  int status = 0;
  std::map<std::pair<std::string, std::string>, std::string>
      values;  // (section, key); "": top level
};

// Runs a command by its name; the caller releases the result with vtFreeExecInfo. Null for a null
// or unknown name, and when neither the processor nor the kernel tells anything.
//
// "cpuid" gives the keys below. Its status is 1 when the CPUID instruction told nothing; the counts
// then still come from the kernel. A key whose value is unknown is absent.
//
//   section               key                    value
//   (top level)           PhysicalPackageCount   physical packages (sockets in use)
//   (top level)           ActiveCoreCount        physical cores with at least one online CPU
//   Processor             Manufacturer           the maker's usual name ("Intel", "AMD"), else the
//                                                CPUID vendor text
//   Processor             Family                 product family of the brand ("Xeon", "EPYC"),
//                                                else "Family n" with the decimal CPUID family
//   Processor             Type                   CPUID processor type: "Original OEM Processor",
//                                                "OverDrive Processor", "Dual Processor",
//                                                "Reserved"
//   Processor             CpuClockMHz            nominal clock in MHz: CPUID leaf 0x16, else the
//                                                brand string, else /proc/cpuinfo
//   Processor.L2Cache     Size                   one level-2 cache in kB (1024 bytes)
//   Processor.CPUID       BrandString            brand string without its surrounding blanks
//   Processor.CPUID       Signature              CPUID leaf 1 EAX, eight upper-case hex digits
//   Processor.CPUID       CorePerPackageCount    cores of the largest package, offline ones as far
//                                                as the processor tells them
//   Processor.CPUID       HtPerCoreCount         threads of the largest core, likewise
//   Processor.Features    one per feature        1 or 0; "LM": 64-bit long mode of any maker;
//                                                "IEM64T": the same, of Intel processors only
//
// The counts describe the whole machine: neither the caller's affinity mask nor the CPU that the
// command happens to run on changes them.
VtExecInfo* vtExecCommand(const char* command);
void vtFreeExecInfo(VtExecInfo* result);  // null is allowed

struct VtExecInfoDeleter {
  void operator()(VtExecInfo* result) const { vtFreeExecInfo(result); }
};
using VtResult = std::unique_ptr<VtExecInfo, VtExecInfoDeleter>;

// Text of a key, valid as long as the result (or the default, when that is returned). A null
// section is the top level; a null result or an absent key gives the default.
const char* vtGetValue(const VtExecInfo* result, const char* section, const char* key,
                       const char* defaultValue);
// The same as a decimal integer; a text that is none gives the default.
int vtGetValue(const VtExecInfo* result, const char* section, const char* key, int defaultValue);

}  // namespace quenlor
