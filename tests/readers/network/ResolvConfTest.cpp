#include "readers/network/ResolvConf.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

constexpr const char* kPath = "/etc/resolv.conf";

class ResolvConfTest : public ::testing::Test {
 protected:
  ~ResolvConfTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  // Domain, primary and secondary DNS split by commas.
  std::string read(const std::string& text, const std::string& domain = "") {
    machine.files[kPath] = text;
    ResolvConf result{domain, "", ""};
    readResolvConf(result);
    return result.domain + "," + result.primaryDns + "," + result.secondaryDns;
  }

  test::FakeHost machine;
};

TEST_F(ResolvConfTest, readsNameServersAndDomain) {
  EXPECT_EQ(read("# made by hand\ndomain example.com\nsearch example.org\n"
                 "nameserver 10.0.0.1\nnameserver\t10.0.0.2\noptions timeout:1\n"),
            "example.com,10.0.0.1,10.0.0.2");
}

TEST_F(ResolvConfTest, missingFileSaysNothing) {
  ResolvConf result{"example.com", "", ""};
  readResolvConf(result);
  EXPECT_EQ(result.domain, "example.com");
  EXPECT_EQ(result.primaryDns, "");
}

TEST_F(ResolvConfTest, readingEndsAtTheSecondNameServer) {
  EXPECT_EQ(read("nameserver 1.1.1.1\nnameserver 2.2.2.2\nnameserver 3.3.3.3\ndomain late\n"),
            ",1.1.1.1,2.2.2.2");
}

TEST_F(ResolvConfTest, nameServersAreJudgedByTheirLengthAlone) {
  EXPECT_EQ(read("nameserver ::1\n"), ",::1,");
  EXPECT_EQ(read("nameserver fe80::1234:5678:9abc\nnameserver 10.0.0.1\n"), ",10.0.0.1,");
  EXPECT_EQ(read("nameserver 255.255.255.255\n"), ",255.255.255.255,");
  EXPECT_EQ(read("nameserver 1234567890123456\n"), ",,");
}

TEST_F(ResolvConfTest, domainThatIsKnownStays) {
  EXPECT_EQ(read("domain example.org\n", "example.com"), "example.com,,");
}

TEST_F(ResolvConfTest, firstDomainCounts) {
  EXPECT_EQ(read("domain first\ndomain second\n"), "first,,");
}

TEST_F(ResolvConfTest, commentEndsADomain) {
  EXPECT_EQ(read("domain example.com#ours\n"), "example.com,,");
  EXPECT_EQ(read("domain example.com # ours\n"), "example.com,,");
}

TEST_F(ResolvConfTest, keywordsWithoutValueAreHarmless) {
  EXPECT_EQ(read("nameserver\nnameserver \t \nnameserver 10.0.0.1\n"), ",10.0.0.1,");
  const test::CapturedTraces traces;
  EXPECT_EQ(read("domain\ndomain \t\ndomain #\ndomain example.com\n"), "example.com,,");
  EXPECT_EQ(traces.count("hardware /etc/resolv.conf domain name null"), 3);
}

TEST_F(ResolvConfTest, otherLinesAreIgnored) {
  EXPECT_EQ(read("nameservers 10.0.0.1\n#nameserver 10.0.0.1\n;domain x\nsearch domain y\n\n \n"),
            ",,");
}

TEST_F(ResolvConfTest, blanksMayStandInFront) {
  EXPECT_EQ(read("  nameserver  10.0.0.1  extra\n\tdomain\texample.com\n"),
            "example.com,10.0.0.1,");
}

TEST_F(ResolvConfTest, lastLineMayLackItsNewline) {
  EXPECT_EQ(read("nameserver 10.0.0.1"), ",10.0.0.1,");
  EXPECT_EQ(read("nameserver"), ",,");
  EXPECT_EQ(read("domain"), ",,");
}

TEST_F(ResolvConfTest, rubbishIsHarmless) {
  EXPECT_EQ(read(std::string(100'000, '\0')), ",,");
  EXPECT_EQ(read(std::string(100'000, 'x')), ",,");
  EXPECT_EQ(read("domain " + std::string(10'000, 'd')).size(), 254 - 7 + 2U);
}

TEST_F(ResolvConfTest, tracesWhatItFinds) {
  const test::CapturedTraces traces;
  read("domain example.com\nnameserver 10.0.0.1\nnameserver 10.0.0.2\n");
  EXPECT_EQ(traces.count("hardware using domainName from /etc/resolv.conf: example.com"), 1);
  EXPECT_EQ(traces.count("hardware nameserver1= 10.0.0.1"), 1);
  EXPECT_EQ(traces.count("hardware nameserver2= 10.0.0.2"), 1);
  EXPECT_EQ(traces.count("hardware done parsing resolv.conf..."), 1);
}

}  // namespace
}  // namespace quenlor
