#include "quenlorctl/document/ValueForms.h"

#include <gtest/gtest.h>

namespace quenlor::ctl {
namespace {

const Field& field(const char* group, const char* name) {
  return *findGroupElement(group)->findElement(name);
}
const Field& number() { return field("Storage", "TotalSize"); }
const Field& integer() { return field("Storage", "SizeBytes"); }
const Field& real() { return field("UnixCpuMeter", "LoadAvg1"); }
const Field& yesNo() { return field("Storage", "Removable"); }
const Field& dateTime() { return field("ScanInfo", "ScanDate"); }
const Field& word() { return field("Storage", "Type"); }
const Field& closedText() { return field("Storage", "Medium"); }

struct Verdict {
  const Field& field;
  const char* text;
  bool isValid;
  bool isOfForm;
};

TEST(ValueForms, verdictsAreThoseOfTheSchema) {
  const Verdict verdicts[] = {
      {number(), "0", true, true},
      {number(), "00000000000000000000000000012", true, true},
      {number(), "18446744073709551615", true, true},
      {number(), "18446744073709551616", false, false},
      {number(), "", false, false},
      {number(), "+1", false, false},
      {number(), "-0", false, false},
      {number(), " 1", false, false},
      {number(), "1 ", false, false},
      {number(), "0x10", false, false},
      {integer(), "-9223372036854775808", true, true},
      {integer(), "9223372036854775808", false, false},
      {integer(), "+5", true, true},
      {integer(), "+-5", false, false},
      {integer(), "--5", false, false},
      {integer(), "-", false, false},
      {integer(), "", false, false},
      {real(), "1.500000", true, true},
      {real(), "-0.000000", true, true},
      {real(), "nan", true, false},
      {real(), "-inf", true, false},
      {real(), "1.5", false, false},
      {real(), "1.5000000", false, false},
      {real(), ".500000", false, false},
      {real(), "1,500000", false, false},
      {yesNo(), "Y", true, true},
      {yesNo(), "N", true, true},
      {yesNo(), "H", true, false},
      {yesNo(), "", true, true},
      {dateTime(), "2026-11-22-01.02.03.000000", true, true},
      {dateTime(), "", true, true},
      {dateTime(), "2026-13-22-01.02.03.000000", true, false},
      {dateTime(), "2026-11-22-24.02.03.000000", true, false},
      {dateTime(), "2026-11-22-01.02.03.000001", false, false},
      {dateTime(), "2026-11-22T01:02:03", false, false},
      {word(), "Hard Disk", true, true},
      {word(), "77", true, true},
      {word(), " 77\n", true, true},
      {word(), "hard disk", false, true},
      {word(), " Hard Disk", false, true},
      {closedText(), "ssd", true, true},
      {closedText(), "cloud", false, true},
      {closedText(), "", false, true},
  };
  for (const Verdict& verdict : verdicts) {
    EXPECT_EQ(verdict.isValid, isValid(verdict.field, verdict.text))
        << verdict.field.name << " " << verdict.text;
    EXPECT_EQ(verdict.isOfForm, numberOf(verdict.field, verdict.text).has_value())
        << verdict.field.name << " " << verdict.text;
  }
}

TEST(ValueForms, numbersAreWhatTheTextSays) {
  EXPECT_EQ(18446744073709551615U, numberOf(number(), "18446744073709551615")->number);
  EXPECT_EQ(-5, numberOf(integer(), "-5")->integer);
  EXPECT_DOUBLE_EQ(-0.25, numberOf(real(), "-0.250000")->real);
  EXPECT_TRUE(numberOf(yesNo(), "Y")->yes);
  EXPECT_FALSE(numberOf(yesNo(), "N")->yes);
}

TEST(ValueForms, dateTimesBecomeIso) {
  EXPECT_EQ("2026-11-22T01:02:03", isoDateTime("2026-11-22-01.02.03.000000"));
  EXPECT_EQ("2016-12-31T23:59:60", isoDateTime("2016-12-31-23.59.60.000000"));  // a leap second
  EXPECT_FALSE(isoDateTime(""));
  EXPECT_FALSE(isoDateTime("0000-00-00-00.00.00.000000"));
}

}  // namespace
}  // namespace quenlor::ctl
