#include "factory/GroupFactory.h"

#include <algorithm>
#include <iterator>

#include "base/File.h"
#include "catalogue/Catalogue.h"
#include "config/DovCfg.h"
#include "factory/HWXmlDovParser.h"
#include "host/InputFile.h"
#include "log/CcLogWrapper.h"
#include "readers/firmware/smbios/SMBIOSTable.h"
#include "xmltree/ParseNodeSink.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/com/GroupFactory.cpp";
constexpr const char* kDefaultConfigFile = "DovHWConfig.xml";
// Never was in the catalogue; older catalogues that have it must not offer it.
constexpr uint32_t kSkippedGroup = 26;

// What one parse gave: the section's node, and whether parsing failed.
struct ParsedSection {
  std::unique_ptr<Node> node;
  int error = 0;
  bool isTooDeep = false;
};

template <class Parser, class Sink>
ParsedSection parseSection(FILE* file, int tagType, const char* const (&traces)[2]) {
  const TraceFunction at{kSourcePath, "loadNodeFromFile()"};
  CcLogWrapper* log = getCcLogHw();
  Sink sink;
  log->traceMAX(at(), "hardware %s", traces[0]);
  const Parser parser(file, sink);
  log->traceMAX(at(), "hardware %s", traces[1]);
  ParsedSection section{std::unique_ptr<Node>(sink.getNode(tagType)), parser.error(),
                        parser.isTooDeep()};
  log->traceMAX(at(), "hardware After sink->getNode()");
  log->traceMAX(at(), "hardware %s is %d", "Error from dovparser", section.error);
  return section;
}

ParsedSection parseFile(FILE* file, int tagType) {
  if (tagType == kHardwareSection) {
    return parseSection<XmlDovParser, ParseNodeSink>(
        file, tagType, {"After ParseNodeSink()", "After new XmlDovParser()"});
  }
  return parseSection<HWXmlDovParser, HWParseNodeSink>(
      file, tagType, {"After HWParseNodeSink()", "After new HWXmlDovParser()"});
}

}  // namespace

GroupFactory& GroupFactory::getInstance() {
  static GroupFactory instance;
  return instance;
}

void GroupFactory::chooseSources(const ScanSettings& settings) {
  m_catalogue = settings.isModern() ? MODERN_GROUPS_DEF : GROUPS_DEF;
  if (settings.isModern() && m_modernCreator) m_creator = m_modernCreator(settings);
}

int GroupFactory::initialise() {
  setHWConfigFile();
  // Modern sources have the firmware's table from the kernel, which guards physical memory.
  if (m_catalogue == GROUPS_DEF) SMBIOSTable::initializeGlobalTable(1);
  return 1;
}

void GroupFactory::setHWConfigFile() {
  const TraceFunction at{kSourcePath, "setHWConfigFile()"};
  const String configured = DovCfg::getKey("hwscanner.config_file");
  m_HWConfigFile = DovCfg::getKey("config_dir") + File::pathSeparator +
                   (configured.empty() ? String(kDefaultConfigFile) : configured);
  getCcLogHw()->traceMidExit(at(), "hardware m_HWConfigFile = %s", m_HWConfigFile.c_str());
}

int GroupFactory::getAllGroups(std::list<String>& names) {
  const TraceFunction at{kSourcePath, "getAllGroups()"};
  for (const velGroupDef* group = m_catalogue; group->id != kCatalogueEnd; ++group) {
    if (group->id == kSkippedGroup) continue;
    getCcLogHw()->traceMAX(at(), "hardware group = %s", group->name);
    names.emplace_back(group->name);
  }
  return 0;
}

VelGroup* GroupFactory::getGroup(const String& name) {
  const TraceFunction at{kSourcePath, "getGroup()"};
  getCcLogHw()->traceMidEntry(at(), "hardware groupName=%s", name.c_str());
  const velGroupDef* record = findGroup(m_catalogue, name.c_str());
  const uint32_t id = record == nullptr ? 0 : record->id;
  VelGroup* group = getVELGroup(id);
  getCcLogHw()->traceMidExit(at(), "hardware groupId=%ld", static_cast<long>(id));
  return group;
}

VelGroup* GroupFactory::getVELGroup(unsigned long groupId) {
  return !m_creator ? nullptr : m_creator(groupId);
}

int GroupFactory::loadNodeFromFile(String fileName, int tagType) {
  const TraceFunction at{kSourcePath, "loadNodeFromFile()"};
  CcLogWrapper* log = getCcLogHw();
  const auto end = [&](int result) {
    if (result != kCannotOpen) {
      log->traceMAX(at(), "hardware After parsing config file %s", fileName.c_str());
    }
    log->traceMidExit(at(), "hardware return =%d", result);
    return result;
  };

  if (tagType != kHardwareSection && tagType != kProcessorsSection && tagType != kQcmsSection) {
    return end(0);
  }
  const FileStream file = openInputFile(fileName.c_str());
  if (!file) {
    log->traceMIN(at(), "hardware Can't open file %s for read", fileName.c_str());
    return end(kCannotOpen);
  }
  log->traceMAX(at(), "hardware Open config file %s for read", fileName.c_str());

  const ParsedSection section = parseFile(file.get(), tagType);
  m_isTooDeep = section.isTooDeep;
  if (section.error != 0) {
    log->traceMIN(at(), "hardware Error parsing the xmlfile %s", fileName.c_str());
    return end(kParseError);
  }
  if (!section.node) return end(kSectionAbsent);
  if (tagType == kHardwareSection) getHWGroupFromNode(section.node.get());
  if (tagType == kProcessorsSection) getProcessorFromNode(section.node.get());
  if (tagType == kQcmsSection) getQCMFromNode(section.node.get());
  return end(0);
}

void GroupFactory::getHWGroupFromNode(const Node* node) {
  const TraceFunction at{kSourcePath, "getHWGroupFromNode()"};
  if (node == nullptr) return;
  std::vector<const Node*> rest{node};  // in document order from its end
  while (!rest.empty()) {
    const Node& next = *rest.back();
    rest.pop_back();
    if (next.name() == "Hardware") {
      const auto& children = next.children();
      std::transform(children.rbegin(), children.rend(), std::back_inserter(rest),
                     [](const auto& child) { return child.get(); });
    } else if (next.name() == "Group" && next.attributes().find("Name") != nullptr) {
      getCcLogHw()->traceMAX(at(), "hardware %s", "add a new element to the group...");
      m_groupNames.push_back(next.attribute("Name"));
    }
  }
}

void GroupFactory::getProcessorFromNode(const Node* node) {
  const TraceFunction at{kSourcePath, "getProcessorFromNode()"};
  if (node->name() != "Processors") return;
  for (const auto& child : node->children()) {
    if (child->name() != "Processor") continue;
    getCcLogHw()->traceMAX(at(), "hardware add a new element");
    m_processors.push_back(std::make_unique<ProcessorInfo>(*child));
  }
}

void GroupFactory::getQCMFromNode(const Node* node) {
  const TraceFunction at{kSourcePath, "getQCMFromNode()"};
  if (node->name() != "QCMs") return;
  for (const auto& child : node->children()) {
    if (child->name() != "QCM") continue;
    getCcLogHw()->traceMAX(at(), "hardware add a new element");
    m_qcms.push_back(std::make_unique<QCMInfo>(*child));
  }
}

}  // namespace quenlor
