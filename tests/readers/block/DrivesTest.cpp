#include <gtest/gtest.h>

#include <string>

#include "readers/block/BlockTree.h"
#include "readers/block/Drive.h"
#include "readers/block/NvmeDrive.h"
#include "readers/block/ScsiDrive.h"
#include "tests/readers/block/BlockMachine.h"

namespace quenlor {
namespace {

using test::AtaPage;
using test::Attributes;
using test::BlockMachine;
using test::vpdPage;

const std::string kAhci = "pci0000:00/0000:00:1f.2";

DriveList drivesOf(bool isGuest = false) {
  const BlockTree tree = readBlockTree();
  return readDrives(tree, isGuest);
}

Attributes block(const std::string& rotational = "1") {
  return {{"dev", "8:0"},
          {"size", "1000"},
          {"ro", "0"},
          {"removable", "0"},
          {"queue/rotational", rotational},
          {"queue/logical_block_size", "512"},
          {"queue/physical_block_size", "4096"}};
}

void addSata(BlockMachine& machine, const std::string& name, int port, const Attributes& unit,
             const Attributes& disk) {
  const std::string ata = kAhci + "/ata" + std::to_string(port + 4);
  const std::string host = std::to_string(port + 2);
  machine.files["/sys/devices/" + ata + "/ata_port/ata" + std::to_string(port + 4) + "/port_no"] =
      std::to_string(port) + "\n";
  machine.addScsiDisk(name, ata + "/host" + host + "/target" + host + ":0:0", host + ":0:0:0", unit,
                      disk);
  machine.addHost("host" + host, "ahci");
}

Attributes ataUnit() {
  return {{"type", "0"},
          {"vendor", "ATA     "},
          {"model", "WDC WD40EFRX-68N"},
          {"rev", "0A82"},
          {"state", "running"},
          {"wwid", "naa.50014ee2b5a1c2d3"},
          {"vpd_pg80", vpdPage(0x80, "     WD-WCC4N1234567")}};
}

std::string ataPage() {
  return AtaPage()
      .text(10, 19, "     WD-WCC4N1234567")
      .text(23, 26, "82.00A82")
      .text(27, 46, "WDC WD40EFRX-68N32N0")
      .word(128, 0x0021)
      .word(217, 5400)
      .bytes();
}

TEST(Drives, sataDiskIsWhole) {
  BlockMachine machine;
  Attributes unit = ataUnit();
  unit["vpd_pg89"] = ataPage();
  addSata(machine, "sda", 3, unit, block());
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 1u);
  const Drive& drive = list.drives[0];
  EXPECT_EQ(drive.deviceName, "/dev/sda");
  EXPECT_EQ(drive.bus, "sata");
  EXPECT_EQ(drive.vendor, "WDC");
  EXPECT_EQ(drive.model, "WDC WD40EFRX-68N32N0");
  EXPECT_EQ(drive.serial, "WD-WCC4N1234567");
  EXPECT_EQ(drive.firmware, "82.00A82");
  EXPECT_EQ(drive.worldWideName, "naa.50014ee2b5a1c2d3");
  EXPECT_EQ(drive.driver, "ahci");
  EXPECT_EQ(drive.state, "running");
  EXPECT_EQ(drive.location, "0000:00:1f.2/3");
  EXPECT_EQ(drive.sizeBytes, 512000u);
  EXPECT_EQ(drive.logicalSectorBytes, 512u);
  EXPECT_EQ(drive.physicalSectorBytes, 4096u);
  EXPECT_EQ(drive.rotation, Rotation::kSpinning);
  EXPECT_EQ(drive.security, DriveSecurity::kDisabled);
  EXPECT_FALSE(drive.paths);
  EXPECT_EQ(list.outcome.status(), OutcomeStatus::kComplete);
  EXPECT_TRUE(machine.readEachOnce());
}

TEST(Drives, portThatTwoDrivesShareIsReadOnce) {
  BlockMachine machine;
  addSata(machine, "sda", 3, ataUnit(), block());
  machine.addScsiDisk("sdb", kAhci + "/ata7/host5/target5:1:0", "5:0:1:0", ataUnit(), block());
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 2u);
  EXPECT_EQ(list.drives[0].location, "0000:00:1f.2/3");
  EXPECT_EQ(list.drives[1].location, "0000:00:1f.2/3/0:1:0");
  EXPECT_TRUE(machine.readEachOnce());
}

