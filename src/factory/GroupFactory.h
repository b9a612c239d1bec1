// Turns group names into groups and loads the scan and the hardware configuration file.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <utility>
#include <vector>

#include "base/String.h"
#include "config/ScanSettings.h"
#include "tables/VelTable.h"

namespace quenlor {

class Node;

// One "Processor" element of the hardware configuration file; absent attributes are empty.
struct ProcessorInfo {
  explicit ProcessorInfo(const Node& element);
  ProcessorInfo() = default;
  virtual ~ProcessorInfo() = default;

  String manufacturer;  // element attribute "Manufactor", spelled so
  String brandId;
  String signature;
  String type;
  String family;
  String model;
  String pcx;
  String description;
  String typeEnum;
};

// One "QCM" element of the hardware configuration file.
struct QCMInfo {
  explicit QCMInfo(const Node& element);
  virtual ~QCMInfo() = default;

  String family;
  String cc;
  String newFamily;
  uint32_t coresPerPackage;  // decimal, 0x hexadecimal or 0 octal; 1 when absent or empty
};

// Sections of the configuration files.
enum ConfigSection : int { kHardwareSection = 1, kProcessorsSection = 5, kQcmsSection = 6 };

// Process-wide; used by the main thread only.
class GroupFactory {
 public:
  // Makes the group of a catalogue id, owned by the caller; null for an id that has no class.
  using Creator = std::function<VelGroup*(unsigned long groupId)>;

  static constexpr int kSectionAbsent = -1;
  static constexpr int kParseError = 2;
  static constexpr int kCannotOpen = 5;

  static GroupFactory& getInstance();
  virtual ~GroupFactory() = default;

  // The factory knows no collector itself: the program installs what makes them.
  void setCreator(Creator creator) { m_creator = std::move(creator); }
  // The same for scans with modern sources: it gives each scan a creator of its own.
  void setModernCreator(std::function<Creator(const ScanSettings&)> creator) {
    m_modernCreator = std::move(creator);
  }
  // Decides, once and before any group is made, which sources' groups are known and made.
  void chooseSources(const ScanSettings& settings);
  const velGroupDef* catalogue() const { return m_catalogue; }

  int initialise();                              // configuration file name, SMBIOS table; always 1
  int getAllGroups(std::list<String>& names);    // appends the whole catalogue's names; 0
  VelGroup* getGroup(const String& name);        // owned by the caller; null when unknown
  VelGroup* getVELGroup(unsigned long groupId);  // owned by the caller; null when unknown
  // 0 section loaded, kSectionAbsent, kParseError, kCannotOpen; 0 at once for another tag type.
  int loadNodeFromFile(String fileName, int tagType);

  // True when the file loaded last was a kParseError for its depth alone.
  bool isTooDeep() const { return m_isTooDeep; }

  const String& hwConfigFile() const { return m_HWConfigFile; }
  const std::list<String>& groupNames() const { return m_groupNames; }
  const std::vector<std::unique_ptr<ProcessorInfo>>& processors() const { return m_processors; }
  const std::vector<std::unique_ptr<QCMInfo>>& qcms() const { return m_qcms; }

 private:
  GroupFactory() = default;

  void setHWConfigFile();
  void getHWGroupFromNode(const Node* node);
  void getProcessorFromNode(const Node* node);
  void getQCMFromNode(const Node* node);

  Creator m_creator;
  std::function<Creator(const ScanSettings&)> m_modernCreator;
  const velGroupDef* m_catalogue = GROUPS_DEF;
  std::vector<std::unique_ptr<ProcessorInfo>> m_processors;
  std::vector<std::unique_ptr<QCMInfo>> m_qcms;
  String m_HWConfigFile;
  std::list<String> m_groupNames;
  bool m_isTooDeep = false;
};

}  // namespace quenlor
