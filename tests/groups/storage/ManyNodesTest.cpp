// What many SCSI drives cost: every call that reaches the machine is counted.
#include <gtest/gtest.h>

#include <atomic>

#include "groups/storage/StorageGatherers.h"
#include "readers/storage/SgEnumeration.h"
#include "tests/readers/storage/ScriptedSgDevice.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::FakeHost;
using test::ScriptedSgDevice;

constexpr int kFew = 51;
constexpr int kMany = 6 * kFew;
constexpr int kEndOfWalk = 255;

class CountingHost : public FakeHost {
 public:
  int open(const char* path, int flags, mode_t mode) override {
    ++calls;
    return FakeHost::open(path, flags, mode);
  }
  ssize_t read(int fd, void* buffer, size_t size) override {
    ++calls;
    return FakeHost::read(fd, buffer, size);
  }
  ssize_t write(int fd, const void* buffer, size_t size) override {
    ++calls;
    return FakeHost::write(fd, buffer, size);
  }
  int ioctl(int fd, unsigned long request, void* argument) override {
    ++calls;
    return FakeHost::ioctl(fd, request, argument);
  }
  int stat(const char* path, struct stat* out) override {
    ++calls;
    return FakeHost::stat(path, out);
  }
  bool listDirectory(const char* path, std::vector<std::string>& names) override {
    ++calls;
    return FakeHost::listDirectory(path, names);
  }
  FILE* popen(const char* commandLine) override {
    ++calls;
    return FakeHost::popen(commandLine);
  }

  std::atomic<uint64_t> calls{0};
};

// "sda" to "sdz", "sdaa" and so on.
std::string diskName(int number) {
  const std::string last(1, static_cast<char>('a' + number % 26));
  return number < 26 ? "sd" + last : diskName(number / 26 - 1) + last;
}

enum class Order { kSame, kReversed };

struct Cost {
  size_t rows;
  uint64_t calls;
  uint64_t pauses;  // microseconds
};

// Of as many generic nodes; the disks have their names in the same or the opposite order, or are of
// a kind that has no other node.
Cost costOf(int count, Order order, int type = 0) {
  CountingHost machine;
  std::vector<ScriptedSgDevice> devices(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    ScriptedSgDevice& device = devices[static_cast<size_t>(i)];
    device.type = type;
    device.id = i % 256;
    device.lun = i / 256;
    machine.devices["/dev/sg" + std::to_string(i)] = device.genericNode();
    if (type != 0) continue;
    const std::string name = diskName(order == Order::kSame ? i : count - 1 - i);
    machine.directories["/dev"].push_back(name);
    machine.devices["/dev/" + name] = device.diskNode({.bytes = 1ULL << 30});
  }
  VelTable table(group::kStorage, 1);
  DriveEnumeration enumeration;
  StorageCollection collection{table, enumeration};
  gatherSCSIDriveInformation(collection);
  return {test::rowsOf(&table).size(), machine.calls, machine.sleptMicroseconds};
}

TEST(ManyNodesTest, sixTimesTheNodesCostAtMostSixTimesTheCalls) {
  for (const Order order : {Order::kSame, Order::kReversed}) {
    const Cost few = costOf(kFew, order);
    const Cost many = costOf(kMany, order);
    EXPECT_EQ(few.rows, size_t{kFew});
    EXPECT_EQ(many.rows, size_t{kEndOfWalk});
    EXPECT_LE(many.calls, 6 * few.calls);
    EXPECT_LE(many.pauses, 6 * few.pauses);
  }
}

TEST(ManyNodesTest, devicesWithoutAnotherNodeDoNotLookForItAgainAndAgain) {
  constexpr int kChanger = 8;
  EXPECT_LE(costOf(kMany, Order::kSame, kChanger).calls,
            6 * costOf(kFew, Order::kSame, kChanger).calls);
}

}  // namespace
}  // namespace quenlor
