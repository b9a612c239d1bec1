#include "readers/idlist/IdList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

constexpr const char* kList =
    "# comment\n"
    "\n"
    "1af4  Red Hat, Inc.\n"
    "\t1000  Virtio network device\n"
    "\t\t1af4 0001  Subsystem\n"
    "\t1041  Virtio 1.0 network device\n"
    "8086  Intel Corporation\n"
    "\t10d3  82574L Gigabit Network Connection\n"
    "\t1000  Never asked for\n"
    "C 01  Mass storage controller\n"
    "\t08  Non-Volatile memory controller\n"
    "\t\t02  NVM Express\n"
    "C 02  Network controller\n"
    "\t00  Ethernet controller\n"
    "AT 0100  Undefined\n"
    "\t1000  Not a device\n"
    "8087  Behind a section\n";

void want(IdNames& names) {
  names.wantDevice(0x1AF4, 0x1000);
  names.wantDevice(0x8086, 0x10D3);
  names.wantDevice(0x8086, 0xFFFF);
  names.wantDevice(0x8087, 0x1000);
  names.wantClass(0x02, 0x00);
  names.wantClass(0x01, 0x77);
}

IdNames taken(const std::string& list) {
  IdNames names;
  want(names);
  names.take(list);
  names.endList();
  return names;
}

// All that a list told of what is wanted.
std::vector<std::optional<std::string>> told(const IdNames& names) {
  return {names.vendor(0x1AF4),         names.device(0x1AF4, 0x1000), names.vendor(0x8086),
          names.device(0x8086, 0x10D3), names.device(0x8086, 0xFFFF), names.vendor(0x8087),
          names.device(0x8087, 0x1000), names.className(0x02, 0x00),  names.className(0x01, 0x77)};
}

TEST(IdNamesTest, findsWhatIsWanted) {
  const IdNames names = taken(kList);
  EXPECT_EQ(names.vendor(0x1AF4), "Red Hat, Inc.");
  EXPECT_EQ(names.device(0x1AF4, 0x1000), "Virtio network device");
  EXPECT_EQ(names.vendor(0x8086), "Intel Corporation");
  EXPECT_EQ(names.device(0x8086, 0x10D3), "82574L Gigabit Network Connection");
  EXPECT_EQ(names.className(0x02, 0x00), "Ethernet controller");
}

TEST(IdNamesTest, whatTheListLacksHasNoName) {
  const IdNames names = taken(kList);
  EXPECT_EQ(names.device(0x8086, 0xFFFF), std::nullopt);
  EXPECT_EQ(names.vendor(0x1234), std::nullopt);
  EXPECT_EQ(names.device(0x1234, 1), std::nullopt);
  EXPECT_EQ(names.className(0x03, 0), std::nullopt);
}

TEST(IdNamesTest, unknownSubclassHasTheNameOfItsClass) {
  EXPECT_EQ(taken(kList).className(0x01, 0x77), "Mass storage controller");
}

TEST(IdNamesTest, aListInPiecesTellsTheSameWhereverItIsCut) {
  const std::string list = kList;
  const auto whole = told(taken(list));
  for (size_t first = 0; first <= list.size(); ++first) {
    for (const size_t second : {first, first + 1, first + 40, list.size()}) {
      IdNames names;
      want(names);
      const size_t middle = std::min(second, list.size());
      names.take(std::string_view(list).substr(0, first));
      names.take(std::string_view(list).substr(first, middle - first));
      names.take(std::string_view(list).substr(middle));
      names.endList();
      EXPECT_EQ(told(names), whole) << first << ' ' << second;
    }
  }
}

TEST(IdNamesTest, aListBehindAnotherBeginsWithNothingAboveIt) {
  IdNames names;
  want(names);
  names.take("8086  Intel");
  names.endList();
  names.take("\t10d3  Below nobody\n1af4  Red Hat\n");
  names.endList();
  EXPECT_EQ(names.vendor(0x8086), "Intel");
  EXPECT_EQ(names.device(0x8086, 0x10D3), std::nullopt);
  EXPECT_EQ(names.vendor(0x1AF4), "Red Hat");
}

