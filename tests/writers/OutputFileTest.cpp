#include "writers/OutputFile.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"
#include "tests/writers/WriterTest.h"
#include "writers/mifUtil.h"
#include "writers/xmlUtil.h"

namespace quenlor {
namespace {

using test::contentOf;
using test::DocumentFolder;
using test::FakeHost;
using testing::HasSubstr;
using testing::Not;

// Both writers keep the same rules of opening, retrying and closing.
struct Writer {
  const char* name;
  int (*header)(const char*);
  int (*table)(const char*, VelTable*);
  int (*footer)(const char*);
  const char* start;
  const char* end;
};

const Writer kWriters[] = {
    {"Xml", [](const char* file) { return printXMLHeader(file, "Hardware"); }, printXML,
     [](const char* file) { return printXMLFooter(file, "Hardware"); },
     "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Hardware>\n", "\n\n</Hardware>\n"},
    {"Mif", [](const char* file) { return printMifHeader(file, "The Component"); }, printMif,
     printMifFooter, "Start Component\nName = \"The Component\"", "\nEnd Component\n"},
};

class OutputFileTest : public testing::TestWithParam<Writer> {
 protected:
  int header(const std::string& file) const { return GetParam().header(file.c_str()); }
  int footer(const std::string& file) const { return GetParam().footer(file.c_str()); }
  int table(const std::string& file) const {
    const auto rows = test::namedRows(test::kKeyed, {"one", "two"});
    return GetParam().table(file.c_str(), rows.get());
  }

  FakeHost m_host;
  DocumentFolder m_folder;
};

INSTANTIATE_TEST_SUITE_P(Writers, OutputFileTest, testing::ValuesIn(kWriters),
                         [](const auto& writer) { return writer.param.name; });

TEST_P(OutputFileTest, headerTableAndFooterMakeTheDocument) {
  const std::string file = m_folder.path("out");
  EXPECT_EQ(header(file), 0);
  EXPECT_EQ(table(file), 0);
  EXPECT_EQ(footer(file), 0);
  const std::string document = contentOf(file);
  EXPECT_THAT(document, testing::StartsWith(GetParam().start));
  EXPECT_THAT(document, HasSubstr("two"));
  EXPECT_THAT(document, testing::EndsWith(GetParam().end));
}

TEST_P(OutputFileTest, headerReplacesAnOlderDocument) {
  const std::string file = m_folder.path("out");
  test::writeFile(file, std::string(5000, 'x'));
  EXPECT_EQ(header(file), 0);
  EXPECT_EQ(contentOf(file), GetParam().start);
}

TEST_P(OutputFileTest, tableAndFooterKeepWhatIsThere) {
  const std::string file = m_folder.path("out");
  test::writeFile(file, "before");
  EXPECT_EQ(table(file), 0);
  EXPECT_EQ(footer(file), 0);
  EXPECT_THAT(contentOf(file), testing::StartsWith("before"));
}

TEST_P(OutputFileTest, fullDeviceIsAFailedClose) {
  EXPECT_EQ(header("/dev/full"), 4);
  EXPECT_EQ(table("/dev/full"), 4);
  EXPECT_EQ(footer("/dev/full"), 4);
}

// Whole blocks go past the stream's buffer, so that the flush has nothing left to fail with.
TEST(OutputFileDirectlyTest, writeThatFailsBeforeTheFlushIsAFailedClose) {
  OutputFile full("/dev/full");
  ASSERT_EQ(full.append(), 0);
  const std::string blocks(1 << 20, 'x');
  std::fwrite(blocks.data(), 1, blocks.size(), full.stream());
  EXPECT_EQ(full.finish(), 4);
}

TEST_P(OutputFileTest, headerToADirectoryIs11_itCanBeOpenedForReading) {
  EXPECT_EQ(header(m_folder.path("")), 11);
}

TEST_P(OutputFileTest, tableAndFooterToADirectoryAre11) {
  EXPECT_EQ(table(m_folder.path("")), 11);
  EXPECT_EQ(footer(m_folder.path("")), 11);
}

TEST_P(OutputFileTest, headerInAMissingDirectoryIs4) {
  EXPECT_EQ(header(m_folder.path("missing/out")), 4);
}

TEST_P(OutputFileTest, tableAndFooterInAMissingDirectoryAre11) {
  EXPECT_EQ(table(m_folder.path("missing/out")), 11);
  EXPECT_EQ(footer(m_folder.path("missing/out")), 11);
}

TEST_P(OutputFileTest, emptyFileNameCannotBeOpened) {
  EXPECT_EQ(header(""), 4);
  EXPECT_EQ(table(""), 11);
  EXPECT_EQ(footer(""), 11);
}

TEST_P(OutputFileTest, readOnlyFileIs11AndKeepsItsContent) {
  const std::string file = m_folder.path("out");
  test::writeFile(file, "older");
  chmod(file.c_str(), 0444);
  EXPECT_EQ(test::asOrdinaryUser([&] { return header(file); }), 11);
  EXPECT_EQ(test::asOrdinaryUser([&] { return table(file); }), 11);
  EXPECT_EQ(test::asOrdinaryUser([&] { return footer(file); }), 11);
  EXPECT_EQ(contentOf(file), "older");
}

TEST_P(OutputFileTest, fileThatCannotBeReadEitherIs4) {
  const std::string file = m_folder.path("out");
  test::writeFile(file, "older");
  chmod(file.c_str(), 0);
  EXPECT_EQ(test::asOrdinaryUser([&] { return header(file); }), 4);
}

TEST_P(OutputFileTest, tableIsTriedAgainAfterASecond) {
  EXPECT_EQ(table(m_folder.path("missing/out")), 11);
  EXPECT_EQ(m_host.sleptMicroseconds, 1000000u);
}

TEST_P(OutputFileTest, nothingWaitsWhenTheFileOpens) {
  EXPECT_EQ(table(m_folder.path("out")), 0);
  EXPECT_EQ(m_host.sleptMicroseconds, 0u);
}

TEST_P(OutputFileTest, headerAndFooterAreNotTriedAgain) {
  header(m_folder.path("missing/out"));
  footer(m_folder.path("missing/out"));
  EXPECT_EQ(m_host.sleptMicroseconds, 0u);
}

// A host on which the output's directory comes into being while the writer waits.
class LateDirectoryHost : public FakeHost {
 public:
  explicit LateDirectoryHost(std::string directory) : m_directory(std::move(directory)) {}
  void sleepMicroseconds(uint32_t) override { std::filesystem::create_directory(m_directory); }

