#include "readers/usb/UsbDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "readers/usb/UsbFiles.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kFolder = "/sys/bus/usb/devices";
constexpr const char* kController = "pci0000:00/0000:00:14.0";

class UsbDevicesTest : public ::testing::Test {
 protected:
  ~UsbDevicesTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  std::string path(const std::string& entry, const std::string& file) const {
    return std::string(kFolder) + "/" + entry + "/" + file;
  }

  // `above` is the path between the controller and the device.
  void add(const std::string& entry, const std::string& above = "usb1/") {
    machine.directories[kFolder].push_back(entry);
    machine.links[std::string(kFolder) + "/" + entry] =
        std::string("../../../devices/") + kController + "/" + above + entry;
    machine.files[path(entry, "idVendor")] = "046d\n";
    machine.files[path(entry, "idProduct")] = "c52b\n";
    machine.files[path(entry, "bDeviceClass")] = "00\n";
  }

  void addInterface(const std::string& entry, const std::string& code, const std::string& driver) {
    machine.directories[kFolder].push_back(entry);
    machine.files[path(entry, "bInterfaceClass")] = code + "\n";
    if (!driver.empty()) {
      machine.links[path(entry, "driver")] = "../../../bus/usb/drivers/" + driver;
    }
  }

  static std::vector<std::string> locations(const UsbDevices& found) {
    std::vector<std::string> texts;
    for (const UsbDevice& device : found.devices) texts.push_back(device.location);
    return texts;
  }

  test::FakeHost machine;
};

