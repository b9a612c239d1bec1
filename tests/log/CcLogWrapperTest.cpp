#include "log/CcLogWrapper.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "base/Trace.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

constexpr char kSourcePath[] = "../../../src/invscan/linux/ProcessorGroup.cpp";
const TraceFunction at{kSourcePath, "getTable()"};

class CcLogWrapperTest : public testing::Test {
 protected:
  ~CcLogWrapperTest() override { CcLogWrapper::initialize(nullptr); }

  std::string path(const std::string& name) const { return m_directory.path(name); }

  void initialize(const std::string& properties) const {
    CcLogWrapper::initialize(m_directory.write("DovTrace.properties", properties).c_str());
  }
  void initializeAt(const std::string& level) const {
    initialize("trace.file = " + path("trace") + "\ntrace.level = " + level + "\n");
  }

  std::string trace(const std::string& name = "trace") const { return m_directory.read(name); }

  test::TemporaryDirectory m_directory;
};

void traceOneOfEach() {
  getCcLogHw()->traceMIN(at(), "hardware %s", "failure");
  getCcLogHw()->traceMidEntry(at(), "hardware %s", "entry");
  getCcLogHw()->traceMidExit(at(), "hardware %s", "exit");
  getCcLogHw()->traceMAX(at(), "hardware %s", "detail");
}

TEST_F(CcLogWrapperTest, aRecordHoldsTimeLevelSourceLineFunctionAndText) {
  initializeAt("MAX");
  const unsigned line = __LINE__ + 1;
  getCcLogHw()->traceMAX(at(), "hardware %s %d", "pcount=", 4);
  const std::regex record(
      R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} MAX )"
      R"(\.\./\.\./\.\./src/invscan/linux/ProcessorGroup\.cpp:(\d+) getTable\(\) )"
      R"(hardware pcount= 4\n)");
  const std::string text = trace();
  std::smatch match;
  ASSERT_TRUE(std::regex_match(text, match, record)) << text;
  EXPECT_EQ(match[1], std::to_string(line));
}

TEST_F(CcLogWrapperTest, eachLevelWritesItsOwnAndTheWeightierRecords) {
  const auto countAt = [&](const char* level) {
    std::filesystem::remove(path("trace"));
    initializeAt(level);
    traceOneOfEach();
    const std::string text = trace();
    return std::count(text.begin(), text.end(), '\n');
  };
  EXPECT_EQ(countAt("NONE"), 0);
  EXPECT_FALSE(std::filesystem::exists(path("trace")));
  EXPECT_EQ(countAt("MIN"), 1);
  EXPECT_EQ(countAt("MID"), 3);
  EXPECT_EQ(countAt("MAX"), 4);
}

TEST_F(CcLogWrapperTest, isEnabledFollowsTheLevelSet) {
  initializeAt("MID");
  EXPECT_TRUE(getCcLogHw()->isEnabled(TraceLevel::kMin));
  EXPECT_TRUE(getCcLogHw()->isEnabled(TraceLevel::kMid));
  EXPECT_FALSE(getCcLogHw()->isEnabled(TraceLevel::kMax));
  CcLogWrapper::initialize(path("missing").c_str());
  EXPECT_FALSE(getCcLogHw()->isEnabled(TraceLevel::kMin));
}

TEST_F(CcLogWrapperTest, entryAndExitAreTold) {
  initializeAt("MID");
  traceOneOfEach();
  EXPECT_NE(trace().find(" MID entry "), std::string::npos);
  EXPECT_NE(trace().find(" MID exit "), std::string::npos);
  EXPECT_NE(trace().find(" MIN "), std::string::npos);
}

TEST_F(CcLogWrapperTest, longTextsArriveWhole) {
  initializeAt("MAX");
  for (const size_t length : {255u, 256u, 257u, 100000u}) {
    const std::string text(length, 'x');
    getCcLogHw()->traceMAX(at(), "hardware [%s]", text.c_str());
    EXPECT_NE(trace().find("[" + text + "]\n"), std::string::npos) << length;
  }
}

TEST_F(CcLogWrapperTest, newlinesControlCharactersAndBracesAreKept) {
  initializeAt("MAX");
  getCcLogHw()->traceMAX(at(), "hardware one\ntwo\t\x01{} {0} %%\n");
  EXPECT_NE(trace().find("hardware one\ntwo\t\x01{} {0} %\n\n"), std::string::npos);
}