TEST(Drives, withoutThePageUdevKnowsTheModel) {
  BlockMachine machine;
  addSata(machine, "sda", 1, ataUnit(), block());
  machine.addUdev("8:0",
                  "E:ID_BUS=ata\nE:ID_MODEL_ENC=WDC\\x20WD40EFRX-68N32N0\\x20\\x20\n"
                  "E:ID_REVISION=82.00A82\nE:ID_ATA_ROTATION_RATE_RPM=0\n"
                  "E:ID_ATA_FEATURE_SET_SECURITY=1\nE:ID_ATA_FEATURE_SET_SECURITY_ENABLED=1\n");
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 1u);
  EXPECT_EQ(list.drives[0].model, "WDC WD40EFRX-68N32N0");
  EXPECT_EQ(list.drives[0].firmware, "82.00A82");
  EXPECT_EQ(list.drives[0].rotation, Rotation::kSolidState);
  EXPECT_EQ(list.drives[0].security, DriveSecurity::kEnabled);
  EXPECT_EQ(list.outcome.status(), OutcomeStatus::kComplete);
}

TEST(Drives, modelOfSixteenCharactersIsSaidToBeCut) {
  BlockMachine machine;
  addSata(machine, "sda", 1, ataUnit(), block());
  addSata(machine, "sdb", 2, ataUnit(), block());
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 2u);
  EXPECT_EQ(list.drives[0].model, "WDC WD40EFRX-68N");
  EXPECT_EQ(list.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(list.outcome.reason(), "models: ATA drives cut to 16 characters");
  EXPECT_NE(list.drives[0].location, list.drives[1].location);
}

TEST(Drives, flagOfTurningDisksIsNoProofInGuests) {
  BlockMachine machine;
  addSata(machine, "sda", 1, ataUnit(), block("1"));
  addSata(machine, "sdb", 2, ataUnit(), block("0"));
  const DriveList bare = drivesOf(false);
  EXPECT_EQ(bare.drives.at(0).rotation, Rotation::kSpinning);
  EXPECT_EQ(bare.drives.at(1).rotation, Rotation::kSolidState);
  const DriveList guest = drivesOf(true);
  EXPECT_EQ(guest.drives.at(0).rotation, Rotation::kNotTold);
  EXPECT_EQ(guest.drives.at(1).rotation, Rotation::kSolidState);
}

TEST(Drives, usbDisksAndCardReadersLiveBehindTheirPort) {
  BlockMachine machine;
  const std::string host = "pci0000:00/0000:00:14.0/usb2/2-1/2-1.4/2-1.4:1.0/host6/target6:0:0";
  const Attributes unit = {
      {"type", "0"}, {"vendor", "Generic "}, {"model", "SD/MMC"}, {"rev", "1.0"}};
  machine.addScsiDisk("sdb", host, "6:0:0:0", unit, block());
  Attributes empty = block();
  empty["size"] = "0";
  empty["removable"] = "1";
  machine.addScsiDisk("sdc", host, "6:0:0:1", unit, empty);
  machine.addHost("host6", "usb-storage");
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 2u);
  EXPECT_EQ(list.drives[0].bus, "usb");
  EXPECT_EQ(list.drives[0].vendor, "Generic");
  EXPECT_EQ(list.drives[0].location, "0000:00:14.0/1.4");
  EXPECT_EQ(list.drives[0].rotation, Rotation::kNotTold);
  EXPECT_EQ(list.drives[1].location, "0000:00:14.0/1.4/0:0:1");
  EXPECT_EQ(list.outcome.reason(), "serial numbers: some drives tell theirs only when asked");
  EXPECT_FALSE(list.drives[1].sizeBytes);
  EXPECT_EQ(list.drives[1].isRemovable, true);
  EXPECT_EQ(list.drives[0].usbPort, "1.4");
}

TEST(Drives, serialOfUsbDiskComesFromUdev) {
  BlockMachine machine;
  machine.addScsiDisk("sdb", "pci0000:00/0000:00:14.0/usb2/2-1/2-1:1.0/host6/target6:0:0",
                      "6:0:0:0", {{"type", "0"}, {"vendor", "Kingston"}, {"model", "DataTraveler"}},
                      block());
  machine.addUdev("8:0", "E:ID_SERIAL=Kingston_DataTraveler_60A44C\nE:ID_SERIAL_SHORT=60A44C\n");
  EXPECT_EQ(drivesOf().drives.at(0).serial, "60A44C");
}