TEST(IdNamesTest, linesOfOtherSectionsBelongToNothing) {
  const IdNames names = taken(kList);
  EXPECT_EQ(names.vendor(0x8087), "Behind a section");
  EXPECT_EQ(names.device(0x8087, 0x1000), std::nullopt);
}

TEST(IdNamesTest, subsystemLineIsNoDevice) {
  IdNames names;
  names.wantDevice(0x1AF4, 0x1AF4);
  names.take(kList);
  EXPECT_EQ(names.device(0x1AF4, 0x1AF4), std::nullopt);
}

TEST(IdNamesTest, sectionWhoseNameLooksLikeAnIdIsNone) {
  IdNames names;
  names.wantDevice(0xC00, 1);
  names.wantClass(0xC0, 0);
  names.take("C 0  short\nC 0c00\nC c00  x\nHCC 00  Not Specified\n");
  EXPECT_EQ(names.vendor(0xC00), std::nullopt);
  EXPECT_EQ(names.className(0xC0, 0), std::nullopt);
}

TEST(IdNamesTest, damagedLinesAreLeftOut) {
  for (const char* line : {"8086", "8086Intel", "808  Intel", "8086\tIntel", "80g6  Intel",
                           "8086  ", " 8086  Intel", "-086  Intel", "0x86  Intel"}) {
    EXPECT_EQ(taken(line).vendor(0x8086), std::nullopt) << line;
  }
}

TEST(IdNamesTest, lastLineMayLackItsEnd) {
  EXPECT_EQ(taken("8086  Intel").vendor(0x8086), "Intel");
}

TEST(IdNamesTest, lineEndsOfOtherSystemsAreNoPartOfAName) {
  EXPECT_EQ(taken("8086  Intel\r\n").vendor(0x8086), "Intel");
}

TEST(IdNamesTest, idsInCapitalsAreTheSame) {
  EXPECT_EQ(taken("1AF4  Red Hat\n").vendor(0x1AF4), "Red Hat");
}

TEST(IdNamesTest, firstNameOfAnIdHolds) {
  EXPECT_EQ(taken("8086  First\n8086  Second\n").vendor(0x8086), "First");
}

TEST(IdNamesTest, namesKeepEveryByte) {
  EXPECT_EQ(taken("8086  Br\xC3\xA4u \xFF \"x\"\n").vendor(0x8086), "Br\xC3\xA4u \xFF \"x\"");
}

TEST(IdNamesTest, everyCutIsReadWithinItsBounds) {
  const std::string whole = kList;
  for (size_t size = 0; size < whole.size(); ++size) {
    const std::string cut(whole.data(), size);
    const auto name = taken(cut).vendor(0x1AF4);
    if (name) {
      EXPECT_TRUE(std::string("Red Hat, Inc.").starts_with(*name)) << size;
    }
  }
}

class IdListTest : public ::testing::Test {
 protected:
  ~IdListTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  bool read() { return readIdList(kPaths, "names", names, outcome); }

  static constexpr std::array kPaths = {"/first", "/second"};
  test::FakeHost machine;
  IdNames names;
  Outcome outcome;
};

TEST_F(IdListTest, firstListThatExistsHolds) {
  names.wantDevice(0x8086, 1);
  machine.files["/second"] = "8086  Second\n";
  EXPECT_TRUE(read());
  EXPECT_EQ(names.vendor(0x8086), "Second");
  machine.files["/first"] = "8086  First\n";
  names = {};
  names.wantDevice(0x8086, 1);
  EXPECT_TRUE(read());
  EXPECT_EQ(names.vendor(0x8086), "First");
}

TEST_F(IdListTest, noListIsNoFault) {
  EXPECT_FALSE(read());
  EXPECT_EQ(outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(IdListTest, refusedListIsSaidSoAndTheNextOneTaken) {
  machine.files["/first"] = "";
  machine.openErrors["/first"] = EACCES;
  machine.files["/second"] = "8086  Second\n";
  EXPECT_TRUE(read());
  EXPECT_EQ(outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(outcome.reason(), "names: list not readable");
}

TEST_F(IdListTest, listBeyondTheLimitIsNotTaken) {
  machine.files["/first"] = std::string(kIdListLimit + 1, '\n');
  EXPECT_FALSE(read());
  EXPECT_EQ(outcome.status(), OutcomeStatus::kPartial);
}

}  // namespace
}  // namespace quenlor
