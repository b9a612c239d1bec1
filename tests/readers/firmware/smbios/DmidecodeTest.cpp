// What our table reports of each firmware image, beside what dmidecode decodes from the same bytes.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "readers/firmware/smbios/SMBIOSTable.h"
#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"

namespace quenlor {
namespace {

constexpr char kNoProgram[] =
    "dmidecode could not be run. Install it (apt-get install dmidecode): this test compares with "
    "it.";

// --- dmidecode's side ---

struct Decoded {
  int type = -1;
  std::map<std::string, std::string> fields;
};

std::string outputOf(const std::string& commandLine, int& status) {
  FILE* stream = popen(commandLine.c_str(), "r");
  std::string output;
  char piece[4096];
  size_t count = 0;
  while ((count = std::fread(piece, 1, sizeof piece, stream)) > 0) output.append(piece, count);
  status = pclose(stream);
  return output;
}

std::string dmidecode(const test::Firmware& firmware) {
  const std::string path = testing::TempDir() + "quenlor-dump-" + std::to_string(getpid());
  std::ofstream(path, std::ios::binary) << firmware.dump();
  int status = 0;
  const std::string output =
      outputOf("PATH=$PATH:/usr/sbin:/sbin LC_ALL=C dmidecode --from-dump " + path, status);
  std::remove(path.c_str());
  EXPECT_EQ(WEXITSTATUS(status), 0) << kNoProgram;
  return output;
}

std::vector<Decoded> structuresIn(const std::string& output) {
  std::vector<Decoded> structures;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    unsigned handle = 0;
    int type = 0;
    if (std::sscanf(line.c_str(), "Handle 0x%x, DMI type %d", &handle, &type) == 2) {
      structures.push_back({type, {}});
      continue;
    }
    const size_t colon = line.find(':');
    const bool isField = line.starts_with('\t') && !line.starts_with("\t\t");
    if (structures.empty() || !isField || colon == line.npos) continue;
    const std::string value = colon + 2 <= line.size() ? line.substr(colon + 2) : "";
    structures.back().fields.emplace(line.substr(1, colon - 1), value);
  }
  return structures;
}

class DecodedTable {
 public:
  explicit DecodedTable(const test::Firmware& firmware)
      : m_all(structuresIn(dmidecode(firmware))) {}

  std::vector<Decoded> ofType(int type) const {
    std::vector<Decoded> found;
    for (const Decoded& structure : m_all) {
      if (structure.type == type) found.push_back(structure);
    }
    return found;
  }

 private:
  std::vector<Decoded> m_all;
};

// --- our side, in dmidecode's words ---

// dmidecode shows every byte that is not printable ASCII as a dot, as our traces do.
std::string shown(const char* text) {
  if (text == nullptr) return "Not Specified";
  std::string clean(text);
  SMBIOSTableData::removeInvalidChars(clean.data(), text);
  return clean;
}

// "512 kB", "4 GB" and so on in KB.
std::optional<uint64_t> kilobytes(const std::string& size) {
  uint64_t amount = 0;
  char unit[8] = "";
  if (std::sscanf(size.c_str(), "%lu %7s", &amount, unit) != 2) return std::nullopt;
  const std::map<std::string, uint64_t> factors = {
      {"kB", 1}, {"KB", 1}, {"MB", 1 << 10}, {"GB", 1 << 20}, {"TB", 1 << 30}};
  return amount * factors.at(unit);
}

std::string megahertz(unsigned speed) {
  return speed == 0 ? "Unknown" : std::to_string(speed) + " MHz";
}

// From 2.6 on dmidecode shows the first three fields of a UUID as little-endian numbers; ours are
// the bytes as stored.
std::string storedBytes(std::string uuid, bool isSwapped) {
  if (uuid.find("Not ") == 0) return "null";
  std::erase(uuid, '-');
  for (char& digit : uuid) digit = static_cast<char>(std::toupper(digit));
  if (!isSwapped) return uuid;
  const auto byte = [&uuid](size_t i) { return uuid.substr(2 * i, 2); };
  std::string bytes;
  for (const size_t i : {3U, 2U, 1U, 0U, 5U, 4U, 7U, 6U}) bytes += byte(i);
  return bytes + uuid.substr(16);
}

class DmidecodeTest : public testing::TestWithParam<std::string> {
 protected:
  DmidecodeTest()
      : m_firmware(*test::firmwareNamed(GetParam())),
        m_shared(m_firmware),
        m_decoded(m_firmware),
        m_table(*globalSMBIOSTable) {}

  using Fields = std::vector<std::pair<const char*, const char*>>;

  void expectFields(const Decoded& decoded, const Fields& fields) {
    for (const auto& [name, text] : fields) {
      ASSERT_EQ(decoded.fields.count(name), 1u) << name;
      EXPECT_EQ(shown(text), decoded.fields.at(name)) << name;
    }
  }

