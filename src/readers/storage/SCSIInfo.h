// What the kernel knows of one SCSI device, by kind of device.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace quenlor {

// Texts as the device gives them, blank-padded.
struct SCSIIdentity {
  std::string manufacturer;
  std::string model;
  std::string revision;
  std::string serialNumber;
  int hostNumber = 0;
  int channel = 0;
  int scsiId = 0;
  int lun = 0;
  int scsiType = 0;  // peripheral device type, 0 to 31
};

class SCSIDiskInfo;

// Any device.
class SCSIInfo {
 public:
  explicit SCSIInfo(SCSIIdentity identity) : m_identity(std::move(identity)) {}
  SCSIInfo(const SCSIInfo&) = delete;
  SCSIInfo& operator=(const SCSIInfo&) = delete;
  virtual ~SCSIInfo() = default;

  virtual const char* getTypeLabel() const { return "generic"; }
  virtual const SCSIDiskInfo* asDisk() const { return nullptr; }  // null for what is no disk

  const SCSIIdentity& identity() const { return m_identity; }

 private:
  SCSIIdentity m_identity;
};

// Geometry and size of a disk; what the kernel does not tell is 0.
struct SCSIDiskData {
  uint32_t cylinders = 0;
  uint32_t heads = 0;
  uint32_t sectors = 0;  // per track
  uint64_t megabytes = 0;
};

class SCSIDiskInfo : public SCSIInfo {
 public:
  SCSIDiskInfo(SCSIIdentity identity, const SCSIDiskData& data)
      : SCSIInfo(std::move(identity)), m_data(data) {}

  const char* getTypeLabel() const override { return "disk"; }
  const SCSIDiskInfo* asDisk() const override { return this; }

  const SCSIDiskData& data() const { return m_data; }
  bool hasData() const { return m_data.cylinders != 0 || m_data.megabytes != 0; }

 private:
  SCSIDiskData m_data;
};

// CD, DVD and other removable devices.
class SCSIRemovableInfo : public SCSIInfo {
 public:
  using SCSIInfo::SCSIInfo;
  const char* getTypeLabel() const override { return "removable"; }
};

class SCSITapeInfo : public SCSIInfo {
 public:
  using SCSIInfo::SCSIInfo;
  const char* getTypeLabel() const override { return "tape"; }
};

}  // namespace quenlor
