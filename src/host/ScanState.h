// What a running scan tells of itself to the process that outlives it.
#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

namespace quenlor {

// Perhaps: a command that changes it is running.
enum class Certainty : uint8_t { kNo, kPerhaps, kYes };

// The name of a file. Read once its writer is dead, or stuck for good.
class SharedName {
 public:
  void set(const std::string& name);  // one that is too long is not remembered
  void clear() { m_isSet = false; }
  std::string name() const;  // empty: none

 private:
  std::atomic<bool> m_isSet{false};
  std::array<char, 512> m_text{};
};

// Lies in memory that two processes share, so it holds nothing but numbers that are written and
// read whole. Any thread may write; the reader takes no lock, for the writer may be dead.
struct ScanState {
  static constexpr size_t kMostCommands = 16;

  std::atomic<uint32_t> group{0};     // id of the group being collected; 0: none
  std::atomic<uint64_t> progress{0};  // commands, mounts, drives, addresses and files done
  // Milliseconds without progress after which the scan is given up.
  std::atomic<int64_t> idleLimit{900000};
  // Milliseconds that the scan may take in all; 0: no such limit.
  std::atomic<int64_t> scanLimit{0};
  // The kernel module sg: loaded by this scan, and not unloaded yet.
  std::atomic<Certainty> sgLoaded{Certainty::kNo};
  std::atomic<bool> temporaryMade{false};  // the file that modprobe's complaints go to
  std::array<std::atomic<pid_t>, kMostCommands> commands{};  // process groups; 0: a free place
  std::atomic<uint32_t> commandsStarting{0};                 // not among them yet
  // A reader of standard output sets the pace for now: that time is not the scan's.
  std::atomic<bool> isReadersTurn{false};
  SharedName incompleteDocument;  // beside its place, which it has not taken yet
  // Written by the reader, who wakes whoever waits on it as a futex: the scan is about to be
  // killed, and no command may start any more.
  std::atomic<uint32_t> isToDie{0};
  // Somebody waits for that, to give up the descriptors that the scan's caller may wait on.
  std::atomic<bool> hasCaretaker{false};

  // A command beyond the sixteenth that run at once is not remembered.
  void addCommand(pid_t leader);
  // Before the leader is reaped: afterwards its number may be a stranger's.
  void removeCommand(pid_t leader);
};

static_assert(std::atomic<uint64_t>::is_always_lock_free);
static_assert(std::atomic<int64_t>::is_always_lock_free);
static_assert(std::atomic<pid_t>::is_always_lock_free);
static_assert(std::atomic<Certainty>::is_always_lock_free);
static_assert(std::atomic<bool>::is_always_lock_free);

// The state in use: one that nobody reads until another is installed.
ScanState& scanState();

// Installs a state, which must live as long as the process; null: the one that nobody reads. To be
// called before any thread exists.
void useScanState(ScanState* state);

// One more thing is done: the scan is alive.
inline void countProgress() { scanState().progress.fetch_add(1, std::memory_order_relaxed); }

// A command that is being started while this lives. Starting one takes a millisecond; whoever kills
// the scan within it would not know of the command. So the killer says what it is about to do, and
// whoever then wants to start another command does not get beyond the constructor.
class CommandStart {
 public:
  CommandStart();
  ~CommandStart();
  CommandStart(const CommandStart&) = delete;
  CommandStart& operator=(const CommandStart&) = delete;
};

// While this lives, what happens is up to whoever reads standard output, if that is written to.
class ReadersTurn {
 public:
  explicit ReadersTurn(bool toStandardOutput) { scanState().isReadersTurn = toStandardOutput; }
  ~ReadersTurn() {
    scanState().isReadersTurn = false;
    countProgress();
  }
  ReadersTurn(const ReadersTurn&) = delete;
  ReadersTurn& operator=(const ReadersTurn&) = delete;
};

// Names the group that is collected while this lives.
class GroupInProgress {
 public:
  explicit GroupInProgress(uint32_t id) { scanState().group = id; }
  ~GroupInProgress() {
    scanState().group = 0;
    countProgress();
  }
  GroupInProgress(const GroupInProgress&) = delete;
  GroupInProgress& operator=(const GroupInProgress&) = delete;
};

}  // namespace quenlor
