#include "scan/CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quenlor {
namespace {

constexpr const char* kUsage =
    "Usage:  quenlor [-c <config_file>] [-o <output_file>] [-m]\n"
    "where:\n"
    "  -c <config_file> Specifies the configuration file that lists the components\n"
    "                   to scan for.\n"
    "  -o              Specifies the output file name (default stdout).\n"
    "  -m              Generate the MIF output for hardware scan.\n";

class CommandLineTest : public ::testing::Test {
 protected:
  CommandLineResult parse(std::vector<const char*> arguments) {
    arguments.insert(arguments.begin(), "quenlor");
    testing::internal::CaptureStderr();
    CommandLineResult result =
        parseCommandLine(static_cast<int>(arguments.size()), arguments.data(),
                         [this] { return ++builds, buildResult; });
    errorText = testing::internal::GetCapturedStderr();
    return result;
  }

  void expectUsage(const std::vector<const char*>& arguments) {
    const CommandLineResult result = parse(arguments);
    EXPECT_TRUE(result.finished) << testing::PrintToString(arguments);
    EXPECT_EQ(result.status, 1) << testing::PrintToString(arguments);
    EXPECT_EQ(errorText, kUsage);
  }

  int builds = 0;
  int buildResult = 9;
  std::string errorText;
};

TEST_F(CommandLineTest, withoutArgumentsXmlGoesToStandardOutput) {
  const CommandLineResult result = parse({});
  EXPECT_FALSE(result.finished);
  EXPECT_EQ(result.options.outputFile, "stdout");
  EXPECT_TRUE(result.options.configFile.empty());
  EXPECT_TRUE(result.options.xml);
  EXPECT_FALSE(result.options.list);
  EXPECT_EQ(errorText, "");
}

TEST_F(CommandLineTest, optionsAreTakenInAnyOrder) {
  const CommandLineResult result = parse({"-m", "-o", "out", "-c", "cfg"});
  EXPECT_FALSE(result.finished);
  EXPECT_FALSE(result.options.xml);
  EXPECT_EQ(result.options.outputFile, "out");
  EXPECT_EQ(result.options.configFile, "cfg");
}

TEST_F(CommandLineTest, wrongCommandLinesPrintTheUsageText) {
  expectUsage({"-c", "a", "-c", "b"});
  expectUsage({"-o", "a", "-o", "b"});
  expectUsage({"-o"});
  expectUsage({"-c"});
  expectUsage({"-x"});
  expectUsage({"word"});
  expectUsage({"-mc"});
  expectUsage({"-cm", "x"});
  expectUsage({"-"});
  expectUsage({"--"});
  expectUsage({""});
  expectUsage({"-m", "-m"});
  expectUsage({"-w", "-w"});
  expectUsage({"-l", "-l"});
  expectUsage({"-w", "-l"});
}

TEST_F(CommandLineTest, anOptionMayServeAsValue) {
  EXPECT_EQ(parse({"-c", "-m"}).options.configFile, "-m");
  EXPECT_TRUE(parse({"-c", "-m"}).options.xml);
}

TEST_F(CommandLineTest, helpEndsWithStatusZeroAndLooksNoFurther) {
  const CommandLineResult result = parse({"-h", "-x"});
  EXPECT_TRUE(result.finished);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(errorText, kUsage);  // once
}

TEST_F(CommandLineTest, errorsBeforeHelpCount) { expectUsage({"-x", "-h"}); }

TEST_F(CommandLineTest, namesOf256BytesAreRefused) {
  const std::string longest(255, 'n');
  const std::string tooLong(256, 'n');
  EXPECT_EQ(parse({"-o", longest.c_str()}).options.outputFile, longest);
  expectUsage({"-o", tooLong.c_str()});
  expectUsage({"-c", tooLong.c_str()});
}

TEST_F(CommandLineTest, listBuildsItsEntriesAtItsPlace) {
  EXPECT_TRUE(parse({"-l"}).options.list);
  EXPECT_EQ(builds, 1);
  expectUsage({"-l", "-x"});
  EXPECT_EQ(builds, 2);
  expectUsage({"-x", "-l"});
  EXPECT_EQ(builds, 2);
}

TEST_F(CommandLineTest, wAfterListIsAcceptedAndKeepsTheList) {
  const CommandLineResult result = parse({"-l", "-w"});
  EXPECT_FALSE(result.finished);
  EXPECT_TRUE(result.options.list);
  EXPECT_TRUE(result.options.wOption);
}

TEST_F(CommandLineTest, listOfNoEntriesIsNoFailure) {
  buildResult = 0;
  EXPECT_FALSE(parse({"-l"}).finished);
}

TEST_F(CommandLineTest, failingBuildEndsWithStatusEight) {
  buildResult = -1;
  const CommandLineResult result = parse({"-l", "-x"});
  EXPECT_TRUE(result.finished);
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(errorText, "");
}

}  // namespace
}  // namespace quenlor
