#include "tests/firmware/Structures.h"

namespace quenlor::test {
namespace {

constexpr unsigned kNoHandle = 0xFFFF;
constexpr unsigned kNoErrorInformation = 0xFFFE;
constexpr size_t kHeaderSize = 4;

std::string bytesOf(const Uuid& uuid) { return {uuid.begin(), uuid.end()}; }

}  // namespace

Structure& Structure::byte(unsigned value) {
  m_fields += static_cast<char>(value);
  return *this;
}

Structure& Structure::word(unsigned value) { return byte(value & 0xFF).byte(value >> 8 & 0xFF); }

Structure& Structure::dword(uint32_t value) { return word(value & 0xFFFF).word(value >> 16); }

Structure& Structure::qword(uint64_t value) {
  return dword(static_cast<uint32_t>(value)).dword(static_cast<uint32_t>(value >> 32));
}

Structure& Structure::raw(std::string_view bytes) {
  m_fields += bytes;
  return *this;
}

Structure& Structure::text(const std::string& text) {
  if (text.empty()) return byte(0);
  m_strings.push_back(text);
  return byte(static_cast<unsigned>(m_strings.size()));
}

Structure& Structure::strings(const std::vector<std::string>& texts) {
  m_strings.insert(m_strings.end(), texts.begin(), texts.end());
  return *this;
}

Structure& Structure::claimLength(uint8_t length) {
  m_claimedLength = length;
  return *this;
}

std::string Structure::encode(uint16_t handle) const {
  const int length =
      m_claimedLength >= 0 ? m_claimedLength : static_cast<int>(kHeaderSize + m_fields.size());
  std::string bytes{static_cast<char>(m_type), static_cast<char>(length),
                    static_cast<char>(handle & 0xFF), static_cast<char>(handle >> 8)};
  bytes += m_fields;
  for (const std::string& text : m_strings) bytes += text + '\0';
  if (m_strings.empty()) bytes += '\0';
  return bytes + '\0';
}

Structure structureOf(const Bios& bios, Version version) {
  Structure out(0);
  out.text(bios.vendor).text(bios.version).word(0xE000).text(bios.date).byte(bios.romSize);
  out.dword(bios.characteristics).dword(0).byte(bios.extension1);
  if (version.atLeast(2, 3)) out.byte(0x01);
  if (version.atLeast(2, 4)) out.byte(1).byte(2).byte(0xFF).byte(0xFF);
  return out;
}

Structure structureOf(const System& system, Version version) {
  Structure out(1);
  out.text(system.manufacturer).text(system.product).text(system.version).text(system.serial);
  if (version.atLeast(2, 1)) out.raw(bytesOf(system.uuid)).byte(6);
  if (version.atLeast(2, 4)) out.text(system.sku).text(system.family);
  return out;
}

Structure structureOf(const Baseboard& board, Version) {
  Structure out(2);
  return out.text(board.manufacturer).text(board.product).text(board.version).text(board.serial);
}

Structure structureOf(const Enclosure& enclosure, Version version) {
  Structure out(3);
  out.text(enclosure.manufacturer).byte(enclosure.type).text(enclosure.version);
  out.text(enclosure.serial).text(enclosure.assetTag);
  if (version.atLeast(2, 1)) out.byte(3).byte(3).byte(3).byte(2);
  return out;
}

Structure structureOf(const Processor& processor, Version version) {
  Structure out(4);
  out.text(processor.socket).byte(processor.type).byte(processor.family);
  out.text(processor.manufacturer).dword(processor.eax).dword(processor.edx);
  out.text(processor.version).byte(processor.voltage).word(processor.externalClock);
  out.word(processor.maxSpeed).word(processor.currentSpeed);
  out.byte(processor.status).byte(processor.upgrade);
  if (version.atLeast(2, 1)) out.word(kNoHandle).word(kNoHandle).word(kNoHandle);
  if (version.atLeast(2, 3)) {
    out.text(processor.serial).text(processor.assetTag).text(processor.partNumber);
  }
  if (version.atLeast(2, 5)) out.byte(1).byte(1).byte(1).word(0x04);
  if (version.atLeast(2, 6)) out.word(processor.family);
  return out;
}

// Without slot handles beyond the count: none of the readers follows them.
Structure structureOf(const MemoryController& controller, Version version) {
  Structure out(5);
  out.byte(3).byte(4).byte(3).byte(3).byte(controller.maximumModuleSize);
  out.word(0x04).word(0x0500).byte(0x02).byte(controller.slots);
  for (unsigned i = 0; i < controller.slots; ++i) out.word(kNoHandle);
  if (version.atLeast(2, 1)) out.byte(0x04);
  return out;
}

Structure structureOf(const MemoryModule& module, Version) {
  Structure out(6);
  out.text(module.socket).byte(0xFF).byte(10).word(module.type);
  return out.byte(module.installedSize).byte(module.installedSize).byte(0);
}

Structure structureOf(const Connector& connector, Version) {
  Structure out(8);
  out.text(connector.internalName).byte(connector.internalType);
  return out.text(connector.externalName).byte(connector.externalType).byte(connector.portType);
}

Structure structureOf(const Slot& slot, Version version) {
  Structure out(9);
  out.text(slot.name).byte(slot.type).byte(slot.width).byte(slot.usage).byte(slot.length);
  out.word(slot.id).byte(0x04);
  if (version.atLeast(2, 1)) out.byte(0x01);
  return out;
}

Structure structureOf(const OnBoardDevice& device, Version) {
  Structure out(10);
  return out.byte(device.type).text(device.description);
}

Structure structureOf(const OemStrings& oem, Version) {
  Structure out(11);
  return out.byte(static_cast<unsigned>(oem.texts.size())).strings(oem.texts);
}

Structure structureOf(const MemoryArray& array, Version version) {
  Structure out(16);
  out.byte(3).byte(3).byte(5).dword(array.maximumKB).word(kNoErrorInformation).word(array.devices);
  if (version.atLeast(2, 7)) out.qword(0);
  return out;
}

Structure structureOf(const MemoryDevice& device, Version version) {
  Structure out(17);
  out.word(kNoHandle).word(kNoErrorInformation).word(72).word(64).word(device.size);
  out.byte(device.formFactor).byte(0).text(device.locator).text(device.bank);
  out.byte(device.type).word(device.detail);
  if (version.atLeast(2, 3)) {
    out.word(device.speed).text(device.manufacturer).text(device.serial);
    out.text(device.assetTag).text(device.partNumber);
  }
  if (version.atLeast(2, 6)) out.byte(0);
  if (version.atLeast(2, 7)) out.dword(0).word(device.speed);
  if (version.atLeast(2, 8)) out.word(0).word(0).word(0);
  return out;
}

Structure structureOf(const Battery& battery, Version) {
  Structure out(22);
  out.text(battery.location).text(battery.manufacturer).text(battery.date).text(battery.serial);
  return out.text(battery.name).byte(2).word(0).word(0);
}

Structure structureOf(const HardwareSecurity& security, Version) {
  Structure out(24);
  return out.byte(security.settings);
}

Structure structureOf(const EndOfTable&, Version) { return Structure(127); }

}  // namespace quenlor::test
