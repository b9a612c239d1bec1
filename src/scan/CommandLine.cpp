#include "scan/CommandLine.h"

#include <cstdio>
#include <cstring>
#include <optional>

#include "base/ExitStatus.h"

namespace quenlor {
namespace {

// Names of 256 bytes and more are refused: every reader of these names has always had that limit.
constexpr size_t kMaxNameLength = 255;

// Walks the arguments; each handler returns a status when the program has to end.
class OptionReader {
 public:
  OptionReader(int argc, const char* const* argv, const std::function<int()>& buildEntries)
      : m_argc(argc), m_argv(argv), m_buildEntries(buildEntries) {}

  CommandLineResult read() {
    for (m_index = 1; m_index < m_argc; ++m_index) {
      const std::optional<int> status = readOption(m_argv[m_index]);
      if (status) return {true, *status, {}};
    }
    return {false, kExitSuccess, m_options};
  }

 private:
  static std::optional<int> usage(int status = kExitUsage) {
    printUsage();
    return status;
  }

  std::optional<int> readOption(const char* argument) {
    if (argument[0] != '-' || std::strlen(argument) != 2) return usage();
    switch (argument[1]) {
      case 'c':
        return readName(m_options.configFile, m_seenC);
      case 'o':
        return readName(m_options.outputFile, m_seenO);
      case 'm':
        m_options.xml = false;
        return once(m_seenM);
      case 'w':
        m_options.wOption = true;
        m_listOrW = true;
        return once(m_seenW);
      case 'l':
        return readList();
      case 'h':
        return usage(kExitSuccess);
      default:
        return usage();
    }
  }

  static std::optional<int> once(bool& seen) {
    if (seen) return usage();
    seen = true;
    return std::nullopt;
  }

  std::optional<int> readName(std::string& name, bool& seen) {
    if (m_index + 1 >= m_argc) return usage();
    if (const auto status = once(seen)) return status;
    name = m_argv[++m_index];
    if (name.size() > kMaxNameLength) return usage();
    return std::nullopt;
  }

  std::optional<int> readList() {
    if (const auto status = once(m_listOrW)) return status;
    m_options.list = true;
    if (m_buildEntries() < 0) return kExitListBuild;
    return std::nullopt;
  }

  int m_argc;
  const char* const* m_argv;
  const std::function<int()>& m_buildEntries;
  int m_index = 0;
  CommandLine m_options;
  bool m_seenC = false;
  bool m_seenO = false;
  bool m_seenM = false;
  bool m_seenW = false;
  bool m_listOrW = false;
};

}  // namespace

CommandLineResult parseCommandLine(int argc, const char* const* argv,
                                   const std::function<int()>& buildEntries) {
  return OptionReader(argc, argv, buildEntries).read();
}

void printUsage() {
  std::fputs(
      "Usage:  quenlor"
      " [-c <config_file>] [-o <output_file>] [-m]"
      "\nwhere:\n"
      "  -c <config_file> Specifies the configuration file that lists the components\n"
      "                   to scan for.\n"
      "  -o              Specifies the output file name (default stdout).\n"
      "  -m              Generate the MIF output for hardware scan.\n",
      stderr);
}

}  // namespace quenlor
