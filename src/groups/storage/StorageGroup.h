// The "Storage" group: every drive of the machine, found through /proc, generic SCSI nodes, fdisk
// and drive ioctls.
#pragma once

#include <memory>

#include "readers/storage/SgEnumeration.h"
#include "tables/VelTable.h"

namespace quenlor {

// A collection runs on a worker thread, since a broken drive can block the call that asks it for
// ever. The worker has a group of its own: this object may be deleted while the worker still hangs.
class StorageGroup : public VelGroup {
 public:
  StorageGroup();

  // Runs the collection with the time limit; null when it did not end in time.
  VelTable* getTable() override;
  // The collection itself, on the calling thread; a new table, possibly without rows.
  VelTable* generateTable() override;

  // Starts the walks over device nodes afresh, as at the start of the program.
  static void forgetEnumeration();

 private:
  struct GuardedCollection;

  explicit StorageGroup(std::unique_ptr<DriveEnumeration> enumeration);
  std::unique_ptr<VelTable> collectGuarded();

  std::unique_ptr<DriveEnumeration> m_enumeration;
};

}  // namespace quenlor
