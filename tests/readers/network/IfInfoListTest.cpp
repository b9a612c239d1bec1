#include "readers/network/IfInfoList.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

constexpr const char* kSearched = "ifconfig -a 2>/dev/null";
constexpr const char* kPrefixed = "/sbin/ifconfig -a 2>/dev/null";

void add(IfInfoList& list, std::string name, const char* ipv4Address, const char* ipv6Address) {
  const std::unique_ptr<char[]> ipv4(x_strdup(ipv4Address));
  const std::unique_ptr<char[]> ipv6(x_strdup(ipv6Address));
  list.add({name.data(), ipv4.get(), ipv6.get()});
}

TEST(IfInfoList, isEmptyAtFirst) {
  const IfInfoList list;
  EXPECT_EQ(list.count(), 0);
  EXPECT_EQ(list.get(0), nullptr);
  EXPECT_EQ(find_if("eth0", list), nullptr);
}

TEST(IfInfoList, copiesWhatIsAdded) {
  IfInfoList list;
  add(list, "eth0", "10.0.0.1", "fe80::1/64");
  ASSERT_EQ(list.count(), 1);
  EXPECT_STREQ(list.get(0)->name, "eth0");
  EXPECT_STREQ(list.get(0)->ipv4Address, "10.0.0.1");
  EXPECT_STREQ(list.get(0)->ipv6Address, "fe80::1/64");
}

TEST(IfInfoList, recordWithoutAddressesAddsNothing) {
  IfInfoList list;
  add(list, "eth0", nullptr, nullptr);
  EXPECT_EQ(list.count(), 0);
  EXPECT_EQ(list.get(0), nullptr);
}

TEST(IfInfoList, missingAddressStaysNull) {
  IfInfoList list;
  add(list, "eth0", "10.0.0.1", nullptr);
  add(list, "eth1", nullptr, "fe80::2/64");
  EXPECT_EQ(list.get(0)->ipv6Address, nullptr);
  EXPECT_EQ(list.get(1)->ipv4Address, nullptr);
}

TEST(IfInfoList, sameNameReplacesOnlyTheAddressesGiven) {
  IfInfoList list;
  add(list, "eth0", "10.0.0.1", "fe80::1/64");
  add(list, "eth0", "10.0.0.2", nullptr);
  ASSERT_EQ(list.count(), 1);
  EXPECT_STREQ(list.get(0)->ipv4Address, "10.0.0.2");
  EXPECT_STREQ(list.get(0)->ipv6Address, "fe80::1/64");
  add(list, "eth0", nullptr, "fe80::2/64");
  EXPECT_STREQ(list.get(0)->ipv4Address, "10.0.0.2");
  EXPECT_STREQ(list.get(0)->ipv6Address, "fe80::2/64");
}

TEST(IfInfoList, keepsTheOrderOfManyRecords) {
  IfInfoList list;
  for (int i = 0; i < 50; ++i) add(list, "eth" + std::to_string(i), "10.0.0.1", nullptr);
  ASSERT_EQ(list.count(), 50);
  EXPECT_STREQ(list.get(0)->name, "eth0");
  EXPECT_STREQ(list.get(49)->name, "eth49");
  EXPECT_EQ(list.get(50), nullptr);
  EXPECT_EQ(list.get(-1), nullptr);
}

TEST(FindIf, comparesWholeNames) {
  IfInfoList list;
  add(list, "eth1", "10.0.0.1", nullptr);
  add(list, "eth10", "10.0.0.2", nullptr);
  EXPECT_EQ(find_if("eth10", list), list.get(1));
  EXPECT_EQ(find_if("eth", list), nullptr);
}

TEST(FindIPv4, findsTheFirstExactAddress) {
  IfInfoList list;
  add(list, "eth0", nullptr, "fe80::1/64");
  add(list, "eth1", "10.0.0.10", nullptr);
  add(list, "eth2", "10.0.0.1", nullptr);
  add(list, "eth3", "10.0.0.1", nullptr);
  EXPECT_EQ(findIPv4(list, "10.0.0.1"), list.get(2));
  EXPECT_EQ(findIPv4(list, "10.0.0"), nullptr);
}

TEST(FindIPv4, emptyAddressIsNeverFound) {
  IfInfoList list;
  EXPECT_EQ(findIPv4(list, "10.0.0.1"), nullptr);
  add(list, "eth0", nullptr, "fe80::1/64");
  add(list, "eth1", "", nullptr);
  EXPECT_EQ(findIPv4(list, ""), nullptr);
  EXPECT_EQ(findIPv4(list, nullptr), nullptr);
}

