#include "readers/firmware/smbios/SMBIOSTable.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "host/Handles.h"
#include "log/CcLogWrapper.h"
#include "readers/firmware/smbios/DumpFile.h"

namespace quenlor {
namespace {

constexpr char kSourcePath[] = "../../../src/invscan/SMBIOS/SMBIOSTable.cpp";

constexpr int kMaxStructures = 65535;
constexpr int kHeaderSize = 4;  // type, length, handle

// What the inventory keeps of each repeated structure.
constexpr size_t kMaxProcessors = 80;
constexpr size_t kMaxMemoryModules = 12;
constexpr size_t kMaxConnectors = 20;
constexpr size_t kMaxSlots = 20;
constexpr size_t kMaxOnBoardDevices = 20;
constexpr size_t kMaxMemoryDevices = 1000;

constexpr int kMemoryControllerType = 5;
constexpr int kEndOfTableType = 127;

// Texts that firmware shows where its maker filled nothing in.
constexpr const char* bogus_strings[] = {"Not Available",        "This is OEM",
                                         "System Manufacturer",  "System Model",
                                         "No Asset Information", nullptr};

bool isBogus(std::string_view text) {
  return std::any_of(std::begin(bogus_strings), std::end(bogus_strings) - 1,
                     [text](const char* bogus) { return text.find(bogus) != text.npos; });
}

// The file is closed before anyone looks at the text: one of another format ends the process.
std::optional<std::string> textOfFile(const char* path) {
  const FileStream file = openFile(path);
  return file ? std::optional(readDumpText(file.get())) : std::nullopt;
}

// The signed comparison makes this true for everything above 127 as well.
bool endsText(char c) { return static_cast<signed char>(c) < ' '; }

}  // namespace

SMBIOSTable* globalSMBIOSTable = nullptr;
int32_t SMBIOSTable::refCount = 0;

SMBIOSTable::SMBIOSTable() { loadFromMemory(); }

SMBIOSTable::SMBIOSTable(const unsigned char* data, int length, unsigned char revision,
                         int numTables)
    : m_revision(revision),
      m_majorVersion(revision >> 4),
      m_minorVersion(revision & 15),
      m_numTables(std::clamp(numTables, 0, kMaxStructures)),
      m_available(true),
      m_data(data == nullptr ? 0 : length) {
  m_totalLength = m_data.size();
  if (m_totalLength > 0) std::memcpy(m_data.data(), data, static_cast<size_t>(m_totalLength));
}

SMBIOSTable::SMBIOSTable(const char* path) { readBytesFromFile(path); }

void SMBIOSTable::initializeGlobalTable(unsigned char parse) {
  if (globalSMBIOSTable != nullptr) {
    ++refCount;
    return;
  }
  globalSMBIOSTable = new SMBIOSTable();
  refCount = 1;
  if (parse == 1 && globalSMBIOSTable->isAvailable()) globalSMBIOSTable->parseData();
}

void SMBIOSTable::terminateGlobalTable() {
  if (refCount > 0) --refCount;
  if (refCount > 0) return;
  delete globalSMBIOSTable;
  globalSMBIOSTable = nullptr;
}

void SMBIOSTable::clearRecords() {
  m_table0.reset();
  m_table1.reset();
  m_table2.reset();
  m_table3.reset();
  m_table4.clear();
  m_table4Populated = 0;
  m_table5.reset();
  m_table6.clear();
  m_table8.clear();
  m_table9.clear();
  m_table10.clear();
  m_table11.reset();
  m_table16.reset();
  m_table17.clear();
  m_table22.reset();
  m_table24.reset();
}

// A malformed structure may leave the position where it was; the announced number of structures
// ends the walk all the same.
void SMBIOSTable::parseData() {
  const TraceFunction at{kSourcePath, "parseData()"};
  getCcLogHw()->traceMidEntry(at(), "hardware %s", "parseData()");
  clearRecords();
  int position = 0;
  for (int seen = 0; position < m_totalLength - kHeaderSize && seen < m_numTables; ++seen) {
    tracePosition(position, seen);
    position = parseStructure(position);
  }
  traceProcessors();
  getCcLogHw()->traceMidExit(at(), "hardware %s", "parseData()");
}

int SMBIOSTable::parseStructure(int position) {
  switch (m_data[position]) {
    case 0:
      return keepFirst(m_table0, position);
    case 1:
      return keepFirst(m_table1, position);
    case 2:
      return keepFirst(m_table2, position);
    case 3:
      return keepFirst(m_table3, position);
    case 4:
      return appendProcessor(position);
    case kMemoryControllerType:
      return keepFirst(m_table5, position);
    case 6:
      return append(m_table6, kMaxMemoryModules, position);
    case 8:
      return append(m_table8, kMaxConnectors, position);
    case 9:
      return append(m_table9, kMaxSlots, position);
    case 10:
      return append(m_table10, kMaxOnBoardDevices, position);
    case 16:
      return keepFirst(m_table16, position);
    case 17:
      return append(m_table17, kMaxMemoryDevices, position);
    case 22:
      return keepFirst(m_table22, position);
    case 24:
      return keepFirst(m_table24, position);
    case kEndOfTableType:
      // Staying here uses the announced number of structures up, which ends the walk: meant so.
      getCcLogHw()->traceMAX({kSourcePath, "parseData()", __LINE__}, "hardware %s",
                             "found structure 127");
      return position;
    default:
      return getNextType(m_data, position);
  }
}

template <class Record>
int SMBIOSTable::keepFirst(std::unique_ptr<Record>& record, int position) {
  if (record != nullptr) return getNextType(m_data, position);
  record = std::make_unique<Record>(m_revision);
  return record->readBlock(m_data, position);
}

template <class Record>
int SMBIOSTable::append(Records<Record>& records, size_t limit, int position) {
  if (records.size() >= limit) return getNextType(m_data, position);
  records.push_back(std::make_unique<Record>(m_revision));
  return records.back()->readBlock(m_data, position);
}

int SMBIOSTable::appendProcessor(int position) {
  const size_t before = m_table4.size();
  const int next = append(m_table4, kMaxProcessors, position);
  if (m_table4.size() == before) return next;
  const SMBIOSTable4Data& processor = *m_table4.back();
  if (processor.isPopulated() && processor.getType() == SMBIOSTable4Data::kCentralProcessor) {
    ++m_table4Populated;
  }
  return next;
}

// A memory controller is taken to have no strings: old firmware writes none, not even the two
// zeros.
int SMBIOSTable::getNextType(const TableBytes& buf, int offset) const {
  int p = offset + buf[offset + 1];
  const auto atEnd = [&buf](int at) { return buf[at] == 0 && buf[at + 1] == 0; };
  if (buf[offset] == kMemoryControllerType) return atEnd(p) ? p + 2 : p;
  while (!atEnd(p) && p < m_totalLength) ++p;
  return p + 2;
}

void SMBIOSTable::tracePosition(int position, int seen) const {
  CcLogWrapper* log = getCcLogHw();
  if (!log->isEnabled(TraceLevel::kMax)) return;
  const auto byte = [this, position](int distance) {
    return unsigned{m_data[position + distance]};
  };
  log->traceMAX({kSourcePath, "parseData()", __LINE__},
                "hardware %s %d %s %d %s %d %s %d [%02X %02X %02X] %02X %02X %02X %02X",
                "SMBIOS cur=", position, "type=", m_data[position], "tables=", seen + 1, "of",
                m_numTables, byte(-3), byte(-2), byte(-1), byte(0), byte(1), byte(2), byte(3));
}

void SMBIOSTable::traceProcessors() const {
  CcLogWrapper* log = getCcLogHw();
  if (!log->isEnabled(TraceLevel::kMax)) return;
  const TraceFunction at{kSourcePath, "parseData()"};
  log->traceMAX(at(), "hardware %s %d", "Number of Table 4 =", getTable4Total());
  log->traceMAX(at(), "hardware %s %d", "Number of Table 4 Populated=", m_table4Populated);
  if (m_table4.empty()) return;
  log->traceMAX(at(), "hardware %s %d", "Table 4 Family =", m_table4.front()->getFamily());
}

void SMBIOSTable::readBytesFromFile(const char* path) {
  const std::optional<std::string> text = textOfFile(path);
  if (!text) return;
  std::optional<TableDump> dump = parseDump(*text);
  if (!dump) {
    std::printf("\nERROR - Invalid file format.");
    std::exit(-1);
  }
  m_totalLength = dump->bytes.size();
  m_numTables = std::min(dump->numTables, kMaxStructures);
  m_revision = dump->revision;
  m_data = std::move(dump->bytes);
}

void SMBIOSTable::writeBytesToFile(const char* path) const {
  const FileStream file = openFile(path, "w");
  if (file) writeDump(file.get(), m_data, m_numTables, m_revision);
}

std::string SMBIOSTable::validText(const char* src) {
  std::string text(src == nullptr ? "" : src);
  if (isBogus(text)) return {};
  text.erase(std::find_if(text.begin(), text.end(), endsText), text.end());
  text.erase(text.find_last_not_of(" \t\n\v\f\r") + 1);
  return text;
}

char* SMBIOSTable::validateString(const char* src, char* dst) {
  if (dst == nullptr) return nullptr;
  const std::string text = validText(src);
  std::memcpy(dst, text.c_str(), text.size() + 1);
  return dst;
}

namespace {

void dumpRecord(const SMBIOSTableData* record) {
  if (record != nullptr) record->dump();
}

template <class Records>
void dumpAll(const Records& records) {
  for (const auto& record : records) record->dump();
}

}  // namespace

void SMBIOSTable::dump() const {
  std::printf("\n-SMBIOS Table -------------------------------");
  std::printf("\n   revision    : x%02X", static_cast<unsigned>(m_revision));
  std::printf("\n   numTables   : %d", m_numTables);
  std::printf("\n   totalLength : %d", m_totalLength);
  dumpRecord(m_table0.get());
  dumpRecord(m_table1.get());
  dumpRecord(m_table2.get());
  dumpRecord(m_table3.get());
  dumpAll(m_table4);
  dumpRecord(m_table5.get());
  dumpAll(m_table6);
  dumpAll(m_table8);
  dumpAll(m_table9);
  dumpAll(m_table10);
  dumpRecord(m_table11.get());
  dumpRecord(m_table16.get());
  dumpAll(m_table17);
  dumpRecord(m_table22.get());
  dumpRecord(m_table24.get());
  std::printf("\n");
}

}  // namespace quenlor
