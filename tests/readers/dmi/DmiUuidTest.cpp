#include <gtest/gtest.h>

#include "tests/readers/dmi/DmiImages.h"

namespace quenlor {
namespace {

constexpr DmiUuid kStored = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66,
                             0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF};

TEST(DmiUuidTest, from26OnTheFirstThreeFieldsAreLittleEndian) {
  EXPECT_EQ(dmiUuidText(kStored, {2, 6}), "00112233-4455-6677-8899-aabbccddeeff");
  EXPECT_EQ(dmiUuidText(kStored, {3, 0}), "00112233-4455-6677-8899-aabbccddeeff");
}

TEST(DmiUuidTest, before26BytesStandInStoredOrder) {
  EXPECT_EQ(dmiUuidText(kStored, {2, 5}), "33221100-5544-7766-8899-aabbccddeeff");
}

TEST(DmiUuidTest, equalBytesAreNoIdentity) {
  for (const uint8_t byte : std::initializer_list<uint8_t>{0x00, 0xFF, 0xFE, 0x11}) {
    DmiUuid uuid;
    uuid.fill(byte);
    EXPECT_FALSE(dmiUuidText(uuid, {3, 0})) << int{byte};
  }
}

TEST(DmiUuidTest, constantsOfMakersAreNoIdentity) {
  EXPECT_FALSE(dmiUuidText("03000200-0400-0500-0006-000700080009"));
  EXPECT_FALSE(dmiUuidText("00020003-0004-0005-0006-000700080009"));
  EXPECT_FALSE(dmiUuidText("12345678-1234-5678-90AB-CDDEEFAABBCC"));
  EXPECT_FALSE(dmiUuidText("fefefefe-fefe-fefe-fefe-fefefefefefe"));
}

TEST(DmiUuidTest, oldKernelsWriteUpperCase) {
  EXPECT_EQ(dmiUuidText("00112233-4455-6677-8899-AABBCCDDEEFF"),
            "00112233-4455-6677-8899-aabbccddeeff");
}

TEST(DmiUuidTest, textsOfAnotherFormAreNone) {
  EXPECT_FALSE(dmiUuidText(""));
  EXPECT_FALSE(dmiUuidText("Not Settable"));
  EXPECT_FALSE(dmiUuidText("00112233445566778899aabbccddeeff"));
  EXPECT_FALSE(dmiUuidText("00112233-4455-6677-8899-aabbccddeefg"));
  EXPECT_FALSE(dmiUuidText("00112233-4455-6677-8899-aabbccddeeff "));
  EXPECT_FALSE(dmiUuidText("00112233+4455-6677-8899-aabbccddeeff"));
}

TEST(DmiUuidTest, versionOfTheEntryPointDecidesNotItsKind) {
  const std::string table = test::tableOf(
      {test::Structure(1).dword(0).raw(std::string(kStored.begin(), kStored.end())).byte(6)});
  const auto size = static_cast<uint16_t>(table.size());
  EXPECT_EQ(decodeDmi(test::entryPoint32({3, 2}, size, 1), table).system->uuidText,
            "00112233-4455-6677-8899-aabbccddeeff");
  EXPECT_EQ(decodeDmi(test::entryPoint32({2, 4}, size, 1), table).system->uuidText,
            "33221100-5544-7766-8899-aabbccddeeff");
  EXPECT_EQ(decodeDmi(test::entryPoint32({2, 51}, size, 1), table).system->uuidText,
            "00112233-4455-6677-8899-aabbccddeeff");
}

}  // namespace
}  // namespace quenlor
