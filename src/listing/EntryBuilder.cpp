#include "listing/EntryBuilder.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "factory/GroupFactory.h"
#include "host/ScanState.h"
#include "listing/PlainPrinter.h"
#include "tables/Render.h"
#include "tables/ValueBlock.h"
#include "tables/VelTable.h"

namespace quenlor {
namespace {

constexpr long long kLocalDisk = 3;  // PART_MEDIA_TYPE_ENUM_DEF
constexpr long long kKilobytesPerGigabyte = 1048576;
constexpr long long kKilobytesPerMegabyte = 1024;

struct Replacement {
  const char* from;
  const char* to;
};

constexpr Replacement kOsTypes[] = {
    {"Windows 2000", "WINDOWS2000"},
    {"Windows XP", "WINDOWSXP"},
    {"Windows 2003", "WINDOWS2003"},
    {"Windows Server 2003", "WINDOWS2003"},
    {"Linux", "LINUX"},
    {"SLES", "LINUX"},
    {"Kov", "KOV"},
    {"Solaris", "SOLARIS"},
    {"SunOS", "SOLARIS"},
    {"HP", "HPUX"},
};

constexpr Replacement kPlatforms[] = {
    {"64", "IA64"}, {"Sparc", "SPARC"}, {"RISC", "PARISC"}, {"Power", "POWER"}};
constexpr const char* kDefaultPlatform = "IA32";

long long toDecimal(const std::string& text) { return std::strtoll(text.c_str(), nullptr, 10); }

// A stored string, unescaped: a list is read line by line, not parsed.
std::string stringText(const unsigned char* velString) {
  return toLocale(readText(velString).c_str());
}

// A value as the document writers print it.
std::string renderedText(const unsigned char* block) {
  char* text = nullptr;
  size_t size = 0;
  FILE* stream = open_memstream(&text, &size);
  if (stream == nullptr) return {};
  PrintVelAttribValueToFile(stream, block);
  std::fclose(stream);
  const std::unique_ptr<char, decltype(&std::free)> owned(text, &std::free);
  return {text, size};
}

void addNamed(IEntry& entry, const std::vector<NVPair>& pairs, const char* name) {
  for (const NVPair& pair : pairs) {
    if (pair.first == name) entry.addEntryAttribute(pair.second);
  }
}

// Value of the first pair of a name; null when there is none.
const std::string* firstValue(const std::vector<NVPair>& pairs, const char* name) {
  for (const NVPair& pair : pairs) {
    if (pair.first == name) return &pair.second;
  }
  return nullptr;
}

}  // namespace

int EntryBuilder::BuildAllEntries(int) {
  clear();
  addValues("cpu_mhertz", retrieve("Processor", {"MaxClockSpeed"}), "MaxClockSpeed");
  addValues("scandate", retrieve("Scan Info", {"Scan Date"}), "Scan Date");
  // Collected once for all their entries: a collection may wait for commands and name servers.
  const auto addresses = retrieve("IP Address", {"Permanent Mac Address", "Hostname"});
  addValues("guid", addresses, "Permanent Mac Address");
  addValues("hostname", addresses, "Hostname");
  const auto system =
      retrieve("Operating System", {"Name", "Major Version", "Minor Version", "OS Kernel Mode"});
  addOsType(system);
  addOsVersion(system);
  addHwPlatform(system);
  addRam(retrieve("Memory", {"Total Physical"}));
  addDisks(retrieve("Partition", {"Media Type", "Physical Size"}));
  return count();
}

std::vector<NVPair> EntryBuilder::retrieve(const char* group,
                                           const std::vector<std::string>& names) {
  std::vector<NVPair> pairs;
  RetrieveAttributeValue(group, &names, &pairs);
  return pairs;
}

void EntryBuilder::clear() {
  m_owned.clear();
  m_entries.clear();
}

bool EntryBuilder::PrintEntries(const char* fileName) {
  PlainPrinter printer;
  printer.SetEntries(&m_entries);
  return printer.Print(fileName) != 0;
}

int EntryBuilder::RetrieveAttributeValue(const String& groupName,
                                         const std::vector<std::string>* names,
                                         std::vector<NVPair>* result) {
  if (names == nullptr || result == nullptr) return 0;
  result->clear();
  const std::unique_ptr<VelGroup> group(GroupFactory::getInstance().getGroup(groupName));
  const GroupInProgress inProgress(group ? group->getGroupId() : 0);
  const std::unique_ptr<VelTable> table(group ? group->getTable() : nullptr);
  const velGroupDef* record = table ? table->getGroupDefinitionFromId() : nullptr;
  if (record == nullptr) return 0;

  table->reset();
  while (VelTableRow* row = table->getNext()) {
    while (VelTableAttrib* attrib = row->getNext()) {
      const char* name = getAttribNameFromId(record, attrib->getId());
      if (name == nullptr) continue;
      for (const std::string& wanted : *names) {
        if (wanted != name) continue;
        result->emplace_back(name, GetVELAttributeAsString(attrib->getAttribPtr()));
        break;
      }
    }
  }
  return static_cast<int>(result->size());
}

std::string EntryBuilder::GetVELAttributeAsString(const unsigned char* block) {
  switch (blockType(block)) {
    case VEL_UCHAR:
      return std::to_string(*blockValue(block));
    case VEL_STRING:
      return stringText(blockValue(block));
    default:
      return renderedText(block);
  }
}

SimpleEntry& EntryBuilder::addSimple(const char* id) {
  auto entry = std::make_unique<SimpleEntry>();
  SimpleEntry& reference = *entry;
  reference.setEntryID(id);
  add(std::move(entry));
  return reference;
}

AttributeReplacingEntry& EntryBuilder::addReplacing(const char* id) {
  auto entry = std::make_unique<AttributeReplacingEntry>();
  AttributeReplacingEntry& reference = *entry;
  reference.setEntryID(id);
  add(std::move(entry));
  return reference;
}

void EntryBuilder::add(std::unique_ptr<IEntry> entry) {
  m_entries.push_back(entry.get());
  m_owned.push_back(std::move(entry));
}

void EntryBuilder::addValues(const char* id, const std::vector<NVPair>& pairs,
                             const char* attribute) {
  addNamed(addSimple(id), pairs, attribute);
}

void EntryBuilder::addOsType(const std::vector<NVPair>& system) {
  AttributeReplacingEntry& entry = addReplacing("osType");
  for (const Replacement& replacement : kOsTypes) {
    entry.SetReplacement(replacement.from, replacement.to);
  }
  addNamed(entry, system, "Name");
}

void EntryBuilder::addOsVersion(const std::vector<NVPair>& system) {
  SimpleEntry& entry = addSimple("osVersion");
  const std::string* majorVersion = firstValue(system, "Major Version");
  const std::string* minorVersion = firstValue(system, "Minor Version");
  if (majorVersion == nullptr || minorVersion == nullptr) return;
  entry.addEntryAttribute(*majorVersion + "." + *minorVersion);
}

void EntryBuilder::addHwPlatform(const std::vector<NVPair>& system) {
  AttributeReplacingEntry& entry = addReplacing("hwPlatform");
  entry.SetDefaultReplacement(kDefaultPlatform);
  for (const Replacement& replacement : kPlatforms) {
    entry.SetReplacement(replacement.from, replacement.to);
  }
  // Whatever the architecture, its kernel mode decides.
  addNamed(entry, system, "OS Kernel Mode");
}

void EntryBuilder::addRam(const std::vector<NVPair>& memory) {
  SimpleEntry& entry = addSimple("ram_mbytes");
  for (const NVPair& pair : memory) {
    entry.addEntryAttribute(std::to_string(toDecimal(pair.second) / kKilobytesPerMegabyte));
  }
}

void EntryBuilder::addDisks(const std::vector<NVPair>& partitions) {
  const auto [gigabytes, found] = sumLocalDisks(partitions);
  if (found) addSimple("hdd_gbytes").addEntryAttribute(std::to_string(gigabytes));
}

std::pair<long long, bool> sumLocalDisks(const std::vector<NVPair>& pairs) {
  long long total = 0;
  long long pending = 0;
  bool sizeSeen = false;
  bool diskSeen = false;
  bool found = false;
  for (const auto& [name, value] : pairs) {
    if (name == "Physical Size") {
      pending = toDecimal(value) / kKilobytesPerGigabyte;
      sizeSeen = true;
    } else if (name == "Media Type" && toDecimal(value) == kLocalDisk) {
      diskSeen = true;
    }
    if (!sizeSeen || !diskSeen) continue;
    total += pending;
    pending = 0;
    sizeSeen = diskSeen = false;
    found = true;
  }
  return {total, found};
}

}  // namespace quenlor
