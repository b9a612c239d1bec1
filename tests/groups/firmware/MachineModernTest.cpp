#include <gtest/gtest.h>

#include "groups/modern/Collectors.h"
#include "tests/groups/ModernRows.h"
#include "tests/groups/firmware/ModernFirmware.h"

namespace quenlor {
namespace {

using test::collectModern;
using test::FakeHost;
using test::Structure;
using test::valueOf;

constexpr char kAbsent[] = "(absent)";

Structure system(const std::string& serial) {
  Structure out(1);
  out.text("Maker").text("Product").byte(0).text(serial);
  return out
      .raw(std::string("\x33\x22\x11\x00\x55\x44\x77\x66\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF", 16))
      .byte(6);
}

Structure enclosure(uint8_t kind) {
  return Structure(3).byte(0).byte(kind).byte(0).text("CS").byte(0);
}

void makeUefi(FakeHost& machine) {
  machine.directories["/sys/firmware"] = {"acpi", "dmi", "efi"};
  const std::string path = "/sys/firmware/efi/efivars/";
  const std::string guid = "-8be4df61-93ca-11d2-aa0d-00e098032b8c";
  machine.files[path + "SecureBoot" + guid] = std::string("\x06\0\0\0\x01", 5);
  machine.files[path + "SetupMode" + guid] = std::string("\x06\0\0\0\0", 5);
}

test::RowValues collectedRow() { return collectModern(group::kMachine, collectMachine).rows.at(0); }

TEST(MachineModernTest, serverOfToday) {
  FakeHost machine;
  makeUefi(machine);
  installFirmware(
      machine,
      {system("SN-1"), enclosure(0x17), Structure(38).byte(1).byte(0x20).word(0).qword(0xCA3),
       Structure(43).raw("INTC").byte(2).byte(0).qword(0).byte(0).qword(8).dword(0)});
  machine.directories["/sys/class/tpm"] = {"tpm0"};
  machine.files["/sys/class/tpm/tpm0/tpm_version_major"] = "2\n";
  machine.directories["/sys/kernel/iommu_groups"] = {"0"};
  machine.directories["/sys/kernel/iommu_groups/0/devices"] = {"0000:00:00.0"};
  machine.directories["/sys/devices/platform"] = {"ipmi_bmc.0"};
  machine.files["/sys/devices/platform/ipmi_bmc.0/firmware_revision"] = "4.40\n";
  EXPECT_EQ(collectedRow(), (test::RowValues{{1, "00112233-4455-6677-8899-aabbccddeeff"},
                                             {2, "SN-1"},
                                             {3, "server"},
                                             {4, "uefi"},
                                             {5, "Y"},
                                             {6, "2.0"},
                                             {7, "INTC"},
                                             {8, "none"},
                                             {14, "Y"},
                                             {16, "kcs"},
                                             {17, "4.40"}}));
}

TEST(MachineModernTest, machineThatTellsNothingHasARowAllTheSame) {
  const FakeHost machine;
  const auto collected = collectModern(group::kMachine, collectMachine);
  ASSERT_EQ(collected.rows.size(), 1u);
  EXPECT_EQ(collected.rows[0], (test::RowValues{{8, "none"}}));
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kComplete);
}

TEST(MachineModernTest, serialNumberOfTheEnclosureServesWhereTheSystemHasNone) {
  FakeHost machine;
  installFirmware(machine, {system("System Serial Number"), enclosure(3)});
  EXPECT_EQ(valueOf(collectedRow(), 2), "CS");
}

TEST(MachineModernTest, hypervisorsUuidServesWhereTheFirmwareHasNone) {
  FakeHost machine;
  machine.files["/sys/hypervisor/uuid"] = "ec2e1916-9099-7caf-fd21-012345abcdef\n";
  EXPECT_EQ(valueOf(collectedRow(), 1), "ec2e1916-9099-7caf-fd21-012345abcdef");
  installFirmware(machine, {system("S")});
  EXPECT_EQ(valueOf(collectedRow(), 1), "00112233-4455-6677-8899-aabbccddeeff");
}

TEST(MachineModernTest, firmwareThatSaysSoMakesAVirtualMachine) {
  FakeHost machine;
  Structure bios(0);
  bios.dword(0).byte(0).byte(0).qword(0).byte(0).byte(0x10);
  installFirmware(machine, {bios, enclosure(1)});
  EXPECT_EQ(valueOf(collectedRow(), 3), "vm");
}

TEST(MachineModernTest, firmwareKnowsATpmWithoutDriver) {
  FakeHost machine;
  const auto tpm = [](uint8_t major, uint8_t minor, uint64_t characteristics) {
    return Structure(43)
        .raw("STM ")
        .byte(major)
        .byte(minor)
        .qword(0)
        .byte(0)
        .qword(characteristics)
        .dword(0);
  };
  installFirmware(machine, {tpm(2, 0, 0)});
  EXPECT_EQ(valueOf(collectedRow(), 6), "2.0");
  EXPECT_EQ(valueOf(collectedRow(), 7), "STM");
  installFirmware(machine, {tpm(1, 2, 0)});
  EXPECT_EQ(valueOf(collectedRow(), 6), "1.2");
  installFirmware(machine, {tpm(2, 0, 1 << 2)});
  EXPECT_EQ(valueOf(collectedRow(), 6), kAbsent);
}

TEST(MachineModernTest, maskedFirmwareLeavesBootModeOpen) {
  FakeHost machine;
  machine.directories["/sys/firmware"] = {};
  EXPECT_EQ(valueOf(collectedRow(), 4), kAbsent);
  EXPECT_EQ(valueOf(collectedRow(), 5), kAbsent);
}

TEST(MachineModernTest, userLacksASerialNumberAndIsToldWhy) {
  FakeHost machine;
  refuseFirmware(machine);
  const auto collected = collectModern(group::kMachine, collectMachine);
  EXPECT_EQ(valueOf(collected.rows.at(0), 2), kAbsent);
  EXPECT_EQ(valueOf(collected.rows.at(0), 3), "laptop");
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kPartial);
}

}  // namespace
}  // namespace quenlor
