#include "readers/platform/Platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;
using namespace std::string_literals;

constexpr char kSecureBoot[] =
    "/sys/firmware/efi/efivars/SecureBoot-8be4df61-93ca-11d2-aa0d-00e098032b8c";
constexpr char kSetupMode[] =
    "/sys/firmware/efi/efivars/SetupMode-8be4df61-93ca-11d2-aa0d-00e098032b8c";
const std::string kOn = "\x06\x00\x00\x00\x01"s;
const std::string kOff = "\x06\x00\x00\x00\x00"s;

class PlatformTest : public testing::Test {
 protected:
  void makeUefi() { machine.directories["/sys/firmware"] = {"acpi", "dmi", "efi", "memmap"}; }

  FakeHost machine;
};

TEST_F(PlatformTest, nothingIsKnownOfAMachineThatShowsNothing) {
  const Platform platform = readPlatform();
  EXPECT_FALSE(platform.bootMode);
  EXPECT_FALSE(platform.secureBoot);
  EXPECT_FALSE(platform.tpmVersion);
  EXPECT_FALSE(platform.tpmMaker);
  EXPECT_FALSE(platform.hasIommu);
  EXPECT_FALSE(platform.bmcFirmware);
  EXPECT_FALSE(platform.hypervisorUuid);
  EXPECT_EQ(platform.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(PlatformTest, bootMode) {
  makeUefi();
  EXPECT_EQ(readPlatform().bootMode, BootMode::kUefi);
  machine.directories["/sys/firmware"] = {"acpi", "memmap"};
  EXPECT_EQ(readPlatform().bootMode, BootMode::kBios);
  machine.directories["/sys/firmware"] = {"dmi"};
  EXPECT_EQ(readPlatform().bootMode, BootMode::kBios);
}

// A container sees an empty directory in its place.
TEST_F(PlatformTest, bootModeOfMaskedFirmwareIsUnknown) {
  machine.directories["/sys/firmware"] = {};
  EXPECT_FALSE(readPlatform().bootMode);
  machine.directories["/sys/firmware"] = {"memmap"};
  EXPECT_FALSE(readPlatform().bootMode);
}

TEST_F(PlatformTest, secureBootIsOnOutsideSetupMode) {
  makeUefi();
  machine.files[kSecureBoot] = kOn;
  machine.files[kSetupMode] = kOff;
  EXPECT_EQ(readPlatform().secureBoot, true);
  machine.files[kSetupMode] = kOn;
  EXPECT_EQ(readPlatform().secureBoot, false);
  machine.files[kSecureBoot] = kOff;
  EXPECT_EQ(readPlatform().secureBoot, false);
}

TEST_F(PlatformTest, secureBootIsUnknownWithoutItsVariables) {
  makeUefi();
  EXPECT_FALSE(readPlatform().secureBoot);
  machine.files[kSecureBoot] = kOn;
  EXPECT_FALSE(readPlatform().secureBoot);
  machine.files[kSetupMode] = kOff;
  EXPECT_EQ(readPlatform().outcome.status(), OutcomeStatus::kComplete);
  machine.openErrors[kSecureBoot] = EACCES;
  const Platform platform = readPlatform();
  EXPECT_FALSE(platform.secureBoot);
  EXPECT_EQ(platform.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(platform.outcome.reason(), "Secure Boot: refused");
}

TEST_F(PlatformTest, onlyTheTwoNamedVariablesAreOpenedAndOnUefiOnly) {
  makeUefi();
  machine.files[kSecureBoot] = kOn;
  machine.files[kSetupMode] = kOff;
  machine.files["/sys/firmware/efi/efivars/Boot0000-8be4df61-93ca-11d2-aa0d-00e098032b8c"] = kOn;
  readPlatform();
  EXPECT_THAT(machine.opened, testing::IsSupersetOf({kSecureBoot, kSetupMode}));
  EXPECT_THAT(machine.opened, testing::Not(testing::Contains(testing::HasSubstr("Boot0000"))));
  machine.opened.clear();
  machine.directories["/sys/firmware"] = {"acpi"};
  readPlatform();
  EXPECT_THAT(machine.opened, testing::Not(testing::Contains(testing::HasSubstr("efivars"))));
}

TEST(PlatformTextTest, efiFlagIsOneByteBehindFourOfAttributes) {
  EXPECT_EQ(parseEfiFlag(kOn), true);
  EXPECT_EQ(parseEfiFlag(kOff), false);
  EXPECT_FALSE(parseEfiFlag(""));
  EXPECT_FALSE(parseEfiFlag("\x06\x00\x00\x00"s));
  EXPECT_FALSE(parseEfiFlag("\x06\x00\x00\x00\x01\x00"s));
  EXPECT_FALSE(parseEfiFlag("\x06\x00\x00\x00\x02"s));
}

TEST_F(PlatformTest, tpmVersionOfTheKernel) {
  machine.directories["/sys/class/tpm"] = {"tpm0"};
  machine.files["/sys/class/tpm/tpm0/tpm_version_major"] = "2\n";
  EXPECT_EQ(readPlatform().tpmVersion, "2.0");
  machine.files["/sys/class/tpm/tpm0/tpm_version_major"] = "1\n";
  EXPECT_EQ(readPlatform().tpmVersion, "1.2");
  machine.files["/sys/class/tpm/tpm0/tpm_version_major"] = "3\n";
  EXPECT_FALSE(readPlatform().tpmVersion);
}

TEST_F(PlatformTest, tpmVersionOfOlderKernels) {
  machine.directories["/sys/class/tpm"] = {"tpm0"};
  EXPECT_FALSE(readPlatform().tpmVersion);
  machine.files["/sys/class/tpm/tpm0/device/description"] = "TPM 2.0 Device\n";
  EXPECT_EQ(readPlatform().tpmVersion, "2.0");
  machine.files["/sys/class/tpm/tpm0/device/caps"] = "Manufacturer: 0x53544d20\nTCG version: 1.2\n";
  EXPECT_EQ(readPlatform().tpmVersion, "1.2");
  EXPECT_EQ(readPlatform().tpmMaker, "STM");
}

TEST_F(PlatformTest, noNodeOfATpmIsOpened) {
  machine.directories["/sys/class/tpm"] = {"tpm0"};
  machine.files["/sys/class/tpm/tpm0/tpm_version_major"] = "2\n";
  readPlatform();
  EXPECT_THAT(machine.opened, testing::Not(testing::Contains(testing::StartsWith("/dev"))));
}

TEST(PlatformTextTest, tpmMakerIsSpelledInANumber) {
  EXPECT_EQ(parseTpmCapsMaker("Manufacturer: 0x49465800\n"), "IFX");
  EXPECT_EQ(parseTpmCapsMaker("TCG version: 1.2\nManufacturer: 0x494e5443\n"), "INTC");
  EXPECT_FALSE(parseTpmCapsMaker(""));
  EXPECT_FALSE(parseTpmCapsMaker("Manufacturer: 0x\n"));
  EXPECT_FALSE(parseTpmCapsMaker("Manufacturer: 0x0\n"));
  EXPECT_FALSE(parseTpmCapsMaker("Manufacturer: 0x123456789\n"));
}

TEST_F(PlatformTest, iommuIsThereWhenAGroupHasADevice) {
  machine.directories["/sys/kernel/iommu_groups"] = {};
  EXPECT_EQ(readPlatform().hasIommu, false);
  machine.directories["/sys/kernel/iommu_groups"] = {"0", "1"};
  machine.directories["/sys/kernel/iommu_groups/0/devices"] = {};
  EXPECT_EQ(readPlatform().hasIommu, false);
  machine.directories["/sys/kernel/iommu_groups/1/devices"] = {"0000:00:00.0"};
  EXPECT_EQ(readPlatform().hasIommu, true);
}

TEST_F(PlatformTest, bmcFirmware) {
  machine.directories["/sys/devices/platform"] = {"serial8250", "ipmi_bmc.0"};
  machine.files["/sys/devices/platform/ipmi_bmc.0/firmware_revision"] = "4.40\n";
  EXPECT_EQ(readPlatform().bmcFirmware, "4.40");
  machine.files["/sys/devices/platform/ipmi_bmc.0/firmware_revision"] = "\n";
  EXPECT_FALSE(readPlatform().bmcFirmware);
}

TEST_F(PlatformTest, hypervisorUuid) {
  machine.files["/sys/hypervisor/uuid"] = "EC2E1916-9099-7CAF-FD21-012345ABCDEF\n";
  EXPECT_EQ(readPlatform().hypervisorUuid, "ec2e1916-9099-7caf-fd21-012345abcdef");
  machine.files["/sys/hypervisor/uuid"] = "00000000-0000-0000-0000-000000000000\n";
  EXPECT_FALSE(readPlatform().hypervisorUuid);
  machine.openErrors["/sys/hypervisor/uuid"] = EACCES;
  EXPECT_FALSE(readPlatform().hypervisorUuid);
  EXPECT_EQ(readPlatform().outcome.reason(), "hypervisor UUID: not root");
}

}  // namespace
}  // namespace quenlor
