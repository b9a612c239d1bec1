#include "groups/storage/StorageGroup.h"

#include <cstdio>
#include <ctime>
#include <utility>
#include <vector>

#include "groups/storage/StorageGatherers.h"
#include "host/Host.h"
#include "host/ScanState.h"
#include "limits/GetTableThread.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/SgModule.h"
#include "readers/storage/SgUse.h"
#include "readers/storage/StorageText.h"
#include "readers/storage/TapeBackup.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/StorageGroup.cpp";
constexpr uint32_t kVersion = 1;
constexpr const char* kBackupGuardVariable = "CHECK_ULTRIUM_TAPE_RUNNING";

// What the walks of the last collection left for the next one. Main thread only: a collection takes
// it along and gives it back when it ends, and one that is abandoned keeps what it took.
std::unique_ptr<DriveEnumeration>& idleEnumeration() {
  static std::unique_ptr<DriveEnumeration> enumeration;
  return enumeration;
}

std::unique_ptr<DriveEnumeration> takeEnumeration() {
  auto enumeration = std::exchange(idleEnumeration(), nullptr);
  return enumeration ? std::move(enumeration) : std::make_unique<DriveEnumeration>();
}

bool backupUsesTape() {
  return host().getenv(kBackupGuardVariable) != nullptr && isUltrium_tape_LT4772_running() == 1;
}

void traceWithTime(const char* verb, const char* gatherer) {
  const TraceFunction at{kSourcePath, "generateTable()"};
  CcLogWrapper* log = getCcLogHw();
  if (!log->isEnabled(TraceLevel::kMax)) return;
  const time_t now = host().time();
  char text[64] = "";
  if (ctime_r(&now, text) == nullptr) text[0] = '\0';
  trim2(text);
  log->traceMAX(at(), "hardware %s %s %s", text, verb, gatherer);
}

// A gatherer between two records that show how long it took.
int runTraced(const char* name, int (*gather)(StorageCollection&), StorageCollection& collection) {
  traceWithTime("call", name);
  const int added = gather(collection);
  traceWithTime("exit", name);
  return added;
}

void runGatherers(StorageCollection& collection) {
  runTraced("gatherIDEDriveInformation()", gatherIDEDriveInformation, collection);
  runTraced("gatherDAC960RAIDDriveInformation()", gatherDAC960RAIDDriveInformation, collection);
  // The doubled D is what readers of traces look for.
  const int ccissDrives =
      runTraced("gatherCCISSDDriveInformation()", gatherCCISSDriveInformation, collection);
  if (ccissDrives == 0) {
    runTraced("gatherCompaqSmartRAIDDriveInformation()", gatherCompaqSmartRAIDDriveInformation,
              collection);
  }
  runTraced("gatherSCSIDriveInformation()", gatherSCSIDriveInformation, collection);
  runTraced("FloppyDriveInformation()", gatherFloppyDriveInformation, collection);
}

// Another scan that found the module loaded would lose its drives in the middle.
void unloadUnlessUsed(SgUse& use) {
  if (use.isLast(kSgUseLimit)) {
    unloadSG();
  } else {
    scanState().sgLoaded = Certainty::kNo;
    std::fprintf(stderr, "quenlor: the module sg stays loaded, another scan uses it\n");
  }
}

}  // namespace

// Everything that a worker touches. Abandoned, it stays as it is until the process ends.
struct StorageGroup::GuardedCollection {
  explicit GuardedCollection(std::unique_ptr<DriveEnumeration> enumeration)
      : group(std::move(enumeration)) {}

  static void abandon(std::unique_ptr<GuardedCollection> collection) {
    collection->thread.detach();
    // Kept reachable, so that leak checkers can tell this from a mistake; never destroyed.
    static auto& abandoned = *new std::vector<GuardedCollection*>;
    abandoned.push_back(collection.release());
    reportAbandonedWorker();
  }

  StorageGroup group;
  Event done;
  GetTableThread thread{&group, &done};
};

StorageGroup::StorageGroup() : StorageGroup(std::make_unique<DriveEnumeration>()) {}

StorageGroup::StorageGroup(std::unique_ptr<DriveEnumeration> enumeration)
    : VelGroup(group::kStorage, kVersion), m_enumeration(std::move(enumeration)) {}

void StorageGroup::forgetEnumeration() { idleEnumeration().reset(); }

VelTable* StorageGroup::getTable() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "StorageGroup");
  SgUse use;
  const bool loadedHere = loadSG() == 1;
  if (loadedHere) {
    waitForSG();
    log->traceMAX(at(), "hardware Load SG Module");
  }
  std::unique_ptr<VelTable> table = collectGuarded();
  if (loadedHere) unloadUnlessUsed(use);
  log->traceMidExit(at(), "hardware %s", "StorageGroup");
  return table.release();
}

std::unique_ptr<VelTable> StorageGroup::collectGuarded() {
  const TraceFunction at{kSourcePath, "getTable()"};
  CcLogWrapper* log = getCcLogHw();
  auto collection = std::make_unique<GuardedCollection>(takeEnumeration());
  const int32_t limit = collection->thread.get_Time();
  if (!collection->thread.start()) {
    log->traceMIN(at(), "hardware %s", "Thread for StorageGroup cannot be started");
    std::fprintf(stderr, "quenlor: Storage could not be started and is left out\n");
    return nullptr;
  }
  const long result = collection->done.wait(limit);
  if (result == Event::kTimedOut) {
    log->traceMIN(at(), "hardware %s %ld", "Thread for StorageGroup hang :", result);
    std::fprintf(stderr, "quenlor: Storage did not finish within %d ms and is left out\n", limit);
    GuardedCollection::abandon(std::move(collection));
    return nullptr;
  }
  log->traceMAX(at(), "hardware %s %ld", "Thread for StorageGroup finished :", result);
  collection->thread.join();
  idleEnumeration() = std::move(collection->group.m_enumeration);
  return std::unique_ptr<VelTable>(collection->thread.get_table());
}

VelTable* StorageGroup::generateTable() {
  auto table = std::make_unique<VelTable>(getGroupId(), getGroupVersion());
  if (backupUsesTape()) return table.release();
  StorageCollection collection{*table, *m_enumeration};
  runGatherers(collection);
  return table.release();
}

}  // namespace quenlor
