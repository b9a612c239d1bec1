#include "readers/network/DefaultGateway.h"

#include <algorithm>
#include <cstring>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/IpAddressGroup.cpp";
constexpr size_t kGatewaySize = 255;
constexpr size_t kLineSize = 255;
constexpr int kMostLines = 299;

constexpr const char* kDigits = "0123456789";
// Comma and apostrophe are taken into the address as well: inventories of old are compared with it.
constexpr const char* kAddressCharacters = "0123456789,'.";

struct GatewayFile {
  const char* distribution;  // what the trace calls it; null: nothing is traced
  const char* path;
  const char* key;
};

// Of interface files only that of eth0 counts.
constexpr GatewayFile GATEWAY_FILES[] = {
    {nullptr, "/etc/sysconfig/network-scripts/ifcfg-eth0", "GATEWAY"},
    {"suse", "/etc/route.conf", "default"},
    {"suse8", "/etc/sysconfig/network/routes", "default"},
    {"redhat", "/etc/sysconfig/network", "GATEWAY="},
};

bool readGateway(const GatewayFile& source, char* out) {
  const FileStream file = openFile(source.path);
  LineReader reader(file.get(), kLineSize);
  for (int line = 0; line < kMostLines && reader.next(); ++line) {
    if (getGateway(out, reader.line(), source.key) != 0) return true;
  }
  return false;
}

}  // namespace

void getDefaultGateway(char* out, int len) {
  const TraceFunction at{kSourcePath, "getDefaultGateway()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware %s %s %s %d", "looking for default gateway...defgate=", out,
                "len=", len);
  for (const GatewayFile& source : GATEWAY_FILES) {
    if (source.distribution != nullptr) log->traceMAX(at(), "hardware %s", source.distribution);
    if (readGateway(source, out)) return;
  }
}

int getGateway(char* out, const char* line, const char* key) {
  const char* found = std::strstr(line, key);
  if (found == nullptr) return 0;
  const char* comment = std::strchr(line, '#');
  if (comment != nullptr && comment <= found) return 0;

  const char* address = std::strpbrk(found + std::strlen(key), kDigits);
  if (address == nullptr) return 0;
  const size_t length = std::min(std::strspn(address, kAddressCharacters), kGatewaySize - 1);
  std::memcpy(out, address, length);
  out[length] = '\0';
  return 1;
}

}  // namespace quenlor
