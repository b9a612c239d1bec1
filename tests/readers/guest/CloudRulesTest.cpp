#include "readers/guest/CloudRules.h"

#include <gtest/gtest.h>

namespace quenlor::test {
namespace {

const std::string kUuid = "EC2A1B2C-1234-5678-9ABC-DEF012345678";
const std::string kLower = "ec2a1b2c-1234-5678-9abc-def012345678";

struct Row {
  MachineTexts texts;
  const char* cloud;
  std::string instance;
};

TEST(CloudRules, everyCloudIsToldByItsTexts) {
  const Row ROWS[] = {
      {{.sysVendor = "Amazon EC2", .productUuid = kUuid, .boardAssetTag = "i-0abc"},
       "ec2",
       "i-0abc"},
      {{.sysVendor = "Amazon EC2", .productName = "m5.metal", .boardAssetTag = "i-1"},
       "ec2",
       "i-1"},
      {{.sysVendor = "Xen", .productName = "HVM domU", .biosVersion = "4.11.amazon"}, "ec2", ""},
      {{.productName = "Google Compute Engine", .boardAssetTag = "A1B2"}, "gce", "A1B2"},
      {{.sysVendor = "OpenStack Foundation", .productUuid = kUuid}, "openstack", kLower},
      {{.productName = "OpenStack Nova", .productUuid = kUuid}, "openstack", kLower},
      {{.productName = "OpenStack Compute", .productUuid = kUuid}, "openstack", kLower},
      {{.productUuid = kUuid, .chassisAssetTag = "OpenStack Nova"}, "openstack", kLower},
      {{.productUuid = kUuid, .chassisAssetTag = "OpenStack Compute"}, "openstack", kLower},
      {{.productUuid = kUuid, .chassisAssetTag = "OpenTelekomCloud"}, "openstack", kLower},
      {{.productUuid = kUuid, .chassisAssetTag = "SAP CCloud VM"}, "openstack", kLower},
      {{.productUuid = kUuid, .chassisAssetTag = "HUAWEICLOUD"}, "openstack", kLower},
      {{.productUuid = kUuid, .chassisAssetTag = "Samsung Cloud Platform"}, "openstack", kLower},
      {{.sysVendor = "DigitalOcean", .productSerial = "123"}, "digitalocean", "123"},
      {{.sysVendor = "Hetzner", .productName = "vServer", .productSerial = "7"}, "hetzner", "7"},
      {{.sysVendor = "Vultr", .productSerial = "8"}, "vultr", "8"},
      {{.sysVendor = "Akamai", .productSerial = "9"}, "linode", "9"},
      {{.sysVendor = "Linode", .productSerial = "9"}, "linode", "9"},
      {{.sysVendor = "UpCloud", .productUuid = kUuid}, "upcloud", kLower},
      {{.sysVendor = "Scaleway", .productUuid = kUuid}, "scaleway", ""},
      {{.sysVendor = "Alibaba Cloud", .productSerial = "a"}, "alibaba", "a"},
      {{.sysVendor = "Tencent Cloud", .productUuid = kUuid}, "tencent", kLower},
      {{.productSerial = "o", .chassisAssetTag = "OracleCloud.com"}, "oracle", "o"},
      {{.productName = "Exoscale Compute Platform", .productUuid = kUuid}, "exoscale", kLower},
      {{.productName = "CloudStack KVM Hypervisor", .productUuid = kUuid}, "cloudstack", kLower},
      {{.productName = "CloudSigma", .productUuid = kUuid}, "cloudsigma", kLower},
      {{.productName = "CloudCIX", .productUuid = kUuid}, "cloudcix", kLower},
      {{.productName = "SmartDC HVM", .productUuid = kUuid}, "smartos", kLower},
      {{.chassisAssetTag = "ibmcloud"}, "ibm", ""},
  };
  for (const Row& row : ROWS) {
    const CloudVerdict verdict = judgeCloud({}, row.texts);
    EXPECT_EQ(verdict.cloud, row.cloud);
    EXPECT_EQ(verdict.instanceId, row.instance) << row.cloud;
  }
}

TEST(CloudRules, azuresIdIsInAnotherOrderUnderABios) {
  MachineTexts texts{.sysVendor = "Microsoft Corporation",
                     .productName = "Virtual Machine",
                     .productVersion = "Hyper-V UEFI Release v4.1",
                     .productUuid = kUuid,
                     .chassisAssetTag = "7783-7084-3265-9085-8269-3286-77"};
  EXPECT_EQ(judgeCloud({}, texts).cloud, "azure");
  EXPECT_EQ(judgeCloud({}, texts).instanceId, kLower);
  texts.productVersion = "7.0";
  EXPECT_EQ(judgeCloud({}, texts).instanceId, "2c1b2aec-3412-7856-9abc-def012345678");
  texts.chassisAssetTag = "7783";  // Hyper-V elsewhere
  EXPECT_EQ(judgeCloud({}, texts).cloud, "");
}

TEST(CloudRules, aBoardTagThatIsNoIdIsNone) {
  EXPECT_EQ(judgeCloud({}, {.sysVendor = "Amazon EC2", .boardAssetTag = "None"}).instanceId, "");
}

TEST(CloudRules, cloudInitKnowsWhatTheFirmwareDoesNot) {
  GuestFacts facts;
  facts.cloudInstanceId = "i-0123";
  EXPECT_EQ(judgeCloud(facts, {.sysVendor = "Scaleway"}).instanceId, "i-0123");
  EXPECT_EQ(judgeCloud(facts, {.sysVendor = "Hetzner", .productSerial = "7"}).instanceId, "7");
  EXPECT_EQ(judgeCloud(facts, {}).cloud, "");
}

TEST(CloudRules, aRealMachineIsInNoCloud) {
  const CloudVerdict verdict =
      judgeCloud({}, {.sysVendor = "Dell Inc.", .productName = "PowerEdge R750"});
  EXPECT_EQ(verdict.cloud, "");
  EXPECT_EQ(verdict.instanceId, "");
}

TEST(SwappedUuid, otherTextsAreNone) {
  for (const char* text : {"", "x", "0123456789abcdef0123456789abcdef0123"}) {
    EXPECT_FALSE(swappedUuid(text)) << text;
  }
}

}  // namespace
}  // namespace quenlor::test
