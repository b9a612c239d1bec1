// Names of device nodes in turn, and which generic SCSI nodes another driver reports already.
#pragma once

#include <cstdlib>
#include <memory>
#include <set>
#include <string>

#include "log/CcLogWrapper.h"

namespace quenlor {

// Where the walk over device names stands.
struct DriveCounter {
  int next = 0;  // number or letter of the next name; 0: the walk starts
};

// The nodes that "sg_map -x" names, read when first needed.
struct SgMap {
  bool wasRead = false;
  bool hasMapping = false;                   // sg_map named at least one node
  std::set<std::string> otherwiseReachable;  // sg nodes whose device has another node too
};

// What the walks over device nodes remember. One for the whole run: counter and map go from one
// collection to the next, unless a collection was abandoned and keeps them.
struct DriveEnumeration {
  DriveCounter counter;
  SgMap sgMap;
};

// Path of the next existing node of the walk: prefix and a letter from 'a' or a number from 0. Null
// at the first missing one, and the next walk starts afresh; null for ever once 255 was reached.
// malloc'ed, owned by the caller.
char* getNextDrive(DriveCounter& counter, const char* prefix, int letters);

struct FreeDeleter {
  void operator()(char* text) const { std::free(text); }
};
using DrivePath = std::unique_ptr<char, FreeDeleter>;

// 1 when the sg node is to be left out since its device has a node of another driver, else 0;
// always 0 where sg_map names no node at all.
int omitSGdevice(SgMap& map, CcLogWrapper* log, const char* device);

}  // namespace quenlor