TEST_F(CcLogWrapperTest, wideTextThatTheLocaleLacksLeavesTheFormat) {
  initializeAt("MAX");
  getCcLogHw()->traceMAX(at(), "hardware %ls", L"\u20AC");
  EXPECT_NE(trace().find("hardware %ls\n"), std::string::npos);
}

TEST_F(CcLogWrapperTest, errnoOfTheCallerSurvives) {
  initializeAt("MAX");
  errno = EXDEV;
  getCcLogHw()->traceMAX(at(), "hardware %m");
  EXPECT_EQ(errno, EXDEV);
}

TEST_F(CcLogWrapperTest, missingMalformedAndBinaryPropertiesMeanNoTracing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  CcLogWrapper::initialize(nullptr);
  EXPECT_FALSE(getCcLogHw()->isEnabled(TraceLevel::kMin));
  CcLogWrapper::initialize(m_directory.path().c_str());
  EXPECT_FALSE(getCcLogHw()->isEnabled(TraceLevel::kMin));
  const std::string file = "trace.file = " + path("trace") + "\ntrace.level = MAX\n";
  for (const std::string& wrong :
       {std::string("nonsense"), std::string("trace.size = x"), std::string("\0\x01\xFF", 3)}) {
    initialize(file + wrong);
    EXPECT_FALSE(getCcLogHw()->isEnabled(TraceLevel::kMin)) << wrong;
    traceOneOfEach();
  }
  EXPECT_FALSE(std::filesystem::exists(path("trace")));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(CcLogWrapperTest, aTraceFileThatCannotBeOpenedMeansNoTracing) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  for (const std::string& file : {path("missing/trace"), m_directory.path().string(), path("pipe"),
                                  std::string("/dev/full"), std::string("/proc/self/trace")}) {
    initialize("trace.level = MAX\ntrace.file = " + file);
    EXPECT_FALSE(getCcLogHw()->isEnabled(TraceLevel::kMin)) << file;
    traceOneOfEach();
  }
  EXPECT_FALSE(std::filesystem::exists(path("missing")));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(CcLogWrapperTest, aSymbolicLinkIsNotFollowed) {
  std::ofstream(path("target")) << "precious";
  std::filesystem::create_symlink(path("target"), path("trace"));
  initializeAt("MAX");
  traceOneOfEach();
  EXPECT_FALSE(getCcLogHw()->isEnabled(TraceLevel::kMin));
  EXPECT_EQ(trace("target"), "precious");
}

TEST_F(CcLogWrapperTest, traceFilesAreForTheirOwnerOnly) {
  const mode_t before = umask(0);
  initialize("trace.level = MAX\ntrace.size = 100\ntrace.file = " + path("trace"));
  traceOneOfEach();
  umask(before);
  for (const char* name : {"trace", "trace.1"}) {
    struct stat status {};
    ASSERT_EQ(stat(path(name).c_str(), &status), 0) << name;
    EXPECT_EQ(status.st_mode & 0777u, 0600u) << name;
  }
}

TEST_F(CcLogWrapperTest, commandsDoNotInheritTheTraceFile) {
  initializeAt("MAX");
  const std::string command =
      "ls -l /proc/self/fd | grep -c '" + path("trace") + "' >" + path("inherited");
  ASSERT_NE(system(command.c_str()), -1);
  EXPECT_EQ(trace("inherited"), "0\n");
}

TEST_F(CcLogWrapperTest, aRelativeNameCountsFromThePropertiesFile) {
  initialize("trace.level = MAX\ntrace.file = here");
  traceOneOfEach();
  EXPECT_NE(trace("here"), "");
}

TEST_F(CcLogWrapperTest, filesAreRotatedAtTheirSizeAndTheOldestGoes) {
  initialize("trace.level = MAX\ntrace.size = 500\ntrace.count = 2\ntrace.file = " + path("trace"));
  for (int i = 0; i < 50; ++i) getCcLogHw()->traceMAX(at(), "hardware number %d;", i);
  for (const char* name : {"trace", "trace.1", "trace.2"}) {
    EXPECT_TRUE(std::filesystem::exists(path(name))) << name;
    EXPECT_LE(std::filesystem::file_size(path(name)), 500u) << name;
  }
  EXPECT_FALSE(std::filesystem::exists(path("trace.3")));
  EXPECT_NE(trace().find("number 49;"), std::string::npos);
}

TEST_F(CcLogWrapperTest, withoutRotatedFilesTheOneFileBeginsAgain) {
  initialize("trace.level = MAX\ntrace.size = 500\ntrace.count = 0\ntrace.file = " + path("trace"));
  for (int i = 0; i < 50; ++i) getCcLogHw()->traceMAX(at(), "hardware number %d;", i);
  EXPECT_LE(std::filesystem::file_size(path("trace")), 500u);
  EXPECT_NE(trace().find("number 49;"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(path("trace.1")));
}

TEST_F(CcLogWrapperTest, aRunAppendsToTheFileOfTheLast) {
  initializeAt("MIN");
  getCcLogHw()->traceMIN(at(), "hardware first");
  initializeAt("MIN");
  getCcLogHw()->traceMIN(at(), "hardware second");
  EXPECT_NE(trace().find("hardware first"), std::string::npos);
  EXPECT_NE(trace().find("hardware second"), std::string::npos);
}

TEST_F(CcLogWrapperTest, aFailedRotationEndsTracingSilently) {
  initialize("trace.level = MAX\ntrace.size = 200\ntrace.count = 1\ntrace.file = " + path("trace"));
  getCcLogHw()->traceMAX(at(), "hardware first");
  // What stands where the rotated file belongs cannot be replaced.
  std::filesystem::create_directories(path("trace.1/full"));
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  for (int i = 0; i < 10; ++i) getCcLogHw()->traceMAX(at(), "hardware number %d", i);
  CcLogWrapper::cleanupInstances();
  EXPECT_EQ(trace(), "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(CcLogWrapperTest, aVanishedDirectoryEndsTracingQuickly) {
  std::filesystem::create_directory(path("sub"));
  initialize("trace.level = MAX\ntrace.size = 300\ntrace.file = " + path("sub/trace"));
  getCcLogHw()->traceMAX(at(), "hardware first");
  std::filesystem::remove_all(path("sub"));
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 1000; ++i) getCcLogHw()->traceMAX(at(), "hardware number %d", i);
  CcLogWrapper::cleanupInstances();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  EXPECT_FALSE(std::filesystem::exists(path("sub")));
}

TEST_F(CcLogWrapperTest, aFullDiskIsNoFailureOfTheProgram) {
  initializeAt("MAX");
  struct rlimit before {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  struct rlimit limit = before;
  limit.rlim_cur = 64;
  std::signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  for (int i = 0; i < 10; ++i) getCcLogHw()->traceMAX(at(), "hardware number %d", i);
  CcLogWrapper::cleanupInstances();
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  std::signal(SIGXFSZ, SIG_DFL);
  EXPECT_LE(std::filesystem::file_size(path("trace")), 64u);
}

TEST_F(CcLogWrapperTest, recordsOfSeveralThreadsStayWhole) {
  initializeAt("MAX");
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([number] {
      for (int i = 0; i < 250; ++i) getCcLogHw()->traceMAX(at(), "hardware %d-%d;", number, i);
    });
  }
  for (auto& thread : threads) thread.join();
  std::istringstream lines(trace());
  int whole = 0;
  const std::regex record(R"(.* MAX .*:\d+ getTable\(\) hardware \d-\d+;)");
  for (std::string line; std::getline(lines, line);) whole += std::regex_match(line, record);
  EXPECT_EQ(whole, 1000);
}

TEST_F(CcLogWrapperTest, traceObjectsAreWrittenAtTheHighestLevelOnly) {
  initializeAt("MID");
  EXPECT_EQ(Tracer::installed(), nullptr);
  initializeAt("MAX");
  Trace("HWParseNodeSink::onNodeTree", "x.cpp") << "Node name is "
                                                << "QCMs";
  EXPECT_NE(trace().find(" HWParseNodeSink::onNodeTree hardware Node name is QCMs\n"),
            std::string::npos);
  CcLogWrapper::initialize(nullptr);
  EXPECT_EQ(Tracer::installed(), nullptr);
}

TEST_F(CcLogWrapperTest, loggerStillTracesAfterTheCleanUp) {
  initializeAt("MAX");
  CcLogWrapper::cleanupInstances();
  getCcLogHw()->traceMAX(at(), "hardware late");
  EXPECT_NE(trace().find("hardware late"), std::string::npos);
}

}  // namespace
}  // namespace quenlor
