// A firmware table of any content as the kernel shows it: read, decoded, every record looked at.
//
// Input: length of the entry point (one byte), the entry point, then the table. The target puts the
// checksums of entry points right.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "readers/dmi/DmiFacts.h"
#include "readers/dmi/DmiNames.h"
#include "readers/dmi/DmiReader.h"
#include "tests/support/FakeHost.h"

namespace {

using namespace quenlor;

constexpr char kEntryPoint[] = "/sys/firmware/dmi/tables/smbios_entry_point";
constexpr char kTable[] = "/sys/firmware/dmi/tables/DMI";

void require(bool condition) {
  if (!condition) std::abort();
}

void mendChecksum(std::string& bytes, size_t from, size_t size, size_t at) {
  if (at >= bytes.size() || from + size > bytes.size()) return;
  bytes[at] = 0;
  unsigned sum = 0;
  for (size_t i = from; i < from + size; ++i) sum += static_cast<unsigned char>(bytes[i]);
  bytes[at] = static_cast<char>(-sum & 0xFF);
}

void mendEntryPoint(std::string& bytes) {
  if (bytes.starts_with("_SM3_")) mendChecksum(bytes, 0, bytes.size(), 5);
  if (bytes.starts_with("_DMI_")) mendChecksum(bytes, 0, 15, 5);
  if (!bytes.starts_with("_SM_")) return;
  mendChecksum(bytes, 16, 15, 21);
  mendChecksum(bytes, 0, bytes.size(), 4);
}

// Names are looked up with whatever code the table has.
void lookUpNames(const DmiTable& table) {
  for (const DmiProcessor& processor : table.processors) {
    dmiProcessorFamily(processor.family.value_or(0), processor.manufacturer.value_or(""));
    dmiProcessorUpgrade(processor.upgrade.value_or(0));
  }
  for (const DmiMemoryDevice& device : table.memoryDevices) {
    dmiMemoryFormFactor(device.formFactor.value_or(0));
    dmiMemoryTechnology(device.technology.value_or(0), device.kind.value_or(0));
  }
  for (const DmiSlot& slot : table.slots) {
    require(dmiSlotType(slot.kind.value_or(0)).size() <= 48);
    dmiSlotWidth(slot.width.value_or(0));
  }
  for (const DmiPowerSupply& supply : table.powerSupplies) {
    dmiPowerStatus(supply.status.value_or(0));
  }
}

// What holds for every table.
void check(const DmiTable& table, size_t tableSize) {
  const size_t records = table.boards.size() + table.processors.size() + table.caches.size() +
                         table.slots.size() + table.memoryDevices.size() +
                         table.memoryArrays.size() + table.powerSupplies.size();
  require(records * 8 <= tableSize + 8);
  require(table.boards.empty() == (table.mainBoard() == nullptr));
  for (const DmiMemoryDevice& device : table.memoryDevices) {
    require(!device.array || *device.array < table.memoryArrays.size());
    require(!device.isEmpty || !device.sizeKiB);
  }
  const bool hasUuid = table.system && table.system->uuidText;
  require(!hasUuid || table.system->uuidText->size() == 36);
  dmiMemoryFacts(table);
  if (table.bios) dmiDate(table.bios->date.value_or(""));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1 || size - 1 < data[0]) return 0;
  const char* bytes = reinterpret_cast<const char*>(data) + 1;
  std::string entryPoint(bytes, data[0]);
  mendEntryPoint(entryPoint);
  test::FakeHost machine;
  machine.files[kEntryPoint] = entryPoint;
  machine.files[kTable] = std::string(bytes + data[0], size - 1 - data[0]);
  const DmiTable table = readDmi();
  require(machine.openDescriptors() == 0);
  require((table.source == DmiSource::kTable) == table.version.has_value());
  if (table.source != DmiSource::kTable) return 0;
  check(table, size - 1 - data[0]);
  lookUpNames(table);
  return 0;
}