TEST_F(UsbDevicesTest, deviceHasAllThatItsFilesTell) {
  add("1-2.4", "usb1/1-2/");
  machine.files[path("1-2.4", "product")] = "USB Receiver \n";
  machine.files[path("1-2.4", "manufacturer")] = "Logitech\n";
  machine.files[path("1-2.4", "serial")] = "000000000001\n";
  machine.files[path("1-2.4", "version")] = " 2.00\n";
  machine.files[path("1-2.4", "speed")] = "12\n";
  machine.files[path("1-2.4", "removable")] = "removable\n";
  addInterface("1-2.4:1.1", "ff", "");
  addInterface("1-2.4:1.0", "03", "usbhid");
  const UsbDevices found = readUsbDevices();
  ASSERT_EQ(found.devices.size(), 1u);
  const UsbDevice& device = found.devices[0];
  EXPECT_EQ(device.entry, "1-2.4");
  EXPECT_EQ(device.location, "0000:00:14.0-2.4");
  EXPECT_EQ(device.vendor, 0x046D);
  EXPECT_EQ(device.product, 0xC52B);
  EXPECT_EQ(device.name, "USB Receiver");
  EXPECT_EQ(device.manufacturer, "Logitech");
  EXPECT_EQ(device.serialNumber, "000000000001");
  EXPECT_EQ(device.version, "2.00");
  EXPECT_EQ(device.speed, 12000u);
  EXPECT_EQ(device.removable, "removable");
  EXPECT_THAT(device.classes, ElementsAre("hid", "vendor"));
  EXPECT_THAT(device.drivers, ElementsAre("usbhid"));
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(UsbDevicesTest, rootHubsAndInterfacesAreNoDevices) {
  add("1-2");
  addInterface("1-2:1.0", "08", "usb-storage");
  addInterface("1-0:1.0", "09", "hub");
  machine.directories[kFolder].push_back("usb1");
  EXPECT_THAT(locations(readUsbDevices()), ElementsAre("0000:00:14.0-2"));
}

TEST_F(UsbDevicesTest, devicesComeByPlace) {
  add("1-10");
  add("1-9");
  add("1-9.2", "usb1/1-9/");
  EXPECT_THAT(locations(readUsbDevices()),
              ElementsAre("0000:00:14.0-9", "0000:00:14.0-9.2", "0000:00:14.0-10"));
}

TEST_F(UsbDevicesTest, deviceFiveHubsDeepHasAllPortsInItsPlace) {
  add("1-1.2.3.4.1", "usb1/1-1/1-1.2/1-1.2.3/1-1.2.3.4/");
  EXPECT_THAT(locations(readUsbDevices()), ElementsAre("0000:00:14.0-1.2.3.4.1"));
}

TEST_F(UsbDevicesTest, classOfTheDeviceHoldsBeforeThoseOfItsInterfaces) {
  add("1-2");
  machine.files[path("1-2", "bDeviceClass")] = "09\n";
  addInterface("1-2:1.0", "ff", "hub");
  EXPECT_THAT(readUsbDevices().devices[0].classes, ElementsAre("hub"));
}

TEST_F(UsbDevicesTest, deviceOfSeveralFunctionsIsWhatItsInterfacesAre) {
  add("1-2");
  machine.files[path("1-2", "bDeviceClass")] = "ef\n";
  EXPECT_THAT(readUsbDevices().devices[0].classes, ElementsAre("miscellaneous"));
  addInterface("1-2:1.0", "0e", "uvcvideo");
  addInterface("1-2:1.1", "0e", "uvcvideo");
  addInterface("1-2:1.2", "01", "snd-usb-audio");
  const UsbDevices found = readUsbDevices();
  EXPECT_THAT(found.devices[0].classes, ElementsAre("video", "audio"));
  EXPECT_THAT(found.devices[0].drivers, ElementsAre("uvcvideo", "snd-usb-audio"));
}

TEST_F(UsbDevicesTest, missingStringsComeFromTheList) {
  add("1-2");
  machine.files["/usr/share/misc/usb.ids"] =
      "046d  Logitech, Inc.\n\tc52b  Unifying Receiver\n\nC 03  Human Interface Device\n";
  EXPECT_EQ(readUsbDevices().devices[0].manufacturer, "Logitech, Inc.");
  EXPECT_EQ(readUsbDevices().devices[0].name, "Unifying Receiver");
  machine.files[path("1-2", "product")] = "Anna's mouse\n";
  EXPECT_EQ(readUsbDevices().devices[0].name, "Anna's mouse");
}

TEST_F(UsbDevicesTest, listIsNotOpenedWhereNothingIsMissing) {
  add("1-2");
  machine.files[path("1-2", "product")] = "x\n";
  machine.files[path("1-2", "manufacturer")] = "y\n";
  readUsbDevices();
  EXPECT_EQ(std::count(machine.opened.begin(), machine.opened.end(), "/usr/share/misc/usb.ids"), 0);
}

TEST_F(UsbDevicesTest, deviceThatVanishedIsNone) {
  machine.directories[kFolder] = {"1-2"};
  EXPECT_THAT(readUsbDevices().devices, IsEmpty());
  EXPECT_EQ(readUsbDevices().outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(UsbDevicesTest, machineWithoutUsbHasNoSource) {
  EXPECT_EQ(readUsbDevices().outcome.status(), OutcomeStatus::kNoSource);
}

TEST_F(UsbDevicesTest, findsByEntry) {
  add("1-2");
  const UsbDevices found = readUsbDevices();
  EXPECT_EQ(found.find("1-2"), &found.devices[0]);
  EXPECT_EQ(found.find("1-3"), nullptr);
}

TEST_F(UsbDevicesTest, stringsKeepEveryByte) {
  add("1-2");
  machine.files[path("1-2", "product")] = "Tast\xE4tur \x01\xFF\n";
  EXPECT_EQ(readUsbDevices().devices[0].name, "Tast\xE4tur \x01\xFF");
}

TEST(UsbSpeedTest, isMegabitsWithOneFractionAtMost) {
  EXPECT_EQ(parseUsbSpeed("1.5"), 1500u);
  EXPECT_EQ(parseUsbSpeed("480"), 480000u);
  EXPECT_EQ(parseUsbSpeed("20000"), 20000000u);
  for (const char* text : {"", "0", "unknown", "-1", "12.", "12.25", "12x", "4294967295"}) {
    EXPECT_EQ(parseUsbSpeed(text), std::nullopt) << text;
  }
}

TEST(UsbNumberTest, hasExactlyItsDigits) {
  EXPECT_EQ(parseUsbNumber("046d", 4), 0x046Du);
  for (const char* text : {"", "46d", "0046d", "04g6", "0x46", "-46d"}) {
    EXPECT_EQ(parseUsbNumber(text, 4), std::nullopt) << text;
  }
}

TEST(UsbLocationTest, withoutPciTheControllersOwnNameStands) {
  EXPECT_EQ(usbLocation("../../../devices/platform/vhci_hcd.0/usb3/3-1"), "vhci_hcd.0-1");
  EXPECT_EQ(usbLocation("3-1"), "3-1");
  EXPECT_EQ(usbLocation(""), "");
}

}  // namespace
}  // namespace quenlor
