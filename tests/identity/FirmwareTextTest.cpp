#include "identity/FirmwareText.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlor {
namespace {

class Placeholder : public testing::TestWithParam<std::string> {};

TEST_P(Placeholder, isNoText) {
  EXPECT_TRUE(isPlaceholder(GetParam()));
  EXPECT_EQ(knownFirmwareText(GetParam()), "");
}

INSTANTIATE_TEST_SUITE_P(
    FirmwareTextTest, Placeholder,
    testing::Values("To Be Filled By O.E.M.", "To be filled by O.E.M", "to be filled by o.e.m.",
                    "  Default string ", "System manufacturer", "System Product Name",
                    "System Model", "System Version", "System Serial Number",
                    "Base Board Serial Number", "Chassis Serial Number", "No Asset Information",
                    "Not Specified", "Not Available", "Not Applicable", "N/A", "NA", "None",
                    "Unknown", "UNKNOWN", "Undefined", "INVALID", "OEM", "O.E.M.", "SN", "SerNum0",
                    "SerNum12", "AssetTagNum3", "PartNum00", "Manufacturer1", "ModulePartNumber7",
                    "DIMM_A1_AssetTag", "DIMM 0 AssetTag", "Empty", "NO DIMM", "[Empty]",
                    "0123456789", "1234567890", "123456789", "9876543210", "xxxxxxx", "XXXX",
                    "................", "0", "00000000", "FFFFFFFF", "ffff", "-", "--", "...",
                    "0000-0000", "", "   ", "\t", std::string(3, '\0'), "\xFF\xFF\xFF\xFF"));

class KnownText : public testing::TestWithParam<std::string> {};

TEST_P(KnownText, staysAsItIs) {
  EXPECT_FALSE(isPlaceholder(GetParam()));
  EXPECT_EQ(knownFirmwareText(GetParam()), GetParam());
}

INSTANTIATE_TEST_SUITE_P(FirmwareTextTest, KnownText,
                         testing::Values("F0", "F20", "00F", "X", "XX", "1", "0x2C00", "OEM Server",
                                         "SerNum", "SerNumA", "PartNum1B", "Manufacturer",
                                         "DIMM A1", "AssetTag", "None of these", "12345678",
                                         "SN1234", "0.1", "Default", "caf\xC3\xA9", "a\xFF z"));

TEST(FirmwareTextTest, paddingGoesAtBothEnds) {
  EXPECT_EQ(knownFirmwareText("  M393A4K40DB3-CWE  \xFF\xFF"), "M393A4K40DB3-CWE");
  EXPECT_EQ(knownFirmwareText(std::string("\0\0ab\0", 5)), "ab");
  EXPECT_EQ(knownFirmwareText("\xFF"
                              "00\xFF"),
            "");
}

}  // namespace
}  // namespace quenlor
