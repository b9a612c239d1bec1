#include "readers/storage/ScsiNodes.h"

#include <fcntl.h>
#include <scsi/scsi.h>

#include <algorithm>
#include <string_view>

#include "host/Handles.h"
#include "log/CcLogWrapper.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/scsi_info.cpp";
constexpr const char* kDeviceDirectory = "/dev";

bool isOneOrTwoLetters(std::string_view text) {
  return !text.empty() && text.size() <= 2 &&
         text.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string_view::npos;
}

bool isNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// "sda" to "sdzz", "sr0", "st12"; no partitions, no "st0a".
bool isNodeOfKind(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix)) return false;
  const std::string_view rest = name.substr(prefix.size());
  return prefix == "sd" ? isOneOrTwoLetters(rest) : isNumber(rest);
}

// As the kernel counts: "sdz" before "sdaa", "st2" before "st10".
bool countsBefore(const std::string& left, const std::string& right) {
  return left.size() != right.size() ? left.size() < right.size() : left < right;
}

}  // namespace

int get_scsi_idlun(int fd) {
  const TraceFunction at{kSourcePath, "get_scsi_idlun()"};
  uint32_t words[2] = {};  // address and the adapter's unique number
  if (host().ioctl(fd, SCSI_IOCTL_GET_IDLUN, words) != 0) {
    getCcLogHw()->traceMIN(at(), "hardware %s: SCSI_IOCTL_GET_IDLUN ioctl failed.",
                           "get_scsi_idlun");
    return -1;
  }
  const int idlun = static_cast<int>(words[0]);
  getCcLogHw()->traceMAX(at(), "hardware %s: idlun = %d.", "get_scsi_idlun", idlun);
  return idlun;
}

ScsiAddress scsiAddressOf(int fd) {
  ScsiAddress address;
  address.idlun = get_scsi_idlun(fd);
  int host = -1;
  const bool known =
      address.idlun != -1 && quenlor::host().ioctl(fd, SCSI_IOCTL_GET_BUS_NUMBER, &host) == 0;
  if (known) address.host = host;
  return address;
}

std::string ScsiNodeKind::find(const ScsiAddress& address) {
  const TraceFunction at{kSourcePath, "find()"};
  if (!m_listed) listNodes();
  const auto isWanted = [&](const Node& node) { return node.address.isSameDevice(address); };
  const auto known = std::find_if(m_known.begin(), m_known.end(), isWanted);
  if (known != m_known.end()) return known->path;
  while (!m_unread.empty()) {
    std::string path = std::move(m_unread.back());
    m_unread.pop_back();
    const Descriptor node = m_opener.open(path, O_RDONLY);
    if (!node) {
      getCcLogHw()->traceMIN(at(), "hardware %s: error opening device '%s'.", "get_scsi_info",
                             path.c_str());
      continue;
    }
    m_known.push_back({path, scsiAddressOf(node.get())});
    if (isWanted(m_known.back())) return path;
  }
  return "";
}

void ScsiNodeKind::listNodes() {
  m_listed = true;
  std::vector<std::string> names;
  if (!host().listDirectory(kDeviceDirectory, names)) return;
  std::sort(names.begin(), names.end(), countsBefore);
  for (auto name = names.rbegin(); name != names.rend(); ++name) {
    if (isNodeOfKind(*name, m_prefix)) m_unread.push_back(kDeviceDirectory + ("/" + *name));
  }
}

std::string diskOfGenericNode(const char* sgNode) {
  DeviceOpener opener;
  const Descriptor node = opener.open(sgNode, O_RDONLY);
  if (!node) return "";
  ScsiNodes nodes(opener);
  return nodes.disks.find(scsiAddressOf(node.get()));
}

}  // namespace quenlor
