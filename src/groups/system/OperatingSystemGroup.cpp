#include "groups/system/OperatingSystemGroup.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"
#include "readers/system/Release.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/OperatingSystemGroup.cpp";

// The first of these that exists names the distribution.
constexpr std::array kReleaseFiles = {"/etc/redhat-release", "/etc/turbolinux-release",
                                      "/etc/SuSE-release", "/etc/UnitedLinux-release"};
constexpr const char* kCalderaMarker = "/etc/.installed";
constexpr const char* kCalderaIssue = "/etc/.issue";
constexpr const char* kCaldera = "Caldera Linux";
constexpr const char* kLinux = "Linux";
constexpr size_t kReleaseTextLimit = 254;
constexpr size_t kIssueLineSize = 256;
constexpr size_t kArchLimit = 19;

// Attribute ids.
constexpr uint32_t kName = 1;
constexpr uint32_t kType = 2;
constexpr uint32_t kMajorVersion = 3;
constexpr uint32_t kMinorVersion = 4;
constexpr uint32_t kSubVersion = 5;
constexpr uint32_t kOsArch = 10;
constexpr uint32_t kOsKernelMode = 11;
constexpr uint32_t kDescription = 12;
constexpr uint32_t kMessagesLocale = 15;

constexpr uint32_t kTypeLinux = 37;

KernelRelease readKernelRelease(CcLogWrapper* log, const TraceFunction& at) {
  struct utsname name = {};
  if (host().uname(&name) != 0) return {};
  log->traceMAX(at(), "hardware %s %s", "uname name=", name.sysname);
  log->traceMAX(at(), "hardware %s %s", "node=", name.nodename);
  log->traceMAX(at(), "hardware %s %s", "rel=", name.release);
  log->traceMAX(at(), "hardware %s %s", "ver=", name.version);
  log->traceMAX(at(), "hardware %s %s", "mach=", name.machine);
  return parseKernelRelease(name.release);
}

// Text of the first release file that can be opened, folded; false when there is none.
bool readReleaseFile(std::string& text) {
  for (const char* path : kReleaseFiles) {
    const FileStream file = openFile(path);
    if (!file) continue;
    std::array<char, kReleaseTextLimit> buffer;
    const size_t length = std::fread(buffer.data(), 1, buffer.size(), file.get());
    text = foldControlCharacters(std::string(buffer.data(), length));
    return true;
  }
  return false;
}

bool isCaldera() {
  struct stat ignored = {};
  if (host().stat(kCalderaMarker, &ignored) == 0) return true;
  const FileStream issue = openFile(kCalderaIssue);
  LineReader reader(issue.get(), kIssueLineSize);
  while (reader.next()) {
    if (std::strstr(reader.line(), "Caldera") != nullptr) return true;
  }
  return false;
}

std::string distributionName(CcLogWrapper* log, const TraceFunction& at) {
  std::string text;
  if (readReleaseFile(text)) {
    log->traceMAX(at(), "hardware %s %s", "OS Description retrieved=", text.c_str());
  } else if (isCaldera()) {
    text = kCaldera;
  }
  return text.empty() ? kLinux : text;
}

std::string machineArchitecture() {
  struct utsname name = {};
  if (host().uname(&name) != 0) return {};
  return std::string(name.machine).substr(0, kArchLimit);
}

const char* messagesLocale(CcLogWrapper* log, const TraceFunction& at) {
  const char* locale = host().setlocale(LC_MESSAGES, "");
  if (locale == nullptr) {
    log->traceMIN(at(), "hardware setlocale returned NULL");
    locale = host().setlocale(LC_MESSAGES, nullptr);
  }
  return locale;
}

}  // namespace

VelTable* OperatingSystemGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "OperatingSystemGroup");

  const KernelRelease kernel = readKernelRelease(log, at);
  const std::string name = distributionName(log, at);
  const std::string arch = machineArchitecture();
  // No kernel of this architecture tells its mode, so the attribute is there and empty.
  const char* kernelMode = "";
  log->traceMAX(at(), "hardware %s %s", "Arch retrieved=", arch.c_str());
  log->traceMAX(at(), "hardware %s %s", "Kernel mode retrieved=", kernelMode);

  auto row = std::make_unique<VelTableRow>();
  addText(*row, kName, name);
  addUlong(*row, kType, kTypeLinux);
  addUlong(*row, kMajorVersion, kernel.majorVersion);
  addUlong(*row, kMinorVersion, kernel.minorVersion);
  addText(*row, kSubVersion, kernel.subVersion);
  addText(*row, kOsArch, arch);
  addText(*row, kOsKernelMode, kernelMode);
  addText(*row, kDescription, name);
  addText(*row, kMessagesLocale, messagesLocale(log, at));

  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  table->addRow(row.release());
  log->traceMidExit(at(), "hardware %s", "OperatingSystemGroup");
  return table.release();
}

}  // namespace quenlor
