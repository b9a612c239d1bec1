#include "readers/storage/TapeBackup.h"

#include <gtest/gtest.h>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;

constexpr const char* kHeader = "UID        PID  PPID  C STIME TTY          TIME CMD\n";
constexpr const char* kQuiet =
    "root         1     0  0 Jan10 ?        00:00:05 init [5]\n"
    "root       812     1  0 Jan10 ?        00:00:00 /usr/sbin/nsrexecd\n"
    "root      4901     1  0 02:11 ?        00:00:00 autosaver\n";

class TapeBackupTest : public ::testing::Test {
 protected:
  int runWith(const std::string& line) {
    machine.commands["/bin/ps -ef"] = {kHeader + std::string(kQuiet) + line};
    const int running = isUltrium_tape_LT4772_running();
    EXPECT_EQ(machine.openCommands(), 0);
    return running;
  }

  FakeHost machine;
};

TEST_F(TapeBackupTest, exactMatchReachesFromTheFirstOccurrenceToTheNewline) {
  EXPECT_EQ(getExactMatch("00:01:40 save\n", "save"), 1);
  EXPECT_EQ(getExactMatch("00:01:40 save", "save"), 1);
  EXPECT_EQ(getExactMatch("00:01:40 autosave\n", "save"), 1);
  EXPECT_EQ(getExactMatch("00:01:40 autosaver\n", "save"), 0);
  EXPECT_EQ(getExactMatch("00:01:40 save \n", "save"), 0);
  EXPECT_EQ(getExactMatch("00:01:40 restore\n", "save"), 0);
  EXPECT_EQ(getExactMatch("", "save"), 0);
}

TEST_F(TapeBackupTest, userNamedLikeTheCommandHidesIt_onlyTheFirstOccurrenceCounts) {
  EXPECT_EQ(getExactMatch("saveuser 4711 00:01:40 save\n", "save"), 0);
}

TEST_F(TapeBackupTest, noBackupRuns) { EXPECT_EQ(runWith(""), 0); }

TEST_F(TapeBackupTest, everyBackupProgramIsRecognised) {
  EXPECT_EQ(runWith("root      4711   812  3 02:00 ?        00:01:40 save\n"), 1);
  EXPECT_EQ(runWith("root 4712 812 0 02:00 ? 00:00:00 save -s backup.example.com -g Default -LL\n"),
            1);
  EXPECT_EQ(runWith("root      4800   812  0 02:10 ?        00:00:00 /usr/sbin/recover\n"), 1);
  EXPECT_EQ(runWith("root      4800   812  0 02:10 ?        00:00:00 nsrclone\n"), 1);
  EXPECT_EQ(runWith("root      4800   812  0 02:10 ?        00:00:00 nsrstage"), 1);
}

TEST_F(TapeBackupTest, otherArgumentsAreNoBackup) {
  EXPECT_EQ(runWith("root      4800   812  0 02:10 ?        00:00:00 recover -i\n"), 0);
}

TEST_F(TapeBackupTest, overlongProcessLineIsTakenInPiecesOf255Characters) {
  std::string line = "root      4711   812  3 02:00 ?        00:01:40 saver ";
  line.resize(255, 'x');
  EXPECT_EQ(runWith(line + "save\n"), 1);
  EXPECT_EQ(runWith(line.substr(1) + "save\n"), 0);
}

TEST_F(TapeBackupTest, missingPsMeansNoBackup) {
  EXPECT_EQ(isUltrium_tape_LT4772_running(), 0);
  machine.unstartableCommands = {"/bin/ps -ef"};
  EXPECT_EQ(isUltrium_tape_LT4772_running(), 0);
}

}  // namespace
}  // namespace quenlor
