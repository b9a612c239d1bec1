#include "identity/Identity.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace quenlor {
namespace {

struct Freer {
  void operator()(char* text) const { std::free(text); }
};

std::string checksum(const char* text) {
  const std::unique_ptr<char, Freer> sum(md5_checksum(text));
  return sum == nullptr ? "null" : sum.get();
}

std::string machineType(const char* product) {
  char out[5] = "";
  getTypeFromProd(product, out);
  return out;
}

TEST(Md5, digestsOfTheStandardsTestSuite) {
  EXPECT_EQ(checksum("a"), "0cc175b9c0f1b6a831c399e269772661");
  EXPECT_EQ(checksum("abc"), "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(checksum("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
  EXPECT_EQ(checksum("abcdefghijklmnopqrstuvwxyz"), "c3fcd3d76192e4007dfb496cca67e13b");
  EXPECT_EQ(checksum("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
            "d174ab98d277d9f5a5611c2c9f419d9f");
  EXPECT_EQ(checksum("1234567890123456789012345678901234567890"
                     "1234567890123456789012345678901234567890"),
            "57edf4a22be3c955ac49da2e2107b67a");
}

TEST(Md5, emptyAndNullTextHaveNoChecksum) {
  EXPECT_EQ(md5_checksum(""), nullptr);
  EXPECT_EQ(md5_checksum(nullptr), nullptr);
  EXPECT_EQ(md5Text(""), "");
}

TEST(Md5, stringFormGivesTheSameDigest) {
  EXPECT_EQ(md5Text("abc"), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(Md5, emptyMessageOfTheContextFunctions) {
  md5file_context context;
  char text[33];
  md5file_clear(&context);
  md5file_sprint_hash(&context, text);
  EXPECT_STREQ(text, "d41d8cd98f00b204e9800998ecf8427e");
}

TEST(Md5, piecesOfAnySizeGiveTheDigestOfTheWhole) {
  const std::string whole(200, 'x');
  for (size_t piece : {1u, 7u, 55u, 56u, 63u, 64u, 65u, 128u}) {
    md5file_context context;
    md5file_clear(&context);
    for (size_t at = 0; at < whole.size(); at += piece) {
      const std::string part = whole.substr(at, piece);
      md5file_addn(&context, reinterpret_cast<const unsigned char*>(part.data()), part.size());
    }
    char text[33];
    md5file_sprint_hash(&context, text);
    EXPECT_EQ(text, md5Text(whole)) << piece;
  }
}

// Lengths at which padding moves to another block.
TEST(Md5, lengthsAroundTheBlockSize) {
  EXPECT_EQ(md5Text(std::string(55, 'a')), "ef1772b6dff9a122358552954ad0df65");
  EXPECT_EQ(md5Text(std::string(56, 'a')), "3b0c8ac703f828b04c6c197006d17218");
  EXPECT_EQ(md5Text(std::string(63, 'a')), "b06521f39153d618550606be297466d5");
  EXPECT_EQ(md5Text(std::string(64, 'a')), "014842d480b571495a4a0363793f7367");
}

TEST(Md5, finishingWipesTheContext) {
  md5file_context context;
  unsigned char digest[16];
  md5file_clear(&context);
  md5file_add(&context, 'a');
  md5file_hash(&context, digest);
  const auto* bytes = reinterpret_cast<const unsigned char*>(&context);
  EXPECT_TRUE(std::all_of(bytes, bytes + sizeof context, [](unsigned char b) { return b == 0; }));
}

TEST(MachineType, fourCharactersBehindABracket) {
  EXPECT_EQ(machineType("eserver -[867041X]-"), "8670");
  EXPECT_EQ(machineType("[8670"), "8670");
}

TEST(MachineType, firstFourOfASevenCharacterProduct) { EXPECT_EQ(machineType("8670A1X"), "8670"); }

TEST(MachineType, otherLengthsLeaveTheOutputAlone) {
  EXPECT_EQ(machineType("8670A1"), "");
  EXPECT_EQ(machineType("8670A1XY"), "");
  EXPECT_EQ(machineType(""), "");
  char kept[5] = "keep";
  getTypeFromProd("8670A1", kept);
  EXPECT_STREQ(kept, "keep");
}

TEST(MachineType, threeCharactersOrFewerBehindABracketEmptyTheOutput) {
  EXPECT_EQ(machineType("xyz[ab]"), "");
  EXPECT_EQ(machineType("xyz["), "");
  char preset[5] = "keep";
  getTypeFromProd("xyz[ab]", preset);
  EXPECT_STREQ(preset, "");
}

TEST(MachineType, firstBracketDecides) {
  EXPECT_EQ(machineType("x[8670]-[7979AC1]-"), "8670");
  EXPECT_EQ(machineType("x[[8670"), "[867");
}

// A bracket decides even in a seven-character product.
TEST(MachineType, bracketGoesBeforeTheLength) { EXPECT_EQ(machineType("ab[cdef"), "cdef"); }

// RFC 2202, test cases 1, 2, 3 and 6.
TEST(IdentityTest, keyedDigestsAreThoseOfTheStandard) {
  EXPECT_EQ(hmacMd5Text(std::string(16, '\x0b'), "Hi There"), "9294727a3638bb1c13f48ef8158bfc9d");
  EXPECT_EQ(hmacMd5Text("Jefe", "what do ya want for nothing?"),
            "750c783e6ab0b503eaa86e310a5db738");
  EXPECT_EQ(hmacMd5Text(std::string(16, '\xaa'), std::string(50, '\xdd')),
            "56be34521d144c88dbb8c733f0e8b3f6");
  EXPECT_EQ(hmacMd5Text(std::string(80, '\xaa'),
                        "Test Using Larger Than Block-Size Key - Hash Key First"),
            "6b1ab7fe4bd7bf8f0b62e6ce61b9d0cd");
}

}  // namespace
}  // namespace quenlor