std::string busBehind(const std::string& way, const std::string& address, const std::string& driver,
                      const std::string& hostClass = "") {
  BlockMachine machine;
  machine.addScsiDisk("sda", way, address, {{"type", "0"}, {"model", "X"}}, block());
  const std::string host = "host" + address.substr(0, address.find(':'));
  machine.addHost(host, driver);
  if (!hostClass.empty()) machine.directories["/sys/class/" + hostClass] = {"hostx", host};
  return drivesOf().drives.at(0).bus;
}

TEST(Drives, busIsToldByTheWayFirst) {
  const std::string pci = "pci0000:00/0000:01:00.0/";
  EXPECT_EQ(busBehind(pci + "host1/rport-1:0-2/target1:0:2", "1:0:2:0", "qla2xxx"), "fc");
  EXPECT_EQ(busBehind(pci + "host1/port-1:0/end_device-1:0/target1:0:0", "1:0:0:0", "mpt3sas"),
            "sas");
  EXPECT_EQ(busBehind("platform/host4/session1/target4:0:0", "4:0:0:1", "iscsi_tcp"), "iscsi");
  EXPECT_EQ(busBehind(pci + "fw1/fw1.0/host4/target4:0:0", "4:0:0:0", "sbp2"), "firewire");
  EXPECT_EQ(busBehind(pci + "ata1/host0/target0:0:0", "0:0:0:0", "ahci"), "sata");
  EXPECT_EQ(busBehind(pci + "ata1/host0/target0:0:0", "0:0:0:0", "sata_sil"), "sata");
  EXPECT_EQ(busBehind(pci + "ata1/host0/target0:0:0", "0:0:0:0", "ata_piix"), "ata");
  EXPECT_EQ(busBehind(pci + "ata1/host0/target0:0:0", "0:0:0:0", "pata_amd"), "ata");
}

TEST(Drives, busIsToldByTheHostsDriverAndClass) {
  const std::string pci = "pci0000:00/0000:01:00.0/host1/target1:0:0";
  EXPECT_EQ(busBehind(pci, "1:0:0:0", "virtio_scsi"), "virtio");
  EXPECT_EQ(busBehind(pci, "1:0:0:0", "vmw_pvscsi"), "vmware");
  EXPECT_EQ(busBehind("LNXSYBUS:00/vmbus/host1/target1:0:0", "1:0:0:0", "storvsc_host"), "hyper-v");
  EXPECT_EQ(busBehind(pci, "1:0:0:0", "lpfc", "fc_host"), "fc");
  EXPECT_EQ(busBehind(pci, "1:0:0:0", "isci", "sas_host"), "sas");
  EXPECT_EQ(busBehind(pci, "1:0:0:0", "mptspi", "spi_host"), "scsi");
  EXPECT_EQ(busBehind(pci, "1:0:0:0", "unheard_of"), "scsi");
}

TEST(Drives, logicalDrivesOfRaidAdaptersAreToldFromDisksPassedThrough) {
  const std::string pci = "pci0000:00/0000:01:00.0/host1/target1:2:0";
  EXPECT_EQ(busBehind(pci, "1:2:0:0", "megaraid_sas"), "raid");
  EXPECT_EQ(busBehind(pci, "1:0:0:0", "megaraid_sas"), "sas");
  EXPECT_EQ(busBehind(pci, "1:1:0:0", "mpt3sas", "sas_host"), "raid");
  EXPECT_EQ(busBehind(pci, "1:0:0:0", "aacraid"), "raid");
  EXPECT_EQ(busBehind(pci, "1:1:0:0", "aacraid"), "sas");
  EXPECT_EQ(busBehind(pci, "1:0:0:0", "smartpqi", "sas_host"), "raid");
}

