// Which device nodes of different SCSI drivers are the same device.
#pragma once

#include <string>
#include <vector>

#include "readers/storage/DeviceOpener.h"

namespace quenlor {

// The packed SCSI address of an open node: bits 0-7 id, 8-15 lun, 16-23 channel, 24-31 host; -1
// when the kernel does not tell (ioctl SCSI_IOCTL_GET_IDLUN).
int get_scsi_idlun(int fd);

// Address of a device. The packed form repeats after 256 hosts, so the full host number goes with
// it.
struct ScsiAddress {
  int idlun = -1;
  int host = -1;  // -1: not known

  bool isSameDevice(const ScsiAddress& other) const {
    return idlun != -1 && idlun == other.idlun &&
           (host == -1 || other.host == -1 || host == other.host);
  }
};

// Address of an open node.
ScsiAddress scsiAddressOf(int fd);

// The nodes of one kind under /dev, by their SCSI address. Each node is opened at most once, and
// none beyond the one that is looked for, so that a whole walk over generic nodes stays linear.
// Opened for reading and without waiting: a drive without a medium must not stall, nor its tray
// move.
class ScsiNodeKind {
 public:
  // prefix "sd", "sr" or "st"; its nodes go on with a letter or two, the others with a number.
  // The opener must outlive it.
  ScsiNodeKind(const char* prefix, DeviceOpener& opener) : m_prefix(prefix), m_opener(opener) {}

  // Path of the device's node of this kind; empty when it has none.
  std::string find(const ScsiAddress& address);

 private:
  struct Node {
    std::string path;
    ScsiAddress address;
  };

  void listNodes();

  std::string m_prefix;
  DeviceOpener& m_opener;
  bool m_listed = false;
  std::vector<std::string> m_unread;  // paths not opened yet, the next one last
  std::vector<Node> m_known;
};

// The three kinds together; kept for one collection, as is the opener, which must outlive them.
struct ScsiNodes {
  explicit ScsiNodes(DeviceOpener& openerOfAll) : opener(openerOfAll) {}

  DeviceOpener& opener;
  ScsiNodeKind disks{"sd", opener};
  ScsiNodeKind removables{"sr", opener};
  ScsiNodeKind tapes{"st", opener};
};

// Path of the disk behind a generic SCSI node; empty when it is no disk.
std::string diskOfGenericNode(const char* sgNode);

}  // namespace quenlor
