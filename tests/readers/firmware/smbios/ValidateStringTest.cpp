#include <gtest/gtest.h>

#include <string>

#include "readers/firmware/smbios/SMBIOSTable.h"

namespace quenlor {
namespace {

TEST(ValidateString, placeholdersAnywhereInATextEmptyIt) {
  for (const char* bogus : {"Not Available", "This is OEM", "System Manufacturer", "System Model",
                            "No Asset Information"}) {
    EXPECT_EQ(SMBIOSTable::validText(bogus), "");
    EXPECT_EQ(SMBIOSTable::validText((std::string("xx ") + bogus + " yy").c_str()), "");
  }
  EXPECT_EQ(SMBIOSTable::validText("not available"), "not available");
  EXPECT_EQ(SMBIOSTable::validText("System"), "System");
}

// The search for placeholders sees the part that is cut away as well.
TEST(ValidateString, placeholderBehindAControlCharacterCounts) {
  EXPECT_EQ(SMBIOSTable::validText("good\nNot Available"), "");
}

TEST(ValidateString, trailingWhiteSpaceIsRemoved) {
  EXPECT_EQ(SMBIOSTable::validText("ABC123 \t\r\n"), "ABC123");
  EXPECT_EQ(SMBIOSTable::validText("  ABC 123   "), "  ABC 123");
  EXPECT_EQ(SMBIOSTable::validText("   "), "");
}

TEST(ValidateString, textIsCutAtTheFirstControlOrHighByte) {
  EXPECT_EQ(SMBIOSTable::validText("abc\x1F\x64"), "abc");
  EXPECT_EQ(SMBIOSTable::validText("caf\xC3\xA9"), "caf");
  EXPECT_EQ(SMBIOSTable::validText("\x80xyz"), "");
  EXPECT_EQ(SMBIOSTable::validText("\xFF"), "");
  EXPECT_EQ(SMBIOSTable::validText("del\x7F!"), "del\x7F!");
}

TEST(ValidateString, nullIsEmpty) { EXPECT_EQ(SMBIOSTable::validText(nullptr), ""); }

TEST(ValidateString, pointerFormFillsItsDestination) {
  char out[32] = "before";
  EXPECT_EQ(SMBIOSTable::validateString("text  ", out), out);
  EXPECT_STREQ(out, "text");
  EXPECT_EQ(SMBIOSTable::validateString("Not Available", out), out);
  EXPECT_STREQ(out, "");
  EXPECT_EQ(SMBIOSTable::validateString("text", nullptr), nullptr);
}

TEST(ValidateString, nullSourceEmptiesTheDestination) {
  char out[32] = "before";
  EXPECT_EQ(SMBIOSTable::validateString(nullptr, out), out);
  EXPECT_STREQ(out, "");
}

TEST(RemoveInvalidChars, replacesWhatIsNotPrintable) {
  char out[16];
  EXPECT_EQ(SMBIOSTableData::removeInvalidChars(out, "a\x1F\x7F\x80\xFF z"), out);
  EXPECT_STREQ(out, "a.... z");
  EXPECT_EQ(SMBIOSTableData::removeInvalidChars(out, nullptr), nullptr);
}

}  // namespace
}  // namespace quenlor