TEST(Drives, multipathIsOneDriveWithItsPaths) {
  BlockMachine machine;
  const Attributes unit = {{"type", "0"},
                           {"vendor", "HITACHI"},
                           {"model", "OPEN-V"},
                           {"state", "running"},
                           {"wwid", "naa.60060e80164c70000001"}};
  for (const char* target : {"0", "1"}) {
    const std::string host = std::string("host1") + "/rport-1:0-" + target;
    machine.addScsiDisk(std::string("sd") + (target[0] == '0' ? "b" : "c"),
                        "pci0000:00/0000:01:00.0/" + host, std::string("1:0:") + target + ":0",
                        unit, block());
  }
  machine.addScsiDisk("sda", "pci0000:00/0000:02:00.0/host0/target0:0:0", "0:0:0:0",
                      {{"type", "0"}, {"model", "LOCAL"}}, block());
  machine.addDevice("dm-0", "virtual/block",
                    {{"dev", "254:0"},
                     {"size", "1000"},
                     {"ro", "0"},
                     {"dm/name", "mpatha"},
                     {"dm/uuid", "mpath-360060e80164c70000001"}});
  machine.setSlaves("dm-0", {"sdc", "sdb"});
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 2u);
  EXPECT_EQ(list.drives[0].deviceName, "/dev/mapper/mpatha");
  EXPECT_EQ(list.drives[0].model, "OPEN-V");
  EXPECT_EQ(list.drives[0].worldWideName, "naa.60060e80164c70000001");
  EXPECT_EQ(list.drives[0].paths, 2u);
  EXPECT_EQ(list.drives[0].state, "running");
  EXPECT_EQ(list.drives[1].deviceName, "/dev/sda");
  EXPECT_FALSE(list.drives[1].paths);
}

TEST(Drives, placeOfMultipathIsTheFirstInTheMachine) {
  BlockMachine machine;
  machine.addScsiDisk("sda", "pci0000:00/0000:02:00.0/host1/target1:0:0", "1:0:0:0",
                      {{"type", "0"}}, block());
  machine.addScsiDisk("sdb", "pci0000:00/0000:01:00.0/host2/target2:0:0", "2:0:0:0",
                      {{"type", "0"}}, block());
  machine.addDevice("dm-0", "virtual/block",
                    {{"size", "1"}, {"dm/name", "m"}, {"dm/uuid", "mpath-3600508b400010203"}});
  machine.setSlaves("dm-0", {"sda", "sdb"});
  EXPECT_EQ(drivesOf().drives.at(0).location, "0000:01:00.0/0:0:0");
}

TEST(Drives, shortModelWasNotCut) {
  BlockMachine machine;
  Attributes unit = ataUnit();
  unit["model"] = "QEMU HARDDISK   ";
  addSata(machine, "sda", 1, unit, block());
  const DriveList list = drivesOf();
  EXPECT_EQ(list.drives.at(0).model, "QEMU HARDDISK");
  EXPECT_EQ(list.outcome.status(), OutcomeStatus::kComplete);
}

TEST(Drives, multipathWithOneFailedPathHasNoCommonState) {
  BlockMachine machine;
  Attributes unit = {{"type", "0"}, {"state", "running"}};
  machine.addScsiDisk("sda", "pci0000:00/0000:01:00.0/host1/target1:0:0", "1:0:0:0", unit, block());
  unit["state"] = "offline";
  machine.addScsiDisk("sdb", "pci0000:00/0000:01:00.0/host1/target1:0:1", "1:0:1:0", unit, block());
  machine.addDevice("dm-0", "virtual/block",
                    {{"size", "1"}, {"dm/name", "m"}, {"dm/uuid", "mpath-3600508b400010203"}});
  machine.setSlaves("dm-0", {"sda", "sdb"});
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 1u);
  EXPECT_EQ(list.drives[0].state, "");
  EXPECT_EQ(list.drives[0].worldWideName, "naa.600508b400010203");
}

void addController(BlockMachine& machine, const std::string& directory, const std::string& state) {
  machine.addFiles("/sys/devices/" + directory, {{"model", "SAMSUNG MZVL21T0HCLR-00B00   "},
                                                 {"serial", "S676NF0R000000      "},
                                                 {"firmware_rev", "GXA7401Q"},
                                                 {"state", state}});
  machine.links["/sys/devices/" + directory + "/device/driver"] = "../../../bus/pci/drivers/nvme";
}

