#include "quenlorctl/diff/Diff.h"

#include <gtest/gtest.h>

#include "tests/quenlorctl/support/Documents.h"

namespace quenlor::ctl {
namespace {

// The text between two documents with these rows.
std::string between(const std::string& before, const std::string& after,
                    const DiffOptions& options = {}) {
  const Document old = documentOf(hardware(before));
  const Document now = documentOf(hardware(after));
  return diffText(diffDocuments(old, now, options));
}

std::string jsonBetween(const std::string& before, const std::string& after) {
  const Document old = documentOf(hardware(before));
  const Document now = documentOf(hardware(after));
  return diffJson(diffDocuments(old, now));
}

DiffOptions all() { return {true, {}}; }

std::string modern(const std::string& rest) {
  return row("ScanInfo", {{"Sources", "modern"}}) + rest;
}
std::string result(const std::string& group, const std::string& status) {
  return row("ScanResult", {{"Group", group}, {"Status", status}});
}
std::string disk(const std::string& model, const std::string& serial, Attributes more = {}) {
  more.insert(more.begin(), {{"Model", model}, {"SerialNumber", serial}});
  return row("Storage", more);
}
std::string processor(const std::string& family) {
  return row("Processor", {{"Family", family}, {"Manufacturer", "Maker"}});
}

TEST(Diff, sameDocumentsHaveNoFacts) {
  EXPECT_EQ("", between(disk("a", "1"), disk("a", "1")));
  EXPECT_EQ("[]\n", jsonBetween("", ""));
}

TEST(Diff, valuesHaveTheirUnits) {
  EXPECT_EQ(
      "Memory\n  ~ Page Size: 4096 bytes to 8192 bytes\n  ~ Num Slots Supported: 4 to 8\n"
      "\nUNIX System Params\n  ~ Hostname: \"a\" to \"b\"\n",
      between(row("Memory", {{"PageSize", "4096"}, {"NumSlotsSupported", "4"}}) +
                  row("UNIXSystemParams", {{"Hostname", "a"}}),
              row("Memory", {{"PageSize", "8192"}, {"NumSlotsSupported", "8"}}) +
                  row("UNIXSystemParams", {{"Hostname", "b"}})));
}

TEST(Diff, rowsAreAddedRemovedAndChangedByIdentity) {
  EXPECT_EQ("Storage\n  ~ B, 2: Manufacturer: \"x\" to \"y\"\n  - A, 1\n  + C, 3\n",
            between(disk("A", "1") + disk("B", "2", {{"Manufacturer", "x"}}),
                    disk("C", "3") + disk("B", "2", {{"Manufacturer", "y"}})));
}

TEST(Diff, equalIdentitiesAreCounted) {
  EXPECT_EQ("Processor\n  ~ 2 x Xeon, Maker to 3 x\n",
            between(processor("Xeon") + processor("Xeon"),
                    processor("Xeon") + processor("Xeon") + processor("Xeon")));
  EXPECT_EQ("Processor\n  + 2 x New, Maker\n",
            between(processor("Xeon"), processor("Xeon") + processor("New") + processor("New")));
}

TEST(Diff, oneOfSeveralAlikeIsNumbered) {
  const auto module = [](const char* type) {
    return row("Processor", {{"Family", "Xeon"}, {"Manufacturer", "Maker"}, {"Interface", type}});
  };
  EXPECT_EQ("Processor\n  ~ Xeon, Maker #2: Interface: \"A\" to \"B\"\n",
            between(module("A") + module("A"), module("B") + module("A")));
}

TEST(Diff, volatileValuesAndRowNumbersAreLeftOut) {
  const std::string before =
      disk("A", "1", {{"Index", "1"}}) + row("Memory", {{"FreePhysical", "1"}});
  const std::string after =
      disk("A", "1", {{"Index", "9"}}) + row("Memory", {{"FreePhysical", "2"}});
  EXPECT_EQ("", between(before, after));
  EXPECT_EQ("Memory\n  ~ Free Physical: 1 kB to 2 kB\n", between(before, after, all()));
}

TEST(Diff, valueThatARowLacksIsNotReported) {
  EXPECT_EQ("Storage\n  ? A, 1: Manufacturer: not reported, was \"x\"\n",
            between(disk("A", "1", {{"Manufacturer", "x"}}), disk("A", "1")));
  EXPECT_EQ("Storage\n  + A, 1: Manufacturer: \"x\"\n",
            between(disk("A", "1"), disk("A", "1", {{"Manufacturer", "x"}})));
}

TEST(Diff, tableThatIsMissingIsNotReported) {
  EXPECT_EQ("Storage\n  ? not reported (2 rows)\n", between(disk("A", "1") + disk("B", "2"), ""));
  EXPECT_EQ("Storage\n  ? not reported before (1 row)\n", between("", disk("A", "1")));
}

TEST(Diff, onlyRowsOfACompleteModernTableAreGone) {
  const std::string before =
      modern(disk("A", "1") + disk("B", "2") + result("Storage", "complete"));
  EXPECT_EQ("Storage\n  - B, 2\n",
            between(before, modern(disk("A", "1") + result("Storage", "complete"))));
  EXPECT_EQ(
      "Storage\n  ? B, 2: not reported\n\nScan Result\n"
      "  ~ Storage: Status: \"complete\" to \"timed out\"\n",
      between(before, modern(disk("A", "1") + result("Storage", "timed out"))));
  EXPECT_EQ("Storage\n  - A, 1\n  - B, 2\n",
            between(before, modern(result("Storage", "complete"))));
  EXPECT_EQ(
      "Storage\n  ? not reported (2 rows)\n\nScan Result\n"
      "  ~ Storage: Status: \"complete\" to \"timed out\"\n",
      between(before, modern(result("Storage", "timed out"))));
}

TEST(Diff, rowThatAnIncompleteTableLackedIsNotNew) {
  EXPECT_EQ(
      "Storage\n  ? B, 2: not reported before\n\nScan Result\n"
      "  ~ Storage: Status: \"partial\" to \"complete\"\n",
      between(modern(disk("A", "1") + result("Storage", "partial")),
              modern(disk("A", "1") + disk("B", "2") + result("Storage", "complete"))));
}

TEST(Diff, betterIdentityWinsAndAWorseOneHelpsOut) {
  const auto drive = [](const Attributes& attributes) {
    return modern(row("Storage", attributes) + result("Storage", "complete"));
  };
  // The name that one side could not read: still the drive with that serial number.
  EXPECT_EQ("Storage\n  + M, S: World Wide Name: \"naa.1\"\n",
            between(drive({{"Model", "M"}, {"SerialNumber", "S"}}),
                    drive({{"Model", "M"}, {"SerialNumber", "S"}, {"WorldWideName", "naa.1"}})));
  // Another drive in the same place is another drive.
  EXPECT_EQ("Storage\n  - naa.1\n  + naa.2\n",
            between(drive({{"WorldWideName", "naa.1"}, {"Location", "0000:00:1f.2/0"}}),
                    drive({{"WorldWideName", "naa.2"}, {"Location", "0000:00:1f.2/0"}})));
}

TEST(Diff, memoryMayMoveByTwoPerCent) {
  const auto memory = [](const char* size) { return row("Memory", {{"TotalPhysical", size}}); };
  EXPECT_EQ("", between(memory("1000000"), memory("1020000")));
  EXPECT_EQ("Memory\n  ~ Total Physical: 1000000 kB to 1021000 kB\n",
            between(memory("1000000"), memory("1021000")));
  EXPECT_NE("", between(memory("1000000"), memory("1000001"), all()));
}

TEST(Diff, bootTimeMayMoveByTwoMinutesOrByMoreOfOneBoot) {
  const auto boot = [](const char* time, const char* id = "") {
    Attributes attributes = {{"BootTime", time}};
    if (*id != '\0') attributes.emplace_back("BootID", id);
    return row("UNIXSystemParams", attributes);
  };
  const char* first = "2026-11-22-23.59.00.000000";
  EXPECT_EQ("", between(boot(first), boot("2026-11-23-00.01.00.000000")));
  EXPECT_EQ("UNIX System Params\n  ~ Boot Time: 2026-11-22T23:59:00 to 2026-11-23T00:01:01\n",
            between(boot(first), boot("2026-11-23-00.01.01.000000")));
  EXPECT_EQ("", between(boot(first, "b"), boot("2026-11-23-09.00.00.000000", "b")));
}

TEST(Diff, sizeOfARemovableMediumChangesByItself) {
  const auto stick = [](const char* size, const char* removable) {
    return modern(disk("A", "1", {{"SizeBytes", size}, {"Removable", removable}}));
  };
  EXPECT_EQ("", between(stick("1", "Y"), stick("2", "Y")));
  EXPECT_NE("", between(stick("1", "N"), stick("2", "N")));
}

TEST(Diff, otherScannerIsToldFirst) {
  EXPECT_EQ(
      "scanner changed: minor version 3 to 4\nscanner changed: build \"a\" to \"b\"\n"
      "\nMemory\n  ~ Page Size: 1 bytes to 2 bytes\n",
      between(row("Memory", {{"PageSize", "1"}}) +
                  row("ScanInfo", {{"MinorVersion", "3"}, {"Build", "a"}}),
              row("Memory", {{"PageSize", "2"}}) +
                  row("ScanInfo", {{"MinorVersion", "4"}, {"Build", "b"}})));
}

TEST(Diff, betweenClassicAndModernOnlyWhatBothCanTell) {
  const std::string classic = disk("A", "1", {{"ID", "x"}, {"TotalSize", "5"}}) +
                              processor("Xeon") + processor("Xeon") +
                              row("Memory", {{"PageSize", "1"}}) + row("ScanInfo", {});
  const std::string now =
      modern(disk("A", "1", {{"ID", "y"}, {"TotalSize", "6"}, {"Bus", "sata"}}) + disk("B", "2") +
             processor("Xeon") + row("Memory", {{"PageSize", "2"}}) +
             row("Battery", {{"Name", "BAT0"}}) + result("Storage", "complete"));
  EXPECT_EQ(
      "scanner changed: sources classic to modern\n\nMemory\n  ~ Page Size: 1 bytes to 2 bytes\n"
      "\nStorage\n  ~ A, 1: Total Size: 5 MB to 6 MB\n",
      between(classic, now));
}

TEST(Diff, interfacesOfContainersComeAndGo) {
  const auto interface = [](const char* name, const char* kind) {
    return row("NetworkAdapter", {{"Interface", name}, {"Kind", kind}}) +
           row("IPAddress", {{"Address", "10.0.0.1"}, {"Interface", name}});
  };
  const std::string results =
      result("Network Adapter", "complete") + result("IP Address", "complete");
  const std::string before = modern(interface("eth0", "physical") + results);
  for (const char* kind : {"veth", "tun", "tap", "ifb", "dummy"}) {
    const std::string after =
        modern(interface("eth0", "physical") + interface("c0", kind) + results);
    EXPECT_EQ("", between(before, after)) << kind;
    EXPECT_EQ(
        "IP Address\n  + 10.0.0.1, c0\n\nNetwork Adapter\n  + c0, " + std::string(kind) + "\n",
        between(before, after, all()));
  }
  EXPECT_NE("", between(before, modern(interface("eth0", "physical") + interface("br0", "bridge") +
                                       results)));
}

TEST(Diff, adapterOfAClassicDocumentIsOneHoweverManyAddressesItHas) {
  const auto adapter = [](const char* id) {
    return row("NetworkAdapter",
               {{"ID", id}, {"PermanentAddress", "00:1b:21:00:00:01"}, {"Model", "M"}});
  };
  EXPECT_EQ("", between(adapter("a") + adapter("b"), adapter("a")));
}

TEST(Diff, whatTheCatalogueLacksIsComparedAsText) {
  EXPECT_EQ("Storage\n  ~ A, 1: Colour: \"red\" to \"blue\"\n",
            between(disk("A", "1", {{"Colour", "red"}}), disk("A", "1", {{"Colour", "blue"}})));
  EXPECT_EQ("Storage\n  ~ A, 1: Total Size: 5 MB to \"big\"\n",
            between(disk("A", "1", {{"TotalSize", "5"}}), disk("A", "1", {{"TotalSize", "big"}})));
  EXPECT_EQ("Fan\n  ~ Speed: \"1\" to \"2\"\n",
            between(row("Fan", {{"Speed", "1"}}), row("Fan", {{"Speed", "2"}})));
  EXPECT_EQ("Fan\n  ? not reported (1 row)\n", between(row("Fan", {{"Speed", "1"}}), ""));
}

TEST(Diff, onlyTheGroupsThatAreAskedFor) {
  const DiffOptions options{false, {findGroupName("memory")}};
  EXPECT_EQ("Memory\n  ? not reported (1 row)\n",
            between(disk("A", "1") + row("Memory", {}), "", options));
}

TEST(Diff, hostileTextsAreCleaned) {
  EXPECT_EQ("Storage\n  - A\xEF\xBF\xBD[2J, 1\n  + B, 2\n",
            between(disk("A\xC2\x9B[2J", "1"), disk("B", "2")));
}

TEST(Diff, jsonNamesEveryFact) {
  EXPECT_EQ(
      R"([{"group":"Scan Info","identity":"","kind":"changed","attribute":"Minor Version","old":3,"new":4},)"
      R"({"group":"Storage","identity":"B, 2","kind":"changed","attribute":"Manufacturer","old":"x","new":"y"},)"
      R"({"group":"Storage","identity":"A, 1","kind":"removed","old":1},)"
      R"({"group":"Storage","identity":"C, 3","kind":"added","new":1},)"
      R"({"group":"SMBIOS","identity":"","kind":"not_reported","old":1}])"
      "\n",
      jsonBetween(disk("A", "1") + disk("B", "2", {{"Manufacturer", "x"}}) + row("SMBIOS", {}) +
                      row("ScanInfo", {{"MinorVersion", "3"}}),
                  disk("C", "3") + disk("B", "2", {{"Manufacturer", "y"}}) +
                      row("ScanInfo", {{"MinorVersion", "4"}})));
}

}  // namespace
}  // namespace quenlor::ctl
