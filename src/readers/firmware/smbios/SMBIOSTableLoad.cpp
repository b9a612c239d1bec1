// Finds the machine's structure table by the "_DMI_" header in the F0000 segment. Apart from the
// search for the "_SM_" entry point on purpose: this one needs neither alignment nor checksums, and
// so still finds the table of firmware that got one of them wrong.
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "log/CcLogWrapper.h"
#include "readers/firmware/memory/BIOSROM.h"
#include "readers/firmware/smbios/SMBIOSTable.h"

namespace quenlor {
namespace {

constexpr char kSourcePath[] = "../../../src/invscan/SMBIOS/SMBIOSTable.cpp";
constexpr TraceFunction at{kSourcePath, "SMBIOSTable()"};

constexpr uint64_t kSegmentAddress = 0xF0000;
constexpr int kSegmentSize = 65536;
constexpr std::string_view kAnchor = "_DMI_";
constexpr int kStructureHeaderSize = 4;

constexpr int kTraceLineBytes = 16;

int readPhysical(TableBytes& bytes, uint64_t address) {
  return BIOSROM::getPhysMem(bytes.data(), bytes.size(), address,
                             static_cast<size_t>(bytes.size()));
}

bool isPrintable(unsigned char byte) { return byte >= ' ' && byte <= '~'; }

}  // namespace

// The fields that follow the "_DMI_" text.
struct SMBIOSTable::DmiHeader {
  int tableLength = 0;
  uint32_t address = 0;
  int numTables = 0;
  int major = 0;
  int minor = 0;

  DmiHeader(const TableBytes& segment, int offset);
  int revision() const { return major << 8 | minor; }
};

// What one "_DMI_" text leads to.
struct SMBIOSTable::Candidate {
  DmiHeader header;
  TableBytes bytes;
  bool wasRead;

  // Common firmware of virtual machines holds the text "_DMI_" as a constant ahead of the real
  // header. What follows it, taken as fields, names an address of ordinary memory; reading that
  // succeeds.
  bool isTable() const {
    return bytes.size() < kStructureHeaderSize || bytes[1] >= kStructureHeaderSize;
  }
};

SMBIOSTable::DmiHeader::DmiHeader(const TableBytes& segment, int offset) {
  CcLogWrapper* log = getCcLogHw();
  tableLength = IntelByteBuffer::readUSHORT(segment, offset + 6);
  log->traceMAX(at(), "hardware %s%d", "tablelen=", tableLength);
  const unsigned offsetPart = IntelByteBuffer::readUSHORT(segment, offset + 8);
  const unsigned segmentPart = IntelByteBuffer::readULONG(segment, offset + 10) & 0xFFFF;
  address = segmentPart << 16 | offsetPart;
  log->traceMAX(at(), "hardware %s%08X %s%04X %s%04X",
                "tableaddr=", IntelByteBuffer::readULONG(segment, offset + 8), "seg=", segmentPart,
                "off=", offsetPart);
  numTables = IntelByteBuffer::readUSHORT(segment, offset + 12);
  log->traceMAX(at(), "hardware %s%d", "numTables=", numTables);
  const uint8_t bcd = IntelByteBuffer::readUCHAR(segment, offset + 14);
  // Without a BCD revision the version bytes of the "_SM_" entry point ahead of this header count.
  major = bcd != 0 ? bcd >> 4 : segment[offset - 10];
  minor = bcd != 0 ? bcd & 15 : segment[offset - 9];
  log->traceMAX(at(), "hardware %s%04X %s%d %s%d", "revision=", static_cast<unsigned>(revision()),
                "major version=", major, "minor version=", minor);
}

SMBIOSTable::Candidate SMBIOSTable::loadCandidate(const TableBytes& segment, int offset) {
  CcLogWrapper* log = getCcLogHw();
  log->traceMAX(at(), "hardware %s%04X", "Found _DMI_ at 000F:", static_cast<unsigned>(offset));
  const DmiHeader header(segment, offset);
  TableBytes bytes(header.tableLength);
  log->traceMAX(at(), "hardware %s %08X %s %d", "Grabbing memory from absolute location",
                header.address, "table length:", header.tableLength);
  const bool wasRead = readPhysical(bytes, header.address) == 0;
  return {header, std::move(bytes), wasRead};
}

void SMBIOSTable::adopt(Candidate candidate) {
  m_revision = candidate.header.revision();
  m_majorVersion = candidate.header.major;
  m_minorVersion = candidate.header.minor;
  m_totalLength = candidate.header.tableLength;
  m_headerTableLength = candidate.header.tableLength;
  m_numTables = candidate.header.numTables;
  m_data = std::move(candidate.bytes);
  m_available = candidate.wasRead;
}

void SMBIOSTable::loadFromMemory() {
  CcLogWrapper* log = getCcLogHw();
  TableBytes segment(kSegmentSize);
  log->traceMAX(at(), "hardware Reading F0000 segment");
  if (readPhysical(segment, kSegmentAddress) != 0) return;
  log->traceMAX(at(), "hardware Looking for _DMI_ signature");
  const std::string_view text(reinterpret_cast<const char*>(segment.data()), kSegmentSize);
  std::optional<Candidate> doubtful;  // the first one that was read and holds no structure
  for (size_t i = text.find(kAnchor); i != text.npos; i = text.find(kAnchor, i + 1)) {
    Candidate candidate = loadCandidate(segment, static_cast<int>(i));
    const bool found = candidate.wasRead && candidate.isTable();
    if (candidate.wasRead && !found) {
      if (!doubtful) doubtful = std::move(candidate);
      continue;
    }
    adopt(std::move(candidate));
    if (found) break;
  }
  if (!m_available && doubtful) adopt(std::move(*doubtful));
  if (m_available) traceData();
}

void SMBIOSTable::traceData() const {
  CcLogWrapper* log = getCcLogHw();
  if (!log->isEnabled(TraceLevel::kMax)) return;
  for (int start = 0; start < m_totalLength; start += kTraceLineBytes) {
    std::string hex;
    std::string characters;
    for (int i = start; i < std::min(start + kTraceLineBytes, m_totalLength); ++i) {
      char digits[4];
      std::snprintf(digits, sizeof digits, "%02X ", m_data[i]);
      hex += digits;
      characters += isPrintable(m_data[i]) ? static_cast<char>(m_data[i]) : '.';
    }
    log->traceMAX(at(), "hardware %04X %s %s %s %s", static_cast<unsigned>(start), hex.c_str(),
                  "--- >", characters.c_str(), "<");
  }
}

}  // namespace quenlor