TEST(Drives, nvmeNamespacesShareTheirController) {
  BlockMachine machine;
  const std::string controller = "pci0000:00/0000:00:1d.0/0000:03:00.0/nvme/nvme0";
  addController(machine, controller, "live");
  for (const char* number : {"1", "2"}) {
    Attributes attributes = block("0");
    attributes["nsid"] = number;
    attributes["wwid"] = std::string("eui.002538ba11b0000") + number;
    machine.addDevice(std::string("nvme0n") + number, controller, attributes);
  }
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 2u);
  const Drive& drive = list.drives[1];
  EXPECT_EQ(drive.deviceName, "/dev/nvme0n2");
  EXPECT_EQ(drive.bus, "nvme");
  EXPECT_EQ(drive.model, "SAMSUNG MZVL21T0HCLR-00B00");
  EXPECT_EQ(drive.vendor, "SAMSUNG");
  EXPECT_EQ(drive.serial, "S676NF0R000000");
  EXPECT_EQ(drive.firmware, "GXA7401Q");
  EXPECT_EQ(drive.worldWideName, "eui.002538ba11b00002");
  EXPECT_EQ(drive.location, "0000:03:00.0/2");
  EXPECT_EQ(drive.namespaceOf, "nvme0");
  EXPECT_EQ(drive.state, "live");
  EXPECT_EQ(drive.driver, "nvme");
  EXPECT_EQ(drive.rotation, Rotation::kSolidState);
  EXPECT_FALSE(drive.paths);
  EXPECT_TRUE(machine.readEachOnce());
}

TEST(Drives, nvmeHeadStandsForItsHiddenPaths) {
  BlockMachine machine;
  const std::string first = "pci0000:00/0000:03:00.0/nvme/nvme0";
  const std::string second = "pci0000:00/0000:04:00.0/nvme/nvme1";
  addController(machine, first, "connecting");
  addController(machine, second, "live");
  Attributes head = block("0");
  head["nsid"] = "1";
  head["wwid"] = "uuid.12345678-1234-1234-1234-123456789abc";
  machine.addDevice("nvme0n1", "virtual/nvme-subsystem/nvme-subsys0", head);
  machine.addDevice("nvme0c0n1", first, {{"size", "1000"}, {"hidden", "1"}});
  machine.addDevice("nvme0c1n1", second, {{"size", "1000"}, {"hidden", "1"}});
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 1u);
  EXPECT_EQ(list.drives[0].deviceName, "/dev/nvme0n1");
  EXPECT_EQ(list.drives[0].paths, 2u);
  EXPECT_EQ(list.drives[0].state, "live");
  EXPECT_EQ(list.drives[0].location, "0000:03:00.0/1");  // whichever path works
  EXPECT_EQ(list.drives[0].model, "SAMSUNG MZVL21T0HCLR-00B00");
}

TEST(Drives, nvmeNamesOfPathsAreTakenApart) {
  EXPECT_EQ(nvmeHeadOf("nvme0c1n2"), "nvme0n2");
  EXPECT_EQ(nvmeHeadOf("nvme12c10n3"), "nvme12n3");
  for (const char* name : {"nvme0n1", "sdc", "", "nvme0c1", "c0n1"}) {
    EXPECT_EQ(nvmeHeadOf(name), "") << name;
  }
}

TEST(Drives, nvmeAcrossNetworkHasNoLocation) {
  BlockMachine machine;
  addController(machine, "virtual/nvme-fabrics/ctl/nvme3", "live");
  Attributes attributes = block("0");
  attributes["nsid"] = "1";
  attributes["wwid"] = "nvme.0000-41-42-00000001";
  machine.addDevice("nvme3n1", "virtual/nvme-subsystem/nvme-subsys3", attributes);
  machine.addDevice("nvme3c3n1", "virtual/nvme-fabrics/ctl/nvme3", {{"size", "1"}});
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 1u);
  EXPECT_EQ(list.drives[0].bus, "nvme");
  EXPECT_EQ(list.drives[0].location, "");
  EXPECT_NE(list.drives[0].place, "");
  EXPECT_EQ(list.drives[0].worldWideName, "");
}

