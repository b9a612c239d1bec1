#include "quenlorctl/rows/RowWriter.h"

#include <gtest/gtest.h>

#include "tests/quenlorctl/support/Documents.h"

namespace quenlor::ctl {
namespace {

std::string ndjsonOf(const std::string& inside, const std::string& host = "") {
  const Document document = documentOf(hardware(inside));
  std::string out;
  for (const Document::Row& row : document.rows()) {
    appendNdjson(out, RowHead::of(document, host), document, row);
  }
  return out;
}

std::string csvOf(const std::string& inside, bool isRaw = false) {
  const Document document = documentOf(hardware(inside));
  std::string out;
  appendCsvHeader(out, *document.rows().front().group);
  for (const Document::Row& row : document.rows()) {
    appendCsv(out, RowHead::of(document, "h"), document, row, isRaw);
  }
  return out;
}

TEST(Ndjson, rowHasItsHeadAndItsSqlNames) {
  EXPECT_EQ(
      "{\"host\":\"node\",\"host_rank\":4,\"scan\":\"2026-11-22T01:02:03Z\",\"group\":\"scan_"
      "info\","
      "\"row\":1,\"scan_time\":\"2026-11-22T01:02:03Z\"}\n"
      "{\"host\":\"node\",\"host_rank\":4,\"scan\":\"2026-11-22T01:02:03Z\",\"group\":"
      "\"unix_system_params\",\"row\":1,\"hostname\":\"node\"}\n",
      ndjsonOf(row("ScanInfo", {{"ScanTime", "2026-11-22T01:02:03Z"}}) +
               row("UNIXSystemParams", {{"Hostname", "node"}})));
}

TEST(Ndjson, whatIsNotKnownIsLeftOut) {
  EXPECT_EQ("{\"group\":\"scan_info\",\"row\":1}\n", ndjsonOf(row("ScanInfo", {{"ScanDate", ""}})));
  EXPECT_EQ("{\"group\":\"storage\",\"row\":1}\n", ndjsonOf(row("Storage", {{"Removable", ""}})));
}

TEST(Ndjson, hostMayBeTold) {
  EXPECT_EQ("{\"host\":\"mine\",\"host_rank\":0,\"group\":\"memory\",\"row\":1}\n",
            ndjsonOf(row("Memory", {}), "mine"));
}

TEST(Ndjson, valuesHaveTheTypeOfTheirAttribute) {
  EXPECT_EQ(
      "{\"group\":\"storage\",\"row\":1,\"type\":\"Hard Disk\",\"total_size\":5,\"size_bytes\":-1,"
      "\"removable\":true}\n"
      "{\"group\":\"unix_cpu_meter\",\"row\":1,\"load_avg1\":0.25}\n"
      "{\"group\":\"scan_info\",\"row\":1,\"scan_date\":\"2026-11-22T01:02:03\"}\n",
      ndjsonOf(row("Storage", {{"Type", "Hard Disk"},
                               {"TotalSize", "005"},
                               {"SizeBytes", "-1"},
                               {"Removable", "Y"}}) +
               row("UnixCpuMeter", {{"LoadAvg1", "0.250000"}}) +
               row("ScanInfo", {{"ScanDate", "2026-11-22-01.02.03.000000"}})));
}

TEST(Ndjson, onlyAsciiComesOut) {
  EXPECT_EQ("{\"group\":\"storage\",\"row\":1,\"model\":\"\\u00FC\\u202E\\u007F\\\"\\\\\\n\"}\n",
            ndjsonOf(row("Storage", {{"Model", "\xC3\xBC\xE2\x80\xAE\x7F\"\\\n"}})));
}

TEST(Csv, rowsOfAGroupHaveTheSameColumns) {
  const std::string csv = csvOf(row("UnixCpuMeter", {{"LoadAvg5", "1.500000"}}) +
                                row("UnixCpuMeter", {{"LoadAvg1", "2.000000"}}));
  EXPECT_EQ(
      "host,host_rank,scan,group,row,load_avg1,load_avg5,load_avg15\r\n"
      "h,0,,unix_cpu_meter,1,,1.500000,\r\nh,0,,unix_cpu_meter,2,2.000000,,\r\n",
      csv);
}

std::string vendorColumn(const std::string& text, bool isRaw = false) {
  const std::string csv = csvOf(row("SMBIOS", {{"BIOSVendor", text}}), isRaw);
  const std::string line = csv.substr(csv.find("\r\n") + 2);
  const std::string head = "h,0,,smbios,1,";
  return line.substr(head.size(), line.find_last_not_of(",\r\n") + 1 - head.size());
}

TEST(Csv, fieldsAreQuotedWhereTheyNeedIt) {
  EXPECT_EQ("plain text", vendorColumn("plain text"));
  EXPECT_EQ("\"a, \"\"b\"\"\"", vendorColumn("a, \"b\""));
}

TEST(Csv, formulasGetAnApostropheUnlessRaw) {
  for (const std::string start : {"=", "+", "-", "@"}) {
    EXPECT_EQ("'" + start + "1", vendorColumn(start + "1"));
    EXPECT_EQ(start + "1", vendorColumn(start + "1", true));
  }
  EXPECT_EQ("1=1", vendorColumn("1=1"));
  EXPECT_EQ("\"'=A1,B1\"", vendorColumn("=A1,B1"));
}

TEST(Csv, controlsDoNotComeOut) {
  EXPECT_EQ("'\xEF\xBF\xBD=1", vendorColumn("\t=1"));
  EXPECT_EQ("a\xEF\xBF\xBD[31m", vendorColumn("a\xC2\x9B[31m"));
}

}  // namespace
}  // namespace quenlor::ctl