  // The decoded structure of a type of which we keep the first; both or none must exist.
  std::optional<Decoded> single(int type, const void* record) {
    const auto found = m_decoded.ofType(type);
    EXPECT_EQ(found.empty(), record == nullptr) << "type " << type;
    return found.empty() || record == nullptr ? std::nullopt : std::optional(found.front());
  }

  std::vector<Decoded> all(int type, int total) {
    std::vector<Decoded> found = m_decoded.ofType(type);
    EXPECT_EQ(static_cast<int>(found.size()), total) << "type " << type;
    found.resize(static_cast<size_t>(total));
    return found;
  }

  int minor() const { return m_table.getMinorVersion(); }
  // Versions whose minor number is above 2: see the records.
  bool hasMakersFields() const { return minor() > 2; }

  test::Firmware m_firmware;
  test::SharedTable m_shared;
  DecodedTable m_decoded;
  const SMBIOSTable& m_table;
};

TEST_P(DmidecodeTest, bios) {
  const SMBIOSTable0Data* bios = m_table.getTable0();
  const auto decoded = single(0, bios);
  if (!decoded) return;
  expectFields(*decoded, {{"Vendor", bios->getVendor()},
                          {"Version", bios->getVersion()},
                          {"Release Date", bios->getReleaseDate()}});
  EXPECT_EQ(kilobytes(decoded->fields.at("ROM Size")), bios->getROMSizeKB());
}

TEST_P(DmidecodeTest, systemBoardAndEnclosure) {
  const SMBIOSTable1Data* system = m_table.getTable1();
  if (const auto decoded = single(1, system)) {
    expectFields(*decoded, {{"Manufacturer", system->getManufacturer()},
                            {"Product Name", system->getProduct()},
                            {"Version", system->getVersion()},
                            {"Serial Number", system->getSerialNumber()}});
  }
  const SMBIOSTable2Data* board = m_table.getTable2();
  if (const auto decoded = single(2, board)) {
    expectFields(*decoded, {{"Manufacturer", board->getManufacturer()},
                            {"Product Name", board->getProduct()},
                            {"Version", board->getVersion()},
                            {"Serial Number", board->getSerialNumber()}});
  }
  const SMBIOSTable3Data* enclosure = m_table.getTable3();
  if (const auto decoded = single(3, enclosure)) {
    expectFields(*decoded, {{"Manufacturer", enclosure->getManufacturer()},
                            {"Version", enclosure->getVersion()},
                            {"Serial Number", enclosure->getSerialNumber()},
                            {"Asset Tag", enclosure->getAssetTag()}});
    EXPECT_EQ((enclosure->getType() & 0x80) != 0, decoded->fields.at("Lock") == "Present");
  }
}

TEST_P(DmidecodeTest, uuid) {
  const SMBIOSTable1Data* system = m_table.getTable1();
  const auto decoded = single(1, system);
  if (!decoded) return;
  const char* uuid = system->getUUIDAsString();
  if (minor() == 0) {
    EXPECT_EQ(uuid, nullptr);  // the rule that differs: no UUID in tables of 3.0
    return;
  }
  const bool isSwapped = m_table.getRevision() >= 0x206;
  EXPECT_EQ(uuid == nullptr ? "null" : uuid, storedBytes(decoded->fields.at("UUID"), isSwapped));
}

TEST_P(DmidecodeTest, processors) {
  const auto decoded = all(4, m_table.getTable4Total());
  int populated = 0;
  for (size_t i = 0; i < decoded.size(); ++i) {
    const SMBIOSTable4Data& cpu = *m_table.getTable4(static_cast<int>(i));
    const auto& fields = decoded[i].fields;
    expectFields(decoded[i], {{"Socket Designation", cpu.getSocket()},
                              {"Manufacturer", cpu.getManufacturer()},
                              {"Version", cpu.getVersion()}});
    EXPECT_EQ(fields.at("External Clock"), megahertz(cpu.getExternalClock()));
    EXPECT_EQ(fields.at("Max Speed"), megahertz(cpu.getMaxSpeed()));
    EXPECT_EQ(fields.at("Current Speed"), megahertz(cpu.getCurrentSpeed()));
    EXPECT_EQ(fields.at("Status").starts_with("Populated"), cpu.isPopulated());
    EXPECT_EQ(fields.at("Type") == "Central Processor", cpu.getType() == 3);
    if (cpu.getVoltage() != 0) {
      EXPECT_DOUBLE_EQ(std::strtod(fields.at("Voltage").c_str(), nullptr), cpu.getVoltageInVolts());
    }
    if (hasMakersFields()) {
      expectFields(decoded[i],
                   {{"Serial Number", cpu.getSerialNumber()}, {"Asset Tag", cpu.getAssetTag()}});
    } else {
      EXPECT_EQ(cpu.getSerialNumber(), nullptr);
    }
    if (cpu.isPopulated()) ++populated;
  }
  EXPECT_EQ(m_table.getTable4PopulatedTotal(), populated);
}

TEST_P(DmidecodeTest, memoryControllerAndModules) {
  const SMBIOSTable5Data* controller = m_table.getTable5();
  if (const auto decoded = single(5, controller)) {
    EXPECT_EQ(decoded->fields.at("Associated Memory Slots"),
              std::to_string(controller->getNumAssocMemorySlots()));
    EXPECT_EQ(kilobytes(decoded->fields.at("Maximum Memory Module Size")),
              uint64_t{1} << (controller->getMaximumMemoryModuleSize() + 10));
  }
  const auto decoded = all(6, m_table.getTable6Total());
  for (size_t i = 0; i < decoded.size(); ++i) {
    const SMBIOSTable6Data& module = *m_table.getTable6(static_cast<int>(i));
    expectFields(decoded[i], {{"Socket Designation", module.getSocketDesignation()}});
    const auto size = kilobytes(decoded[i].fields.at("Installed Size"));
    const int64_t sizeKB =
        size ? static_cast<int64_t>(*size) : SMBIOSTable6Data::kUnknownSize * 1024;
    EXPECT_EQ(module.getInstalledSizeMB() * 1024, sizeKB);
  }
}

TEST_P(DmidecodeTest, memoryArrayAndDevices) {
  const SMBIOSTable16Data* array = m_table.getTable16();
  if (const auto decoded = single(16, array)) {
    EXPECT_EQ(kilobytes(decoded->fields.at("Maximum Capacity")), array->getMaxCapacity());
    EXPECT_EQ(decoded->fields.at("Number Of Devices"), std::to_string(array->getNumMemDevices()));
  }
  const auto decoded = all(17, m_table.getTable17Total());
  for (size_t i = 0; i < decoded.size(); ++i) {
    const SMBIOSTable17Data& device = *m_table.getTable17(static_cast<int>(i));
    expectFields(decoded[i], {{"Locator", device.getDeviceLocator()},
                              {"Bank Locator", device.getBankLocator()}});
    EXPECT_EQ(kilobytes(decoded[i].fields.at("Size")).value_or(0), device.getSizeKB());
    if (!hasMakersFields()) {
      EXPECT_EQ(device.getSerialNumber(), nullptr);
    } else if (device.getSize() != 0) {  // dmidecode leaves the rest of empty sockets out or dashes
      expectFields(decoded[i], {{"Manufacturer", device.getManufacturer()},
                                {"Serial Number", device.getSerialNumber()},
                                {"Asset Tag", device.getAssetTag()},
                                {"Part Number", device.getPartNumber()}});
    }
  }
}

TEST_P(DmidecodeTest, connectorsSlotsAndDevices) {
  const auto connectors = all(8, m_table.getTable8Total());
  for (size_t i = 0; i < connectors.size(); ++i) {
    const SMBIOSTable8Data& port = *m_table.getTable8(static_cast<int>(i));
    expectFields(connectors[i], {{"Internal Reference Designator", port.getInternalDesignator()},
                                 {"External Reference Designator", port.getExternalDesignator()}});
  }
  const auto slots = all(9, m_table.getTable9Total());
  for (size_t i = 0; i < slots.size(); ++i) {
    const SMBIOSTable9Data& slot = *m_table.getTable9(static_cast<int>(i));
    expectFields(slots[i], {{"Designation", slot.getSlotDesignation()}});
    EXPECT_EQ(slots[i].fields.at("ID"), std::to_string(slot.getSlotID()));
  }
  const auto devices = all(10, m_table.getTable10Total());
  for (size_t i = 0; i < devices.size(); ++i) {
    const SMBIOSTable10Data& device = *m_table.getTable10(static_cast<int>(i));
    expectFields(devices[i], {{"Description", device.getDescription()}});
    EXPECT_EQ(devices[i].fields.at("Status") == "Enabled", device.isEnabled());
  }
}

TEST_P(DmidecodeTest, powerOnPassword) {
  const SMBIOSTable24Data* security = m_table.getTable24();
  const auto decoded = single(24, security);
  if (!decoded) return;
  const char* const names[] = {"Disabled", "Enabled", "Not Implemented", "Unknown"};
  EXPECT_EQ(decoded->fields.at("Power-On Password Status"),
            names[static_cast<uint8_t>(security->getHWSecStatus()) >> 6]);
}

std::vector<std::string> imagesWithATable() {
  std::vector<std::string> names = test::firmwareNames();
  std::erase(names, "empty");
  return names;
}

std::string testName(const testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  return name;
}

INSTANTIATE_TEST_SUITE_P(Image, DmidecodeTest, testing::ValuesIn(imagesWithATable()), testName);

}  // namespace
}  // namespace quenlor
