// The machine's SMBIOS structure table, walked once into typed records.
//
// Built before collection starts and only read afterwards; no locking.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "readers/firmware/records/BiosRecord.h"
#include "readers/firmware/records/BoardRecords.h"
#include "readers/firmware/records/MachineRecords.h"
#include "readers/firmware/records/MemoryRecords.h"
#include "readers/firmware/records/OtherRecords.h"
#include "readers/firmware/records/ProcessorRecord.h"
#include "readers/firmware/records/SMBIOSTableData.h"
#include "readers/firmware/records/TableBytes.h"

namespace quenlor {

class SMBIOSTable {
 public:
  // The machine's table from physical memory: the first "_DMI_" header in the F0000 segment whose
  // table can be read. Unavailable when there is none.
  SMBIOSTable();
  // A copy of a caller's table. revision is the BCD revision byte of its "_DMI_" header, and
  // becomes the revision word as it is. length is cut to 16 MiB, numTables to 65535.
  SMBIOSTable(const unsigned char* data, int length, unsigned char revision, int numTables);
  // A table written by writeBytesToFile. Sets neither version numbers nor availability.
  explicit SMBIOSTable(const char* path);
  SMBIOSTable(const SMBIOSTable&) = delete;
  SMBIOSTable& operator=(const SMBIOSTable&) = delete;
  ~SMBIOSTable() = default;

  // Walks the table into records; the constructors leave that to their callers.
  void parseData();

  // Reference-counted life of globalSMBIOSTable. The first call reads the machine's table, and with
  // parse 1 walks it; terminateGlobalTable() destroys it with the last reference.
  static void initializeGlobalTable(unsigned char parse);
  static void terminateGlobalTable();

  bool isAvailable() const { return m_available; }
  int getMajorVersion() const { return m_majorVersion; }
  int getMinorVersion() const { return m_minorVersion; }
  int getRevision() const { return m_revision; }        // major << 8 | minor, see the constructors
  int getNumTables() const { return m_numTables; }      // structures announced
  int getTotalLength() const { return m_totalLength; }  // bytes
  const unsigned char* getData() const { return m_data.data(); }

  // The first structure of a type, owned by the table; null when there is none.
  const SMBIOSTable0Data* getTable0() const { return m_table0.get(); }
  const SMBIOSTable1Data* getTable1() const { return m_table1.get(); }
  const SMBIOSTable2Data* getTable2() const { return m_table2.get(); }
  const SMBIOSTable3Data* getTable3() const { return m_table3.get(); }
  const SMBIOSTable5Data* getTable5() const { return m_table5.get(); }
  const SMBIOSTable11Data* getTable11() const { return m_table11.get(); }  // always null
  const SMBIOSTable16Data* getTable16() const { return m_table16.get(); }
  const SMBIOSTable24Data* getTable24() const { return m_table24.get(); }

  // Structure i of a type in table order, owned by the table; null outside 0 .. total - 1.
  const SMBIOSTable4Data* getTable4(int i) const { return recordAt(m_table4, i); }
  const SMBIOSTable6Data* getTable6(int i) const { return recordAt(m_table6, i); }
  const SMBIOSTable8Data* getTable8(int i) const { return recordAt(m_table8, i); }
  const SMBIOSTable9Data* getTable9(int i) const { return recordAt(m_table9, i); }
  const SMBIOSTable10Data* getTable10(int i) const { return recordAt(m_table10, i); }
  const SMBIOSTable17Data* getTable17(int i) const { return recordAt(m_table17, i); }
  int getTable4Total() const { return static_cast<int>(m_table4.size()); }
  int getTable4PopulatedTotal() const { return m_table4Populated; }  // central processors only
  int getTable6Total() const { return static_cast<int>(m_table6.size()); }
  int getTable8Total() const { return static_cast<int>(m_table8.size()); }
  int getTable9Total() const { return static_cast<int>(m_table9.size()); }
  int getTable10Total() const { return static_cast<int>(m_table10.size()); }
  int getTable17Total() const { return static_cast<int>(m_table17.size()); }

  // Offset of the structure behind the one at offset.
  int getNextType(const TableBytes& buf, int offset) const;

  // Debug print to standard output.
  void dump() const;
  // Text file of the table's bytes, readable by the constructor with a path. The reader ends the
  // process with status 255 when the file is of another format; a missing file changes nothing.
  void readBytesFromFile(const char* path);
  void writeBytesToFile(const char* path) const;

  // Copies a firmware text to dst (at least strlen(src) + 1 bytes), cut at the first character that
  // is not printable ASCII (127 is kept), trailing white space removed; empty for the placeholder
  // texts of firmware that was never filled in. Returns dst; null only when dst is.
  static char* validateString(const char* src, char* dst);
  // The same as a string; a null src is empty.
  static std::string validText(const char* src);

 private:
  template <class Record>
  using Records = std::vector<std::unique_ptr<Record>>;

  template <class Record>
  static const Record* recordAt(const Records<Record>& records, int i) {
    const bool exists = i >= 0 && static_cast<size_t>(i) < records.size();
    return exists ? records[static_cast<size_t>(i)].get() : nullptr;
  }

  struct DmiHeader;
  struct Candidate;

  void loadFromMemory();
  Candidate loadCandidate(const TableBytes& segment, int offset);
  void adopt(Candidate candidate);
  void traceData() const;

  void clearRecords();
  int parseStructure(int position);
  template <class Record>
  int keepFirst(std::unique_ptr<Record>& record, int position);
  template <class Record>
  int append(Records<Record>& records, size_t limit, int position);
  int appendProcessor(int position);
  void tracePosition(int position, int seen) const;
  void traceProcessors() const;

  static int32_t refCount;

  int32_t m_revision = 0;
  int32_t m_majorVersion = 0;
  int32_t m_minorVersion = 0;
  int32_t m_totalLength = 0;
  int32_t m_numTables = 0;
  bool m_available = false;
  TableBytes m_data;
  int32_t m_headerTableLength = 0;
  std::unique_ptr<SMBIOSTable0Data> m_table0;
  std::unique_ptr<SMBIOSTable1Data> m_table1;
  std::unique_ptr<SMBIOSTable2Data> m_table2;
  std::unique_ptr<SMBIOSTable3Data> m_table3;
  Records<SMBIOSTable4Data> m_table4;
  int32_t m_table4Populated = 0;
  std::unique_ptr<SMBIOSTable5Data> m_table5;
  Records<SMBIOSTable6Data> m_table6;
  Records<SMBIOSTable8Data> m_table8;
  Records<SMBIOSTable9Data> m_table9;
  Records<SMBIOSTable10Data> m_table10;
  std::unique_ptr<SMBIOSTable11Data> m_table11;
  std::unique_ptr<SMBIOSTable16Data> m_table16;
  Records<SMBIOSTable17Data> m_table17;
  std::unique_ptr<SMBIOSTable22Data> m_table22;
  std::unique_ptr<SMBIOSTable24Data> m_table24;
};

// The table that all groups share; null until initializeGlobalTable().
extern SMBIOSTable* globalSMBIOSTable;

}  // namespace quenlor
