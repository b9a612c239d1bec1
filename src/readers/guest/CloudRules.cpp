#include "readers/guest/CloudRules.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace quenlor {
namespace {

// How a cloud's texts begin, and which text is the instance's id.
struct CloudRule {
  const char* cloud;
  std::string MachineTexts::*field;
  std::string_view prefix;
  std::string MachineTexts::*instance;  // null: only its metadata service tells
  std::string_view instancePrefix = {};
};

constexpr CloudRule RULES[] = {
    {"ec2", &MachineTexts::sysVendor, "Amazon EC2", &MachineTexts::boardAssetTag, "i-"},
    {"gce", &MachineTexts::productName, "Google Compute Engine", &MachineTexts::boardAssetTag},
    {"azure", &MachineTexts::chassisAssetTag, "7783-7084-3265-9085-8269-3286-77",
     &MachineTexts::productUuid},
    {"openstack", &MachineTexts::productName, "OpenStack Nova", &MachineTexts::productUuid},
    {"openstack", &MachineTexts::productName, "OpenStack Compute", &MachineTexts::productUuid},
    {"openstack", &MachineTexts::sysVendor, "OpenStack Foundation", &MachineTexts::productUuid},
    {"openstack", &MachineTexts::chassisAssetTag, "OpenStack Nova", &MachineTexts::productUuid},
    {"openstack", &MachineTexts::chassisAssetTag, "OpenStack Compute", &MachineTexts::productUuid},
    {"openstack", &MachineTexts::chassisAssetTag, "OpenTelekomCloud", &MachineTexts::productUuid},
    {"openstack", &MachineTexts::chassisAssetTag, "SAP CCloud VM", &MachineTexts::productUuid},
    {"openstack", &MachineTexts::chassisAssetTag, "HUAWEICLOUD", &MachineTexts::productUuid},
    {"openstack", &MachineTexts::chassisAssetTag, "Samsung Cloud Platform",
     &MachineTexts::productUuid},
    {"digitalocean", &MachineTexts::sysVendor, "DigitalOcean", &MachineTexts::productSerial},
    {"hetzner", &MachineTexts::sysVendor, "Hetzner", &MachineTexts::productSerial},
    {"vultr", &MachineTexts::sysVendor, "Vultr", &MachineTexts::productSerial},
    {"linode", &MachineTexts::sysVendor, "Akamai", &MachineTexts::productSerial},
    {"linode", &MachineTexts::sysVendor, "Linode", &MachineTexts::productSerial},
    {"upcloud", &MachineTexts::sysVendor, "UpCloud", &MachineTexts::productUuid},
    {"scaleway", &MachineTexts::sysVendor, "Scaleway", nullptr},
    {"alibaba", &MachineTexts::sysVendor, "Alibaba Cloud", &MachineTexts::productSerial},
    {"tencent", &MachineTexts::sysVendor, "Tencent Cloud", &MachineTexts::productUuid},
    {"oracle", &MachineTexts::chassisAssetTag, "OracleCloud.com", &MachineTexts::productSerial},
    {"exoscale", &MachineTexts::productName, "Exoscale", &MachineTexts::productUuid},
    {"cloudstack", &MachineTexts::productName, "CloudStack", &MachineTexts::productUuid},
    {"cloudsigma", &MachineTexts::productName, "CloudSigma", &MachineTexts::productUuid},
    {"cloudcix", &MachineTexts::productName, "CloudCIX", &MachineTexts::productUuid},
    {"smartos", &MachineTexts::productName, "SmartDC", &MachineTexts::productUuid},
    {"ibm", &MachineTexts::chassisAssetTag, "ibmcloud", nullptr},
};

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// The cloud's first kind of guests, whose firmware is Xen's own.
bool isEc2OnXen(const MachineTexts& texts) {
  return texts.sysVendor.starts_with("Xen") &&
         texts.biosVersion.find("amazon") != std::string::npos;
}

// Guests with a BIOS of this cloud hold the id in the byte order of SMBIOS before 2.6.
bool isSwapped(const CloudRule& rule, const MachineTexts& texts) {
  return rule.cloud == std::string_view("azure") &&
         texts.productVersion.find("UEFI") == std::string::npos;
}

std::string instanceOf(const CloudRule& rule, const MachineTexts& texts) {
  if (rule.instance == nullptr) return "";
  const std::string& text = texts.*rule.instance;
  if (!text.starts_with(rule.instancePrefix)) return "";
  if (rule.instance != &MachineTexts::productUuid) return text;
  const std::string uuid = lowerCase(text);
  return isSwapped(rule, texts) ? swappedUuid(uuid).value_or("") : uuid;
}

CloudVerdict byTexts(const MachineTexts& texts) {
  if (isEc2OnXen(texts)) return {"ec2", ""};
  for (const CloudRule& rule : RULES) {
    if ((texts.*rule.field).starts_with(rule.prefix)) return {rule.cloud, instanceOf(rule, texts)};
  }
  return {};
}

}  // namespace

std::optional<std::string> swappedUuid(const std::string& uuid) {
  if (uuid.size() != 36) return std::nullopt;
  for (const size_t dash : {8u, 13u, 18u, 23u}) {
    if (uuid[dash] != '-') return std::nullopt;
  }
  const auto reversed = [&](size_t begin, size_t bytes) {
    std::string text;
    for (size_t byte = bytes; byte-- > 0;) text += uuid.substr(begin + 2 * byte, 2);
    return text;
  };
  return reversed(0, 4) + "-" + reversed(9, 2) + "-" + reversed(14, 2) + uuid.substr(18);
}

CloudVerdict judgeCloud(const GuestFacts& facts, const MachineTexts& texts) {
  CloudVerdict verdict = byTexts(texts);
  if (verdict.instanceId.empty()) verdict.instanceId = facts.cloudInstanceId;
  return verdict;
}

}  // namespace quenlor
