#include "readers/block/UdevRecord.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlor {
namespace {

TEST(UdevRecord, propertiesAndLinksAreTaken) {
  const UdevRecord record = parseUdevRecord(
      "S:disk/by-id/ata-X\nL:-100\nI:1403804\nE:ID_BUS=ata\nE:ID_MODEL_ENC=WDC\\x20WD40\\x20\\x20\n"
      "G:systemd\nE:EMPTY=\nE:A=b=c\nV:1\n");
  EXPECT_EQ(record.links, std::vector<std::string>{"disk/by-id/ata-X"});
  EXPECT_EQ(record.property("ID_BUS"), "ata");
  EXPECT_EQ(record.text("ID_MODEL_ENC"), "WDC WD40");
  EXPECT_EQ(record.property("EMPTY"), "");
  EXPECT_EQ(record.property("A"), "b=c");
  EXPECT_EQ(record.property("MISSING"), "");
}

TEST(UdevRecord, rubbishIsNoProperty) {
  const UdevRecord record = parseUdevRecord("E:=x\nE:\nE:noequals\n\n\n:\nX\nE:LAST=1");
  EXPECT_EQ(record.properties.size(), 1u);
  EXPECT_EQ(record.property("LAST"), "1");
  EXPECT_TRUE(parseUdevRecord("").properties.empty());
  EXPECT_TRUE(parseUdevRecord(std::string(5000, '\0')).properties.empty());
}

TEST(UdevRecord, escapesAreDecodedOnce) {
  EXPECT_EQ(decodeUdevEscapes("a\\x20b\\x2f\\x5cx20"), "a b/\\x20");
  EXPECT_EQ(decodeUdevEscapes("\\xc3\\xa4"), "\xC3\xA4");
  for (const char* text : {"\\", "\\x", "\\x2", "\\xg0", "\\x-1", "\\y20", "100%"}) {
    EXPECT_EQ(decodeUdevEscapes(text), text);
  }
}

}  // namespace
}  // namespace quenlor
