#include "readers/virtualization/retriever.h"

#include <sys/wait.h>

#include <cctype>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <utility>

#include "base/Text.h"
#include "host/Handles.h"
#include "log/CcLogWrapper.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/enabler/retriever.cpp";

constexpr const char* kNodeId = "dov_node_id";
constexpr const char* kNodeCapacity = "dov_node_capacity";
constexpr const char* kVmId = "dov_vm_id";
constexpr const char* kVmCapacity = "dov_vm_capacity";
constexpr const char* kPhysicalProcessor = "dov_physical_processor";
constexpr const char* kNodeManufacturer = "dov_node_man";
constexpr const char* kNodeProduct = "dov_node_prod";
constexpr const char* kNodeVersion = "dov_node_ver";
constexpr const char* kNodeType = "dov_node_type";

// What the agent says of a product, version or type that it does not know.
constexpr const char* kNone = "None";

constexpr size_t kFirstLineSize = 300;
// No agent text comes near it; a command that never ends its line shall not fill the memory.
constexpr size_t kMaxLineSize = size_t{1} << 20;

// Once a command of the agent had to be killed before it said a word, waiting for the next ones as
// long would only multiply the delay: the groups of one scan read a dozen keys.
bool agentIsStuck = false;

// An agent that has told its line has nothing more to do.
constexpr std::chrono::seconds kTimeAfterLine{1};

// The first line with its newline; nothing when there is no output. The rest of the output is read
// and dropped: a child that writes into a closed pipe would end with a code that is not its own.
std::optional<std::string> readFirstLine(CommandStream& command) {
  FILE* stream = command.get();
  std::string line;
  line.reserve(kFirstLineSize);
  bool ended = false;
  bool any = false;
  for (int character = std::getc(stream); character != EOF; character = std::getc(stream)) {
    any = true;
    if (!ended && line.size() < kMaxLineSize) line.push_back(static_cast<char>(character));
    if (character == '\n' && !std::exchange(ended, true)) command.endWithin(kTimeAfterLine);
  }
  if (!any) return std::nullopt;
  return line.substr(0, line.find('\0'));
}

// The first character always stays, even when it is blank: an empty value arrives as a newline.
void stripTrailingBlanks(std::string& text) {
  while (text.size() > 1 && std::isspace(static_cast<unsigned char>(text.back())) != 0) {
    text.pop_back();
  }
}

int exitCodeOf(int waitStatus) {
  return static_cast<int8_t>((static_cast<unsigned>(waitStatus) >> 8) & 0xFFu);
}

// 0 for a text that is no finite number.
double floatingValue(const std::string& text) {
  const double value = parseDouble(text.c_str());
  return std::isfinite(value) ? value : 0;
}

bool wasKilled(int waitStatus) {
  return waitStatus != -1 && WIFSIGNALED(waitStatus) && WTERMSIG(waitStatus) == SIGKILL;
}

int traceNotStarted(const char* command) {
  const TraceFunction at{kSourcePath, "getInfo()"};
  getCcLogHw()->traceMIN(at(), "hardware unable to obtain output stream from command '%s'",
                         command);
  return -1;
}

// As getInfo(); killedSilent tells whether the command said nothing until it was killed.
int runCommand(std::string& output, const char* command, bool& killedSilent) {
  const TraceFunction at{kSourcePath, "getInfo()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware after command=%s", command);
  CommandStream stream(command);
  if (!stream) return traceNotStarted(command);
  std::optional<std::string> line = readFirstLine(stream);
  const int status = stream.close();
  if (!line) {
    killedSilent = wasKilled(status);
    log->traceMIN(at(), "hardware no suitable output text from command '%s'", command);
    return -1;
  }
  const int exitCode = exitCodeOf(status);
  if (exitCode != 0) {
    log->traceMIN(at(), "hardware command '%s' exit with problems: return code = %d", command,
                  exitCode);
    return exitCode;
  }
  stripTrailingBlanks(*line);
  output = std::move(*line);
  log->traceMAX(at(), "hardware info retrieved successful = %s", output.c_str());
  return 0;
}

int getKey(std::string& output, const char* key) {
  const std::string command =
      std::string("vmware-guestd --cmd 'info-get guestinfo.") + key + "' 2>/dev/null";
  if (agentIsStuck) return traceNotStarted(command.c_str());
  return runCommand(output, command.c_str(), agentIsStuck);
}

// Reads one text of the host record; an unreadable one is empty.
int readHostText(String& text, const char* key) {
  const TraceFunction at{kSourcePath, "getHostInfo()"};
  std::string buffer;
  const int result = getKey(buffer, key);
  getCcLogHw()->traceMAX(at(), "hardware buf=%s", buffer.c_str());
  text = buffer;
  return result;
}

int readHostTextOrNone(String& text, const char* key) {
  const int result = readHostText(text, key);
  if (text == kNone) text = "";
  return result;
}

}  // namespace

int getInfo(std::string& output, const char* command) {
  bool killedSilent = false;
  return runCommand(output, command, killedSilent);
}

void askStuckAgentAgain() { agentIsStuck = false; }

int getNodeId(std::string& nodeId) { return getKey(nodeId, kNodeId) == 0 ? 1 : 0; }

int getNodeCapacity(int* capacity) {
  std::string text;
  const int result = getKey(text, kNodeCapacity);
  *capacity = decimalValue(text.c_str());
  return result == 0 ? 1 : 0;
}

int getVMId(std::string& vmId) { return getKey(vmId, kVmId) == 0 ? 1 : 0; }

int getVMCapacity(double* capacity) {
  std::string text;
  const int result = getKey(text, kVmCapacity);
  *capacity = floatingValue(text);
  return result == 0 ? 1 : 0;
}

int getPhysicalProc(std::string& description) {
  return getKey(description, kPhysicalProcessor) == 0 ? 1 : 0;
}

int getGuestInfo(std::string& nodeId, int* nodeCapacity, std::string& vmId, double* vmCapacity) {
  const bool complete = getNodeId(nodeId) == 1 && getNodeCapacity(nodeCapacity) == 1 &&
                        getVMId(vmId) == 1 && getVMCapacity(vmCapacity) == 1;
  return complete ? 1 : 0;
}

int getHostInfo(HostInfo& record) {
  const TraceFunction at{kSourcePath, "getHostInfo()"};
  getCcLogHw()->traceMidEntry(at(), "hardware %s", "getHostInfo()");
  readHostText(record.manufacturer, kNodeManufacturer);
  readHostText(record.serialNumber, kNodeId);
  readHostTextOrNone(record.product, kNodeProduct);
  readHostTextOrNone(record.version, kNodeVersion);
  const int result = readHostTextOrNone(record.type, kNodeType);
  getCcLogHw()->traceMidExit(at(), "hardware return = %d", result);
  return result;
}

}  // namespace quenlor
