// What the firmware tells of the machine (DMTF SMBIOS 2.0 to 3.9), as plain values.
//
// Texts are the firmware's own bytes, fillers included. Everything that the firmware does not tell,
// or says that it does not know, is absent.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Outcome.h"
#include "readers/dmi/DmiEntryPoint.h"

namespace quenlor {

using DmiText = std::optional<std::string>;
using DmiUuid = std::array<uint8_t, 16>;  // in stored order

inline constexpr uint16_t kNoDmiHandle = 0xFFFF;

struct DmiBios {  // type 0
  DmiText vendor, version;
  DmiText date;  // as written, mostly MM/DD/YYYY
  std::optional<uint32_t> romKiB;
  DmiText revision, controllerRevision;  // "major.minor", decimal
  std::optional<bool> isVirtualMachine;  // says so itself; false proves nothing
};

struct DmiSystem {  // type 1
  DmiText manufacturer, product, version, serial, sku, family;
  std::optional<DmiUuid> uuid;  // not when all bits are equal
  // 8-4-4-4-12 in lower case, in the byte order of the table's version; not for constants that
  // makers put into every machine.
  DmiText uuidText;
};

struct DmiBoard {  // type 2
  DmiText manufacturer, product, version, serial, assetTag, location;
  bool isHosting = false;
  std::optional<uint8_t> kind;
};

struct DmiEnclosure {  // type 3
  DmiText manufacturer, version, serial, assetTag, sku;
  std::optional<uint8_t> kind;         // without the lock bit
  std::optional<uint8_t> heightUnits;  // of 1.75 inches
};

struct DmiProcessor {  // type 4
  DmiText socket, manufacturer, version, serial, assetTag, partNumber;
  std::optional<uint8_t> kind;     // 3: central processor
  std::optional<uint16_t> family;  // of the extended list
  std::optional<uint32_t> idEax, idEdx;
  std::optional<uint16_t> externalClockMhz, maxMhz, currentMhz;  // maxMhz is the socket's
  bool isPopulated = false;
  std::optional<uint8_t> status;
  std::optional<uint8_t> upgrade;  // code of the socket
  DmiText socketType;              // name of a socket without a code
  std::optional<uint16_t> cores, enabledCores, threads, enabledThreads;
  std::optional<uint16_t> characteristics;
  std::array<uint16_t, 3> cacheHandles = {kNoDmiHandle, kNoDmiHandle, kNoDmiHandle};  // L1 to L3
};

struct DmiMemoryController {                   // type 5, before 2.1
  std::optional<uint8_t> moduleLimitExponent;  // of MiB
  std::optional<uint8_t> slots;
};

struct DmiMemoryModule {  // type 6, before 2.1
  DmiText socket;
  std::optional<uint16_t> kinds;  // a bit each
  std::optional<uint64_t> installedMiB;
};

struct DmiCache {  // type 7
  uint16_t handle = kNoDmiHandle;
  DmiText designation;
  std::optional<uint8_t> level;  // from 1
  std::optional<bool> isEnabled;
  std::optional<uint64_t> maxKiB, installedKiB;
  std::optional<uint8_t> speedNs;
  std::optional<uint8_t> errorCorrection, kind, associativity;  // codes
};

struct DmiPciAddress {
  uint16_t segment = 0;
  uint8_t bus = 0, device = 0, function = 0;
};

struct DmiSlot {  // type 9
  DmiText designation;
  std::optional<uint8_t> kind, width, usage, length;  // codes
  std::optional<uint16_t> id;
  std::optional<DmiPciAddress> address;
};

struct DmiMemoryArray {                                   // type 16
  std::optional<uint8_t> location, use, errorCorrection;  // codes
  std::optional<uint64_t> maxKiB;
  std::optional<uint16_t> slots;
};

struct DmiMemoryDevice {        // type 17
  std::optional<size_t> array;  // index of its array
  bool isEmpty = false;         // a slot without module
  std::optional<uint64_t> sizeKiB;
  DmiText locator, bankLocator, manufacturer, serial, assetTag, partNumber;
  std::optional<uint8_t> formFactor, kind, technology;  // codes
  std::optional<uint16_t> details;                      // a bit each
  std::optional<uint16_t> totalBits, dataBits;
  std::optional<uint32_t> speedMts, configuredMts;
  std::optional<uint16_t> configuredMillivolts;
  std::optional<uint8_t> rank;
};

enum class DmiBmcInterface : uint8_t { kKcs = 1, kSmic = 2, kBt = 3, kSsif = 4 };

struct DmiManagement {  // type 38
  std::optional<DmiBmcInterface> interface;
  uint8_t specMajor = 0, specMinor = 0;
};

struct DmiPowerSupply {  // type 39
  DmiText location, name, manufacturer, serial, assetTag, partNumber, revision;
  std::optional<uint16_t> maxWatts;
  std::optional<bool> isPresent, isUnplugged;
  std::optional<uint8_t> status;  // code
};

struct DmiTpm {    // type 43
  DmiText vendor;  // four characters at most
  uint8_t specMajor = 0, specMinor = 0;
  std::optional<bool> isSupported;  // false: switched off in the firmware's set-up
};

enum class DmiSource : uint8_t {
  kNone,
  kTable,        // the structures themselves
  kKernelTexts,  // only the texts of types 0 to 3 that the kernel keeps: no version, no lists
};

// Single structures are the first of their type, lists are in table order.
struct DmiTable {
  DmiSource source = DmiSource::kNone;
  std::optional<DmiVersion> version;
  std::optional<DmiBios> bios;
  std::optional<DmiSystem> system;
  std::vector<DmiBoard> boards;
  std::optional<DmiEnclosure> enclosure;
  std::vector<DmiProcessor> processors;
  std::optional<DmiMemoryController> memoryController;
  std::vector<DmiMemoryModule> memoryModules;
  std::vector<DmiCache> caches;
  std::vector<DmiSlot> slots;
  std::vector<DmiMemoryArray> memoryArrays;
  std::vector<DmiMemoryDevice> memoryDevices;
  std::optional<uint8_t> hardwareSecurity;  // settings byte of type 24
  std::optional<DmiManagement> management;
  std::vector<DmiPowerSupply> powerSupplies;
  std::optional<DmiTpm> tpm;
  Outcome outcome;           // of all that is here
  Outcome structureOutcome;  // of what only the structures tell: everything behind types 0 to 3

  // The board that the machine runs on: a hosting board, else a motherboard, else the first; null
  // without boards. Blades and risers have boards of their own.
  const DmiBoard* mainBoard() const;
};

// Decodes the table behind an entry point. Structures shorter than the standard ever allowed are
// left out. The outcome is partial where the table is damaged.
DmiTable decodeDmiTable(std::string_view table, const DmiEntryPoint& entryPoint);

// The entry point's and the table's bytes, as the kernel shows them. No source where the entry
// point is none.
DmiTable decodeDmi(std::string_view entryPoint, std::string_view table);

// 8-4-4-4-12 in lower case: before 2.6 in stored order, from then on with the first three fields
// little-endian. Nothing for identities that are none: all bytes equal, and the constants known.
DmiText dmiUuidText(const DmiUuid& stored, DmiVersion version);
// The same for a text; nothing unless it has that form.
DmiText dmiUuidText(std::string_view text);

}  // namespace quenlor
