#include "quenlorctl/document/HostKey.h"

#include <gtest/gtest.h>

#include "tests/quenlorctl/support/Documents.h"

namespace quenlor::ctl {
namespace {

constexpr const char* kUuid = "00112233-4455-6677-8899-aabbccddeeff";

std::string smbios(const char* element, const std::string& uuid) {
  return row("SMBIOS", {{element, uuid}});
}
std::string component(const std::string& serial) {
  return row("ComponentID",
             {{"Manufacturer", "Example, Inc."}, {"Product", "Rack"}, {"SerialNumber", serial}});
}
std::string adapter(const std::string& address) {
  return row("NetworkAdapter", {{"PermanentAddress", address}});
}
std::string hostNamed(const std::string& name) {
  return row("UNIXSystemParams", {{"Hostname", name}});
}

// "rank key", empty for none.
std::string keyOf(const std::string& inside) {
  const auto key = hostKey(documentOf(hardware(inside)));
  return key ? std::to_string(key->rank) + " " + key->key : "";
}

TEST(HostKey, systemUuidComesFirst) {
  EXPECT_EQ(std::string("1 ") + kUuid,
            keyOf(smbios("SystemUUIDText", kUuid) + component("S1") + hostNamed("a")));
}

TEST(HostKey, storedUuidOfAClassicDocumentIsTheSameKey) {
  EXPECT_EQ(std::string("1 ") + kUuid,
            keyOf(smbios("SystemUUID", "33221100554477668899AABBCCDDEEFF")));
}

TEST(HostKey, hypervisorsUuidCountsWhereThereIsNoFirmware) {
  EXPECT_EQ(std::string("1 ") + kUuid, keyOf(row("Machine", {{"UUID", kUuid}})));
}

TEST(HostKey, fillersOfUuidsAreNone) {
  for (const char* filler :
       {"00000000-0000-0000-0000-000000000000", "ffffffff-ffff-ffff-ffff-ffffffffffff",
        "fefefefe-fefe-fefe-fefe-fefefefefefe", "03000200-0400-0500-0006-000700080009", "",
        "1234"}) {
    EXPECT_EQ("4 a", keyOf(smbios("SystemUUIDText", filler) + hostNamed("a"))) << filler;
  }
}

TEST(HostKey, makerProductAndSerialComeNextAndStayApart) {
  EXPECT_EQ("2 Example\\, Inc.,Rack,S1", keyOf(component("S1") + adapter("00:1b:21:00:00:01")));
}

TEST(HostKey, fillerOfASerialIsNone) {
  EXPECT_EQ("3 00:1b:21:00:00:01",
            keyOf(component("To Be Filled By O.E.M.") + adapter("00:1b:21:00:00:01")));
}

TEST(HostKey, smallestAddressOfAMakerIsTaken) {
  EXPECT_EQ("3 00:1b:21:00:00:01",
            keyOf(adapter("00:1B:21:00:00:02") + adapter("00:1b:21:00:00:01") +
                  adapter("02:00:00:00:00:01") + adapter("00:00:00:00:00:00") +
                  adapter("01:00:5e:00:00:01") + adapter("")));
}

TEST(HostKey, hostNameIsTheLastResort) {
  EXPECT_EQ("4 node7.example.com",
            keyOf(adapter("02:42:ac:11:00:02") + hostNamed("node7.example.com")));
  EXPECT_EQ("", keyOf(hostNamed("localhost")));
  EXPECT_EQ("", keyOf(""));
}

}  // namespace
}  // namespace quenlor::ctl
