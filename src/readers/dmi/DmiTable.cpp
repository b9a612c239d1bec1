#include "readers/dmi/DmiTable.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "readers/dmi/DmiDecode.h"

namespace quenlor {
namespace {

constexpr uint8_t kMotherboard = 0x0A;

// A table's records while its structures come one after the other.
class Decoder {
 public:
  explicit Decoder(DmiTable& table) : m_table(table) {}

  void add(const DmiStructure& structure);
  void finish();

 private:
  struct Kind {
    uint8_t type;
    uint8_t shortest;  // length that the first version of the standard with this type gave it
    void (Decoder::*decode)(const DmiStructure&);
  };
  static const Kind KINDS[];

  // The first of a type wins, as it does in the kernel: option ROMs add more.
  template <class Record>
  static void keepFirst(std::optional<Record>& kept, const Record& record) {
    if (!kept) kept = record;
  }

  void bios(const DmiStructure& s) { keepFirst(m_table.bios, dmiBiosOf(s)); }
  void system(const DmiStructure& s) {
    keepFirst(m_table.system, dmiSystemOf(s, m_table.version.value_or(DmiVersion{})));
  }
  void board(const DmiStructure& s) { m_table.boards.push_back(dmiBoardOf(s)); }
  void enclosure(const DmiStructure& s) { keepFirst(m_table.enclosure, dmiEnclosureOf(s)); }
  void processor(const DmiStructure& s) { m_table.processors.push_back(dmiProcessorOf(s)); }
  void controller(const DmiStructure& s) {
    keepFirst(m_table.memoryController, dmiMemoryControllerOf(s));
  }
  void module(const DmiStructure& s) { m_table.memoryModules.push_back(dmiMemoryModuleOf(s)); }
  void cache(const DmiStructure& s) { m_table.caches.push_back(dmiCacheOf(s)); }
  void slot(const DmiStructure& s) { m_table.slots.push_back(dmiSlotOf(s)); }
  void array(const DmiStructure& s);
  void device(const DmiStructure& s);
  void security(const DmiStructure& s) {
    keepFirst(m_table.hardwareSecurity, s.byte(0x04).value_or(0));
  }
  void management(const DmiStructure& s) { keepFirst(m_table.management, dmiManagementOf(s)); }
  void supply(const DmiStructure& s) { m_table.powerSupplies.push_back(dmiPowerSupplyOf(s)); }
  void tpm(const DmiStructure& s) { keepFirst(m_table.tpm, dmiTpmOf(s)); }

  DmiTable& m_table;
  std::map<uint16_t, size_t> m_firstArrays;   // by handle
  std::map<uint16_t, size_t> m_latestArrays;  // by handle
  std::map<size_t, uint16_t> m_withoutArray;  // device to the handle that it names
};

const Decoder::Kind Decoder::KINDS[] = {
    {0, 0x12, &Decoder::bios},        {1, 0x08, &Decoder::system},
    {2, 0x08, &Decoder::board},       {3, 0x09, &Decoder::enclosure},
    {4, 0x1A, &Decoder::processor},   {5, 0x0F, &Decoder::controller},
    {6, 0x0C, &Decoder::module},      {7, 0x0F, &Decoder::cache},
    {9, 0x0C, &Decoder::slot},        {16, 0x0F, &Decoder::array},
    {17, 0x15, &Decoder::device},     {24, 0x05, &Decoder::security},
    {38, 0x10, &Decoder::management}, {39, 0x10, &Decoder::supply},
    {43, 0x1B, &Decoder::tpm},
};

void Decoder::add(const DmiStructure& structure) {
  for (const Kind& kind : KINDS) {
    if (kind.type != structure.type()) continue;
    if (structure.length() >= kind.shortest) (this->*kind.decode)(structure);
    return;
  }
}

void Decoder::array(const DmiStructure& s) {
  const size_t index = m_table.memoryArrays.size();
  m_table.memoryArrays.push_back(dmiMemoryArrayOf(s));
  m_firstArrays.emplace(s.handle(), index);
  m_latestArrays[s.handle()] = index;
}

// Handles are not always unique: the nearest array before the device is meant.
void Decoder::device(const DmiStructure& s) {
  DmiMemoryDevice device = dmiMemoryDeviceOf(s);
  const uint16_t handle = s.word(0x04).value_or(kNoDmiHandle);
  const auto found = m_latestArrays.find(handle);
  if (found != m_latestArrays.end()) {
    device.array = found->second;
  } else {
    m_withoutArray[m_table.memoryDevices.size()] = handle;
  }
  m_table.memoryDevices.push_back(std::move(device));
}

// Structures come in any order, so a device may stand before its array. A lone array has all
// devices, whatever they say.
void Decoder::finish() {
  for (const auto& [device, handle] : m_withoutArray) {
    const auto found = m_firstArrays.find(handle);
    if (found != m_firstArrays.end()) {
      m_table.memoryDevices[device].array = found->second;
    } else if (m_table.memoryArrays.size() == 1) {
      m_table.memoryDevices[device].array = 0;
    }
  }
}

}  // namespace

const DmiBoard* DmiTable::mainBoard() const {
  const auto first = [this](auto matches) -> const DmiBoard* {
    const auto found = std::find_if(boards.begin(), boards.end(), matches);
    return found == boards.end() ? nullptr : &*found;
  };
  const DmiBoard* board = first([](const DmiBoard& candidate) { return candidate.isHosting; });
  if (board == nullptr) {
    board = first([](const DmiBoard& candidate) { return candidate.kind == kMotherboard; });
  }
  return board != nullptr || boards.empty() ? board : &boards.front();
}

DmiTable decodeDmiTable(std::string_view table, const DmiEntryPoint& entryPoint) {
  DmiTable decoded;
  decoded.source = DmiSource::kTable;
  decoded.version = entryPoint.version;
  const DmiWalk walk = walkDmiTable(table, entryPoint);
  Decoder decoder(decoded);
  for (const DmiStructure& structure : walk.structures) decoder.add(structure);
  decoder.finish();
  if (walk.isDamaged) decoded.outcome.note(OutcomeStatus::kPartial, "firmware table: damaged");
  decoded.structureOutcome = decoded.outcome;
  return decoded;
}

DmiTable decodeDmi(std::string_view entryPoint, std::string_view table) {
  if (const auto parsed = parseDmiEntryPoint(entryPoint)) return decodeDmiTable(table, *parsed);
  DmiTable none;
  none.outcome.note(OutcomeStatus::kNoSource, "firmware table: no entry point");
  none.structureOutcome = none.outcome;
  return none;
}

}  // namespace quenlor
