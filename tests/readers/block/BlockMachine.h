// A machine whose block devices are made of texts, as /sys shows them.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"

namespace quenlor::test {

using Attributes = std::map<std::string, std::string>;

class BlockMachine : public FakeHost {
 public:
  BlockMachine() { directories["/sys/block"]; }

  // A whole device. `parent` is its directory's parent below /sys/devices: "virtual/block".
  void addDevice(const std::string& name, const std::string& parent, const Attributes& attributes) {
    const std::string directory = "/sys/block/" + name;
    directories["/sys/block"].push_back(name);
    directories[directory];
    links[directory] = "../devices/" + parent + "/" + name;
    addFiles(directory, attributes);
  }
  void addPartition(const std::string& disk, const std::string& name,
                    const Attributes& attributes) {
    const std::string directory = "/sys/block/" + disk + "/" + name;
    directories["/sys/block/" + disk].push_back(name);
    directories[directory];
    addFiles(directory, attributes);
  }
  void setSlaves(const std::string& name, const std::vector<std::string>& slaves) {
    directories["/sys/block/" + name + "/slaves"] = slaves;
  }
  // A logical unit "0:0:0:0" below /sys/devices/`parent`; gives its directory below /sys/devices.
  std::string addUnit(const std::string& parent, const std::string& address,
                      const Attributes& attributes) {
    const std::string path = parent + "/" + address;
    directories["/sys/bus/scsi/devices"].push_back(address);
    links["/sys/bus/scsi/devices/" + address] = "../../../devices/" + path;
    addFiles("/sys/devices/" + path, attributes);
    return path;
  }
  // A disk of a logical unit, with attributes of the unit and of the block device.
  void addScsiDisk(const std::string& name, const std::string& parent, const std::string& address,
                   const Attributes& unit, const Attributes& block) {
    addDevice(name, addUnit(parent, address, unit) + "/block", block);
  }
  void addHost(const std::string& host, const std::string& driver) {
    files["/sys/class/scsi_host/" + host + "/proc_name"] = driver + "\n";
  }
  void addUdev(const std::string& number, const std::string& record) {
    directories["/run/udev/data"].push_back("b" + number);
    files["/run/udev/data/b" + number] = record;
  }
  void addFiles(const std::string& directory, const Attributes& attributes) {
    for (const auto& [name, value] : attributes) files[directory + "/" + name] = value;
  }
  // True if no file was opened twice, and nothing outside /sys, /proc and /run.
  bool readEachOnce() const {
    std::map<std::string, int> counts;
    for (const std::string& path : opened) {
      const bool isData =
          path.starts_with("/sys/") || path.starts_with("/proc/") || path.starts_with("/run/");
      if (!isData || ++counts[path] > 1) {
        ADD_FAILURE() << path;
        return false;
      }
    }
    return true;
  }
};

// Vital product data: a page of the given code with its length in the header.
inline std::string vpdPage(unsigned char code, const std::string& body) {
  std::string page(1, '\0');
  page += static_cast<char>(code);
  page += static_cast<char>(body.size() >> 8);
  page += static_cast<char>(body.size() & 0xFF);
  return page + body;
}

// The ATA information page with the given words; texts fill words from the given one on.
class AtaPage {
 public:
  AtaPage() : m_bytes(572, '\0') { m_bytes.replace(0, 4, std::string("\0\x89\x02\x38", 4)); }
  AtaPage& word(size_t index, unsigned value) {
    m_bytes[60 + 2 * index] = static_cast<char>(value & 0xFF);
    m_bytes[61 + 2 * index] = static_cast<char>(value >> 8);
    return *this;
  }
  AtaPage& text(size_t first, size_t last, std::string value) {
    value.resize(2 * (last - first + 1), ' ');
    for (size_t index = first; index <= last; ++index) {
      const auto upper = static_cast<unsigned char>(value[2 * (index - first)]);
      const auto lower = static_cast<unsigned char>(value[2 * (index - first) + 1]);
      word(index, static_cast<unsigned>(upper) << 8 | lower);
    }
    return *this;
  }
  const std::string& bytes() const { return m_bytes; }

 private:
  std::string m_bytes;
};

}  // namespace quenlor::test
