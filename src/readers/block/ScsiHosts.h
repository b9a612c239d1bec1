// What kind of adapter each SCSI host is: the classes of /sys/class in which it stands and the name
// of its driver.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "readers/block/BlockPath.h"

namespace quenlor {

class ScsiHosts {
 public:
  // Lists the classes; drivers' names and ports' numbers are read when they are first
  // asked for.
  ScsiHosts();

  // Word for the bus by which a logical unit hangs on its host: the one that the device's way
  // through the machine shows, else the one that the host's class or driver tells.
  std::string busOf(const BlockPath& path, const ScsiPlace& address);
  // "ahci", "usb-storage"; empty when not told.
  const std::string& driverOf(uint32_t host);
  // Number of the port of an ATA adapter on the way, as the adapter counts its ports; empty when
  // there is none. Two drives may share one.
  const std::string& portOf(const BlockPath& path);

 private:
  std::string busOfDriver(const ScsiPlace& address);

  std::map<uint32_t, std::string> m_classes;  // host to the word of its class
  std::map<uint32_t, std::string> m_drivers;
  std::map<std::string, std::string> m_ports;  // by "ata3"
};

}  // namespace quenlor