TEST(XStrdup, copiesTexts) {
  const char* text = "text";
  const std::unique_ptr<char[]> copy(x_strdup(text));
  EXPECT_STREQ(copy.get(), text);
  EXPECT_NE(copy.get(), text);
  EXPECT_EQ(x_strdup(nullptr), nullptr);
}

class XPopenTest : public ::testing::Test {
 protected:
  std::string firstLine(FILE* stream) {
    char line[64] = "";
    return std::fgets(line, sizeof line, stream) == nullptr ? "" : line;
  }

  test::FakeHost machine;
};

TEST_F(XPopenTest, startsTheSearchedCommandAndThenThePrefixedOneWhoseStreamItGives) {
  machine.commands[kSearched].output = "searched\n";
  machine.commands[kPrefixed].output = "prefixed\n";
  FILE* unread = nullptr;
  FILE* stream = x_popen("ifconfig", "/sbin/", "-a", &unread);
  EXPECT_EQ(machine.started, (std::vector<std::string>{kSearched, kPrefixed}));
  EXPECT_EQ(firstLine(stream), "prefixed\n");
  EXPECT_EQ(machine.openCommands(), 2);
  EXPECT_EQ(machine.pclose(stream), 0);
  EXPECT_EQ(machine.pclose(unread), 0);
}

TEST_F(XPopenTest, withoutPrefixThereIsOneCommand) {
  machine.commands[kSearched].output = "searched\n";
  FILE* unread = stdin;
  FILE* stream = x_popen("ifconfig", nullptr, "-a", &unread);
  EXPECT_EQ(machine.started, std::vector<std::string>{kSearched});
  EXPECT_EQ(firstLine(stream), "searched\n");
  EXPECT_EQ(unread, nullptr);
  machine.pclose(stream);
}

TEST_F(XPopenTest, argumentsMayBeMissing) {
  machine.pclose(x_popen("ifconfig", nullptr, nullptr));
  EXPECT_EQ(machine.started, std::vector<std::string>{"ifconfig 2>/dev/null"});
}

TEST_F(XPopenTest, whenTheFirstCannotBeStartedThePrefixIsNotTried) {
  machine.unstartableCommands.insert(kSearched);
  FILE* unread = stdin;
  EXPECT_EQ(x_popen("ifconfig", "/sbin/", "-a", &unread), nullptr);
  EXPECT_EQ(unread, nullptr);
  EXPECT_EQ(machine.started, std::vector<std::string>{kSearched});
}

TEST_F(XPopenTest, prefixedCommandThatCannotBeStartedIsTheResult) {
  machine.unstartableCommands.insert(kPrefixed);
  FILE* unread = nullptr;
  EXPECT_EQ(x_popen("ifconfig", "/sbin/", "-a", &unread), nullptr);
  ASSERT_NE(unread, nullptr);
  machine.pclose(unread);
}

TEST_F(XPopenTest, firstCommandIsEndedWhenNobodyTakesItsStream) {
  FILE* stream = x_popen("ifconfig", "/sbin/", "-a");
  EXPECT_EQ(machine.started.size(), 2U);
  EXPECT_EQ(machine.openCommands(), 1);
  machine.pclose(stream);
}

TEST(PopulateIfInfoList, readsThePrefixedIfconfigAndEndsBothCommands) {
  test::FakeHost machine;
  machine.commands[kSearched].output = "eth9 \n  inet addr:10.0.0.9\n";
  machine.commands[kPrefixed].output = "eth0 \n  inet addr:10.0.0.1\n";
  IfInfoList list;
  EXPECT_EQ(populateIfInfoList(list), -1);
  ASSERT_EQ(list.count(), 1);
  EXPECT_STREQ(list.get(0)->name, "eth0");
  EXPECT_EQ(machine.openCommands(), 0);
}

TEST(PopulateIfInfoList, ifconfigThatCannotBeStartedLeavesTheListEmpty) {
  for (const char* command : {kSearched, kPrefixed}) {
    test::FakeHost machine;
    machine.unstartableCommands.insert(command);
    IfInfoList list;
    EXPECT_EQ(populateIfInfoList(list), -1);
    EXPECT_EQ(list.count(), 0);
    EXPECT_EQ(machine.openCommands(), 0);
  }
}

TEST(PopulateIfInfoList, missingIfconfigLeavesTheListEmpty) {
  test::FakeHost machine;
  IfInfoList list;
  EXPECT_EQ(populateIfInfoList(list), -1);
  EXPECT_EQ(list.count(), 0);
}

}  // namespace
}  // namespace quenlor
