#include "readers/virtualization/retriever.h"

#include <optional>
#include <utility>

#include "base/Text.h"
#include "host/Handles.h"
#include "log/CcLogWrapper.h"
#include "readers/virtualization/AgentAnswer.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/enabler/retriever.cpp";

// Once a command of the agent had to be killed before it said a word, waiting for the next ones as
// long would only multiply the delay: the groups of one scan read a dozen keys.
bool agentIsStuck = false;

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
  const std::string command = "vmware-guestd --cmd '" + agentQuestion(key) + "' 2>/dev/null";
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
  if (text == agent_key::kNone) text = "";
  return result;
}

}  // namespace

int getInfo(std::string& output, const char* command) {
  bool killedSilent = false;
  return runCommand(output, command, killedSilent);
}

void askStuckAgentAgain() { agentIsStuck = false; }

int getNodeId(std::string& nodeId) { return getKey(nodeId, agent_key::kNodeId) == 0 ? 1 : 0; }

int getNodeCapacity(int* capacity) {
  std::string text;
  const int result = getKey(text, agent_key::kNodeCapacity);
  *capacity = decimalValue(text.c_str());
  return result == 0 ? 1 : 0;
}

int getVMId(std::string& vmId) { return getKey(vmId, agent_key::kVmId) == 0 ? 1 : 0; }

int getVMCapacity(double* capacity) {
  std::string text;
  const int result = getKey(text, agent_key::kVmCapacity);
  *capacity = finiteNumber(text);
  return result == 0 ? 1 : 0;
}

int getPhysicalProc(std::string& description) {
  return getKey(description, agent_key::kPhysicalProcessor) == 0 ? 1 : 0;
}

int getGuestInfo(std::string& nodeId, int* nodeCapacity, std::string& vmId, double* vmCapacity) {
  const bool complete = getNodeId(nodeId) == 1 && getNodeCapacity(nodeCapacity) == 1 &&
                        getVMId(vmId) == 1 && getVMCapacity(vmCapacity) == 1;
  return complete ? 1 : 0;
}

int getHostInfo(HostInfo& record) {
  const TraceFunction at{kSourcePath, "getHostInfo()"};
  getCcLogHw()->traceMidEntry(at(), "hardware %s", "getHostInfo()");
  readHostText(record.manufacturer, agent_key::kNodeManufacturer);
  readHostText(record.serialNumber, agent_key::kNodeId);
  readHostTextOrNone(record.product, agent_key::kNodeProduct);
  readHostTextOrNone(record.version, agent_key::kNodeVersion);
  const int result = readHostTextOrNone(record.type, agent_key::kNodeType);
  getCcLogHw()->traceMidExit(at(), "hardware return = %d", result);
  return result;
}

}  // namespace quenlor