TEST(Drives, virtioHasSerialButNoMaker) {
  BlockMachine machine;
  const std::string device = "pci0000:00/0000:00:05.0/virtio2";
  Attributes attributes = block("1");
  attributes["serial"] = "disk-0001\n";
  machine.addDevice("vda", device + "/block", attributes);
  machine.addFiles("/sys/devices/" + device, {{"vendor", "0x1af4"}, {"device", "0x0002"}});
  machine.links["/sys/devices/" + device + "/driver"] = "../../../bus/virtio/drivers/virtio_blk";
  const DriveList list = drivesOf(true);
  ASSERT_EQ(list.drives.size(), 1u);
  EXPECT_EQ(list.drives[0].bus, "virtio");
  EXPECT_EQ(list.drives[0].serial, "disk-0001");
  EXPECT_EQ(list.drives[0].vendor, "");
  EXPECT_EQ(list.drives[0].model, "");
  EXPECT_EQ(list.drives[0].location, "0000:00:05.0");
  EXPECT_EQ(list.drives[0].driver, "virtio_blk");
  EXPECT_EQ(list.drives[0].rotation, Rotation::kNotTold);
}

TEST(Drives, cardsAndPersistentMemoryAreDrives) {
  BlockMachine machine;
  const std::string card = "pci0000:00/0000:00:1a.0/mmc_host/mmc0/mmc0:0001";
  machine.addDevice("mmcblk0", card + "/block", block("0"));
  machine.addFiles("/sys/devices/" + card,
                   {{"name", "DF4064"}, {"serial", "0x12345678"}, {"fwrev", "0x0100000000000000"}});
  machine.addDevice("mmcblk0boot0", card + "/block/mmcblk0", block("0"));
  const std::string space = "LNXSYSTM:00/ACPI0012:00/ndbus0/region0/namespace0.0";
  machine.addDevice("pmem0", space + "/block", block("0"));
  machine.addFiles("/sys/devices/" + space, {{"uuid", "12345678-1234-1234-1234-123456789abc"}});
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 2u);
  EXPECT_EQ(list.drives[0].bus, "mmc");
  EXPECT_EQ(list.drives[0].model, "DF4064");
  EXPECT_EQ(list.drives[0].serial, "0x12345678");
  EXPECT_EQ(list.drives[0].rotation, Rotation::kSolidState);
  EXPECT_EQ(list.drives[1].bus, "nvdimm");
  EXPECT_EQ(list.drives[1].worldWideName, "uuid.12345678-1234-1234-1234-123456789abc");
}

TEST(Drives, networkDrivesCountOnlyWhenConnected) {
  BlockMachine machine;
  Attributes unused = block("0");
  unused["size"] = "0";
  machine.addDevice("nbd0", "virtual/block", block("0"));
  machine.addDevice("nbd1", "virtual/block", unused);
  machine.addDevice("ublkb0", "virtual/block", block("0"));
  machine.addDevice("loop0", "virtual/block", block("0"));
  machine.addDevice("zram0", "virtual/block", block("0"));
  machine.addDevice("md0", "virtual/block", block("0"));
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 2u);
  EXPECT_EQ(list.drives[0].bus, "nbd");
  EXPECT_EQ(list.drives[0].rotation, Rotation::kNotTold);
  EXPECT_EQ(list.drives[1].bus, "ublk");
  EXPECT_NE(list.drives[0].place, list.drives[1].place);
}

TEST(Drives, xenDisksAreToldApartByTheirPlace) {
  BlockMachine machine;
  machine.addDevice("xvda", "vbd-51712/block", block("0"));
  machine.addDevice("xvdb", "vbd-51728/block", block("0"));
  const DriveList list = drivesOf(true);
  ASSERT_EQ(list.drives.size(), 2u);
  EXPECT_EQ(list.drives[0].bus, "xen");
  EXPECT_EQ(list.drives[0].location, "");
  EXPECT_NE(list.drives[0].place, list.drives[1].place);
}

TEST(Drives, floppyNeedsDriveInTheMachine) {
  BlockMachine machine;
  machine.addDevice("fd0", "platform/floppy.0/block", block());
  machine.addDevice("fd1", "platform/floppy.1/block", block());
  machine.files["/sys/devices/platform/floppy.0/cmos"] = "4\n";
  machine.files["/sys/devices/platform/floppy.1/cmos"] = "0\n";
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 1u);
  EXPECT_EQ(list.drives[0].kind, DriveKind::kFloppy);
  EXPECT_EQ(list.drives[0].model, "H1440");
  EXPECT_FALSE(list.drives[0].sizeBytes);
}

