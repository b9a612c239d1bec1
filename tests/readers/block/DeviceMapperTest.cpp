#include "readers/block/DeviceMapper.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlor {
namespace {

const std::string kLvm =
    "LVM-abcdefGHIJKLmnopQRSTuvwxYZ012345"
    "KNbQ4g8dXhPb1c2E9sXq0uT3yHs4GZ7a";

TEST(DeviceMapper, ownersAreToldByThePrefix) {
  EXPECT_EQ(mapperKindOf("vg-root", kLvm), MapperKind::kLvm);
  EXPECT_EQ(mapperKindOf("luks-1", "CRYPT-LUKS2-0123-luks-1"), MapperKind::kCrypt);
  EXPECT_EQ(mapperKindOf("swap", "CRYPT-PLAIN-swap"), MapperKind::kCrypt);
  EXPECT_EQ(mapperKindOf("v", "CRYPT-VERITY-0123-v"), MapperKind::kVerity);
  EXPECT_EQ(mapperKindOf("mpatha", "mpath-3600508b4000"), MapperKind::kMultipath);
  EXPECT_EQ(mapperKindOf("mpatha1", "part1-mpath-3600508b4000"), MapperKind::kLinear);
  EXPECT_EQ(mapperKindOf("isw_1", "DMRAID-isw_1"), MapperKind::kRaid);
  EXPECT_EQ(mapperKindOf("s", "stratis-1-private-0123-physical"), MapperKind::kPrivate);
  EXPECT_EQ(mapperKindOf("s", "stratis-1-0123-thin-fs"), MapperKind::kOther);
  EXPECT_EQ(mapperKindOf("made-by-hand", ""), MapperKind::kOther);
}

TEST(DeviceMapper, layersOfVolumesArePrivate) {
  for (const char* layer : {"-real", "-cow", "-tpool", "-tdata", "-pool", "-vpool"}) {
    EXPECT_EQ(mapperKindOf("vg-x", kLvm + layer), MapperKind::kPrivate) << layer;
  }
  for (const char* name : {"vg-lv_rimage_0", "vg-lv_rmeta_1", "vg-lv_mlog", "vg-pool_tdata"}) {
    EXPECT_EQ(mapperKindOf(name, kLvm), MapperKind::kPrivate) << name;
  }
}

TEST(DeviceMapper, checkedButReadableVolumesAreNotEncrypted) {
  EXPECT_TRUE(isEncryption("CRYPT-LUKS1-0-x"));
  EXPECT_TRUE(isEncryption("CRYPT-BITLK-0-x"));
  EXPECT_FALSE(isEncryption("CRYPT-VERITY-0-x"));
  EXPECT_FALSE(isEncryption("CRYPT-INTEGRITY-0-x"));
  EXPECT_FALSE(isEncryption(kLvm));
  EXPECT_FALSE(isEncryption(""));
}

TEST(DeviceMapper, identifiersHaveTheirOwnersForm) {
  EXPECT_EQ(mapperVolumeUuid(kLvm), "KNbQ4g-8dXh-Pb1c-2E9s-Xq0u-T3yH-s4GZ7a");
  EXPECT_EQ(mapperVolumeUuid("CRYPT-LUKS2-0123456789abcdef0123456789abcdef-name"),
            "01234567-89ab-cdef-0123-456789abcdef");
  for (const char* uuid : {"", "LVM-short", "CRYPT-LUKS2-short", "CRYPT-PLAIN-x", "mpath-36"}) {
    EXPECT_EQ(mapperVolumeUuid(uuid), "") << uuid;
  }
}

TEST(DeviceMapper, volumeGroupEndsAtSingleHyphen) {
  EXPECT_EQ(volumeGroupOf("vg-lv"), "vg");
  EXPECT_EQ(volumeGroupOf("my--vg-my--lv"), "my-vg");
  EXPECT_EQ(volumeGroupOf("a---b"), "a-");
  EXPECT_EQ(volumeGroupOf("none"), "");
  EXPECT_EQ(volumeGroupOf("none--"), "");
  EXPECT_EQ(volumeGroupOf(""), "");
}

TEST(DeviceMapper, partitionsHaveTheirNumber) {
  EXPECT_EQ(mapperPartitionIndex("part12-mpath-36"), 12u);
  for (const char* uuid :
       {"part-mpath", "part1", "partx-mpath", "", "mpath-part1-", "part99999999999-x"}) {
    EXPECT_FALSE(mapperPartitionIndex(uuid)) << uuid;
  }
}

TEST(DeviceMapper, thinPoolIsToldByItsLayer) {
  EXPECT_TRUE(isThinPool(kLvm + "-tpool"));
  EXPECT_FALSE(isThinPool(kLvm));
  EXPECT_FALSE(isThinPool("x-tpool"));
}

}  // namespace
}  // namespace quenlor