 private:
  std::string m_directory;
};

TEST_P(OutputFileTest, secondAttemptWritesTheTable) {
  const LateDirectoryHost late(m_folder.path("late"));
  EXPECT_EQ(table(m_folder.path("late/out")), 0);
  EXPECT_THAT(contentOf(m_folder.path("late/out")), HasSubstr("two"));
}

TEST_P(OutputFileTest, standardOutputGetsTheWholeDocument) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(header("stdout"), 0);
  EXPECT_EQ(table("stdout"), 0);
  EXPECT_EQ(footer("stdout"), 0);
  const std::string document = testing::internal::GetCapturedStdout();
  EXPECT_THAT(document, testing::StartsWith(GetParam().start));
  EXPECT_THAT(document, HasSubstr("two"));
  EXPECT_THAT(document, testing::EndsWith(GetParam().end));
}

// Standard output for the object's lifetime.
class StandardOutputTo {
 public:
  explicit StandardOutputTo(const char* path) : m_previous(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const FileStream file(std::fopen(path, "w"));
    dup2(fileno(file.get()), STDOUT_FILENO);
  }
  ~StandardOutputTo() {
    std::fflush(stdout);
    std::clearerr(stdout);
    dup2(m_previous, STDOUT_FILENO);
    close(m_previous);
  }

 private:
  int m_previous;
};

TEST_P(OutputFileTest, standardOutputNeverReportsAnError) {
  const StandardOutputTo full("/dev/full");
  EXPECT_EQ(header("stdout"), 0);
  EXPECT_EQ(table("stdout"), 0);
  EXPECT_EQ(footer("stdout"), 0);
}

TEST_P(OutputFileTest, onlyTheExactNameIsStandardOutput) {
  const std::string file = m_folder.path("stdout");
  testing::internal::CaptureStdout();
  EXPECT_EQ(header(file), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(contentOf(file), GetParam().start);
}

TEST_P(OutputFileTest, everyStepClosesItsFile) {
  const auto openFiles = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const auto before = openFiles();
  for (const std::string& file : {m_folder.path("out"), m_folder.path(""), std::string("/dev/full"),
                                  m_folder.path("missing/out")}) {
    header(file);
    table(file);
    footer(file);
  }
  EXPECT_EQ(openFiles(), before);
}

TEST_P(OutputFileTest, failuresAndResultsAreTraced) {
  const bool isXml = std::string(GetParam().name) == "Xml";
  const std::string writer = isXml ? "xmlUtil" : "mifUtil";
  const std::string document = isXml ? "HARDWAREXML" : "HARDWAREMIF";
  const std::string at = "scanengine/" + writer + (isXml ? ".cpp printXML() " : ".cpp printMif() ");
  const test::CapturedTraces traces;
  table(m_folder.path("missing/out"));
  table(m_folder.path("out"));
  EXPECT_THAT(traces.texts(),
              testing::ElementsAre(
                  "MID entry " + at + "hardware",
                  "MID entry " + at + "hardware " + writer + ":failure in opening " + document +
                      " errno = 2",
                  "MIN " + at + "hardware failure in opening " + document + " again",
                  "MID exit " + at + "hardware return rc = 11", "MID entry " + at + "hardware",
                  "MID exit " + at + "hardware return rc = 0"));
}

}  // namespace
}  // namespace quenlor