TEST(Drives, emptyCdDriveHasNoSize) {
  BlockMachine machine;
  Attributes disc = block();
  disc["size"] = "2097151";
  addSata(machine, "sr0", 1, {{"type", "5"}, {"vendor", "HL-DT-ST"}, {"model", "DVDRAM GH24"}},
          disc);
  disc["size"] = "1400000";
  addSata(machine, "sr1", 2, {{"type", "5"}, {"vendor", "HL-DT-ST"}, {"model", "DVDRAM GH24"}},
          disc);
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 2u);
  EXPECT_EQ(list.drives[0].kind, DriveKind::kOptical);
  EXPECT_FALSE(list.drives[0].sizeBytes);
  EXPECT_EQ(list.drives[0].rotation, Rotation::kNotTold);
  EXPECT_EQ(list.drives[1].sizeBytes, 1400000u * 512);
}

TEST(Drives, tapesAndChangersHaveNoBlockDevice_enclosuresAreNoDrives) {
  BlockMachine machine;
  const std::string host = "pci0000:00/0000:05:00.0/host3";
  const auto add = [&](const std::string& target, const char* type, const char* model) {
    return machine.addUnit(host + "/target3:0:" + target, "3:0:" + target + ":0",
                           {{"type", type}, {"vendor", "IBM"}, {"model", model}});
  };
  const std::string tape = add("0", "1", "ULT3580-TD8");
  const std::string changer = add("1", "8", "3573-TL");
  add("2", "13", "SES");
  add("3", "0", "DISK WITHOUT SD");
  machine.directories["/sys/bus/scsi/devices"].push_back("host3");
  machine.directories["/sys/bus/scsi/devices"].push_back("target3:0:0");
  machine.directories["/sys/class/scsi_tape"] = {"nst10", "st10", "st10a"};
  for (const char* name : {"nst10", "st10", "st10a"}) {
    machine.links[std::string("/sys/class/scsi_tape/") + name] =
        "../../devices/" + tape + "/scsi_tape/" + name;
  }
  machine.directories["/sys/class/scsi_changer"] = {"sch0"};
  machine.links["/sys/class/scsi_changer/sch0"] = "../../devices/" + changer + "/scsi_changer/sch0";
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 3u);
  EXPECT_EQ(list.drives[0].kind, DriveKind::kChanger);
  EXPECT_EQ(list.drives[0].deviceName, "/dev/sch0");
  EXPECT_EQ(list.drives[1].kind, DriveKind::kTape);
  EXPECT_EQ(list.drives[1].deviceName, "/dev/st10");
  EXPECT_EQ(list.drives[2].model, "DISK WITHOUT SD");
  EXPECT_EQ(list.drives[2].deviceName, "");
  EXPECT_EQ(list.drives[2].location, "0000:05:00.0/0:3:0");
  EXPECT_TRUE(machine.readEachOnce());
}

TEST(Drives, kindsOfPeripheralsAreKnown) {
  EXPECT_EQ(driveKindOf(0), DriveKind::kDisk);
  EXPECT_EQ(driveKindOf(20), DriveKind::kDisk);
  EXPECT_EQ(driveKindOf(7), DriveKind::kMagnetoOptical);
  EXPECT_EQ(driveKindOf(4), DriveKind::kMagnetoOptical);
  for (const uint64_t type : {2u, 3u, 6u, 9u, 12u, 13u, 17u, 30u, 31u, 127u}) {
    EXPECT_FALSE(driveKindOf(type)) << type;
  }
}

TEST(Drives, placeDoesNotMoveWithTheHostsNumber) {
  const auto placeWith = [](const std::string& host) {
    BlockMachine machine;
    machine.addScsiDisk("sda", "LNXSYBUS:00/vmbus/guid/host" + host + "/target" + host + ":0:1",
                        host + ":0:1:0", {{"type", "0"}}, block());
    return drivesOf().drives.at(0).place;
  };
  EXPECT_EQ(placeWith("0"), placeWith("7"));
}

TEST(Drives, driveWithoutAnyAttributeIsStillOne) {
  BlockMachine machine;
  machine.addDevice("sdx", "pci0000:00/0000:00:09.0/strange/block", {{"size", "8"}});
  const DriveList list = drivesOf();
  ASSERT_EQ(list.drives.size(), 1u);
  EXPECT_EQ(list.drives[0].bus, "");
  EXPECT_EQ(list.drives[0].location, "0000:00:09.0");
}

}  // namespace
}  // namespace quenlor
