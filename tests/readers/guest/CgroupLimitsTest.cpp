#include "readers/guest/CgroupLimits.h"

#include <gtest/gtest.h>

#include "tests/support/FakeHost.h"

namespace quenlor::test {
namespace {

TEST(CgroupLimits, valuesOfVersion2) {
  EXPECT_EQ(parseCpuMax("150000 100000\n"), 1.5);
  EXPECT_EQ(parseMemoryMax("536870912\n"), 536870912u);
  for (const char* text : {"max 100000", "", "100000", "0 100000", "5 0", "-1 100000", "a b"}) {
    EXPECT_FALSE(parseCpuMax(text)) << text;
  }
  for (const char* text : {"max", "", "-1", "9223372036854771712", "18446744073709551616"}) {
    EXPECT_FALSE(parseMemoryMax(text)) << text;
  }
}

TEST(CgroupLimits, pathsOfBothVersions) {
  const std::string text = "9:name=systemd:/\n4:memory:/docker/1\n1:cpu,cpuacct:/a:b\n0::/x/y\n";
  EXPECT_EQ(cgroupPath(text, ""), "/x/y");
  EXPECT_EQ(cgroupPath(text, "memory"), "/docker/1");
  EXPECT_EQ(cgroupPath(text, "cpu"), "/a:b");
  EXPECT_FALSE(cgroupPath(text, "cpuset"));
  EXPECT_FALSE(cgroupPath("rubbish\n::\n", "cpu"));
  EXPECT_EQ(cgroupPath("0::/../../other", ""), "/");
}

TEST(CgroupLimits, parentsEndAtTheRoot) {
  EXPECT_EQ(withParents("/a/b"), (std::vector<std::string>{"/a/b", "/a", ""}));
  EXPECT_EQ(withParents("/"), std::vector<std::string>{""});
  EXPECT_EQ(withParents("x"), (std::vector<std::string>{"x", ""}));
  std::string deep;
  for (int level = 0; level < 500; ++level) deep += "/a";
  EXPECT_EQ(withParents(deep).size(), 64u);
}

TEST(CgroupLimits, theTightestOfAllGroupsHolds) {
  FakeHost host;
  host.files["/sys/fs/cgroup/a/b/cpu.max"] = "max 100000\n";
  host.files["/sys/fs/cgroup/a/cpu.max"] = "200000 100000\n";
  host.files["/sys/fs/cgroup/cpu.max"] = "50000 100000\n";
  host.files["/sys/fs/cgroup/a/b/memory.max"] = "1000000\n";
  host.files["/sys/fs/cgroup/a/memory.max"] = "max\n";
  const CgroupLimits limits = readCgroupLimits("0::/a/b\n");
  EXPECT_EQ(limits.cpus, 0.5);
  EXPECT_EQ(limits.memoryBytes, 1000000u);
}

TEST(CgroupLimits, version1IsReadByController) {
  FakeHost host;
  // The path is the host's; the container sees its own group at the root.
  host.files["/sys/fs/cgroup/cpu/cpu.cfs_quota_us"] = "250000\n";
  host.files["/sys/fs/cgroup/cpu/cpu.cfs_period_us"] = "100000\n";
  host.files["/sys/fs/cgroup/memory/memory.limit_in_bytes"] = "2097152\n";
  const CgroupLimits limits = readCgroupLimits("4:memory:/docker/1\n1:cpu,cpuacct:/docker/1\n");
  EXPECT_EQ(limits.cpus, 2.5);
  EXPECT_EQ(limits.memoryBytes, 2097152u);
}

TEST(CgroupLimits, withoutLimitsThereAreNone) {
  FakeHost host;
  host.files["/sys/fs/cgroup/cpu/cpu.cfs_quota_us"] = "-1\n";
  host.files["/sys/fs/cgroup/memory/memory.limit_in_bytes"] = "9223372036854771712\n";
  const CgroupLimits limits = readCgroupLimits("4:memory:/\n1:cpu:/\n0::/\n");
  EXPECT_FALSE(limits.cpus);
  EXPECT_FALSE(limits.memoryBytes);
  EXPECT_FALSE(readCgroupLimits("").cpus);
}

}  // namespace
}  // namespace quenlor::test
