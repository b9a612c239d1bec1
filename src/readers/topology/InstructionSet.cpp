#include "readers/topology/InstructionSet.h"

#include <set>

namespace quenlor {
namespace {

// The kernel's names: pni is SSE3, abm LZCNT, xsave with the kernel's own support OSXSAVE.
struct Level {
  const char* name;
  const char* flags[12];
};
constexpr Level LEVELS[] = {
    {"x86-64-v1", {"lm", "cmov", "cx8", "fpu", "fxsr", "mmx", "syscall", "sse", "sse2"}},
    {"x86-64-v2", {"cx16", "lahf_lm", "popcnt", "pni", "sse4_1", "sse4_2", "ssse3"}},
    {"x86-64-v3", {"avx", "avx2", "bmi1", "bmi2", "f16c", "fma", "abm", "movbe", "xsave"}},
    {"x86-64-v4", {"avx512f", "avx512bw", "avx512cd", "avx512dq", "avx512vl"}},
};

std::set<std::string_view> wordsOf(std::string_view text) {
  std::set<std::string_view> words;
  while (!text.empty()) {
    const size_t end = text.find(' ');
    words.insert(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
  }
  return words;
}

bool hasAll(const std::set<std::string_view>& words, const Level& level) {
  for (const char* flag : level.flags) {
    if (flag != nullptr && words.count(flag) == 0) return false;
  }
  return true;
}

}  // namespace

const char* instructionSetOf(std::string_view flags) {
  const std::set<std::string_view> words = wordsOf(flags);
  const char* name = "";
  for (const Level& level : LEVELS) {
    if (!hasAll(words, level)) break;
    name = level.name;
  }
  return name;
}

const char* virtualizationExtensionOf(std::string_view flags) {
  const std::set<std::string_view> words = wordsOf(flags);
  if (words.count("vmx") != 0) return "vmx";
  return words.count("svm") != 0 ? "svm" : "";
}

}  // namespace quenlor
