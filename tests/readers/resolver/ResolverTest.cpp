#include "readers/resolver/Resolver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ResolverTest : public ::testing::Test {
 protected:
  ~ResolverTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  void setSettings(const std::string& text) { machine.files["/etc/resolv.conf"] = text; }

  test::FakeHost machine;
};

TEST(ResolverSettingsTest, takesServersOfBothFamiliesInOrder) {
  const ResolverSettings settings = parseResolverSettings(
      "nameserver 10.0.0.1\nnameserver\t2001:db8::53\nnameserver fe80::1%eth0\n");
  EXPECT_THAT(settings.nameServers, ElementsAre("10.0.0.1", "2001:db8::53", "fe80::1%eth0"));
}

TEST(ResolverSettingsTest, lastDomainOrSearchLineHolds) {
  EXPECT_EQ(parseResolverSettings("domain a.example\nsearch b.example c.example\n").domain,
            "b.example");
  EXPECT_EQ(parseResolverSettings("search b.example\ndomain a.example").domain, "a.example");
}

TEST(ResolverSettingsTest, commentsIndentedAndEmptyLinesSayNothing) {
  const ResolverSettings settings = parseResolverSettings(
      "# nameserver 10.0.0.1\n;nameserver 10.0.0.2\n nameserver 10.0.0.3\nnameserver\n"
      "nameservers 10.0.0.4\n\n\nsearch\n");
  EXPECT_THAT(settings.nameServers, IsEmpty());
  EXPECT_EQ(settings.domain, "");
}

TEST(ResolverSettingsTest, lineEndsOfOtherSystemsAreBlanks) {
  EXPECT_THAT(parseResolverSettings("nameserver 10.0.0.1\r\n").nameServers,
              ElementsAre("10.0.0.1"));
}

TEST(HostsTest, domainIsThatOfTheHostsFullName) {
  EXPECT_EQ(domainInHosts("127.0.0.1 localhost\n127.0.1.1\tweb1.example.com web1\n", "web1"),
            "example.com");
  EXPECT_EQ(domainInHosts("127.0.1.1 web1 web1.example.com # x\n", "web1"), "example.com");
}

TEST(HostsTest, otherHostsAddressesAndCommentsSayNothing) {
  for (const char* text :
       {"", "10.0.0.1 web10.example.com", "#10.0.0.1 web1.example.com",
        "10.0.0.1 x # web1.example.com", "web1.example.com x", "10.0.0.1 web1.", "10.0.0.1"}) {
    EXPECT_EQ(domainInHosts(text, "web1"), "") << text;
  }
  EXPECT_EQ(domainInHosts("10.0.0.1 .example.com", ""), "");
}

TEST_F(ResolverTest, serversAreThoseOfTheSettings) {
  setSettings("nameserver 10.0.0.1\n");
  const Resolver found = readResolver();
  EXPECT_THAT(found.nameServers, ElementsAre("10.0.0.1"));
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(ResolverTest, behindTheStubStandsTheListOfTheService) {
  setSettings("nameserver 127.0.0.53\nsearch lan\n");
  machine.files["/run/systemd/resolve/resolv.conf"] =
      "nameserver 10.0.0.1\nnameserver 10.0.0.2\nsearch other\n";
  const Resolver found = readResolver();
  EXPECT_THAT(found.nameServers, ElementsAre("10.0.0.1", "10.0.0.2"));
  EXPECT_EQ(found.domain, "lan");
}

TEST_F(ResolverTest, stubStaysWhereTheListIsMissing) {
  setSettings("nameserver 127.0.0.53\n");
  EXPECT_THAT(readResolver().nameServers, ElementsAre("127.0.0.53"));
}

TEST_F(ResolverTest, listOfTheServiceIsNotReadForOtherServers) {
  setSettings("nameserver 127.0.0.1\n");
  machine.files["/run/systemd/resolve/resolv.conf"] = "nameserver 10.0.0.1\n";
  EXPECT_THAT(readResolver().nameServers, ElementsAre("127.0.0.1"));
}

TEST_F(ResolverTest, machineWithoutSettingsLacksNothing) {
  const Resolver found = readResolver();
  EXPECT_THAT(found.nameServers, IsEmpty());
  EXPECT_EQ(found.hostName, "");
  EXPECT_EQ(found.domain, "");
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(ResolverTest, refusedSettingsAreSaidSo) {
  setSettings("nameserver 10.0.0.1\n");
  machine.openErrors["/etc/resolv.conf"] = EACCES;
  EXPECT_EQ(readResolver().outcome.status(), OutcomeStatus::kPartial);
}

TEST_F(ResolverTest, domainOfTheNodeNameHoldsBeforeThoseOfTheFiles) {
  machine.setUname("web1.node.example", "6.1", "x86_64");
  machine.files["/etc/hosts"] = "127.0.1.1 web1.hosts.example\n";
  setSettings("search resolver.example\n");
  const Resolver found = readResolver();
  EXPECT_EQ(found.hostName, "web1");
  EXPECT_EQ(found.domain, "node.example");
}

TEST_F(ResolverTest, domainOfHostsHoldsBeforeThatOfTheResolver) {
  machine.setUname("web1", "6.1", "x86_64");
  setSettings("search resolver.example\n");
  EXPECT_EQ(readResolver().domain, "resolver.example");
  machine.files["/etc/hosts"] = "127.0.1.1 web1.hosts.example\n";
  EXPECT_EQ(readResolver().domain, "hosts.example");
}

TEST_F(ResolverTest, nodeNameThatWasNeverSetIsNone) {
  machine.setUname("(none)", "6.1", "x86_64");
  EXPECT_EQ(readResolver().hostName, "");
}

}  // namespace
}  // namespace quenlor
