#include "readers/storage/ideinfo.h"

#include <fcntl.h>
#include <linux/hdreg.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "host/Handles.h"
#include "host/LineReader.h"
#include "log/CcLogWrapper.h"
#include "readers/storage/StorageText.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/linux/ideinfo.cpp";
constexpr const char* kIdeDirectory = "/proc/ide";
constexpr size_t kLineSize = 256;
constexpr size_t kModelSize = 255;
constexpr size_t kPathSize = 255;
constexpr unsigned long kUnknownCapacity = 2147483647;  // what drivers without a size report

// ATA identify data.
constexpr size_t kIdentifySize = 512;
constexpr size_t kSerialNumberOffset = 20;  // words 10 to 19
constexpr size_t kSerialNumberLength = 20;
// HDIO_DRIVE_CMD returns the data behind four bytes of registers; word 128 is little-endian.
constexpr size_t kRegisters = 4;
constexpr size_t kSecurityStatusOffset = kRegisters + 256;
constexpr unsigned char kSecuritySupported = 1;
constexpr unsigned char kSecurityEnabled = 2;
constexpr unsigned char kIdentifyDevice = 0xEC;

bool contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

std::string lastComponent(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "" : path.substr(slash + 1);
}

void appendDrivesOf(const std::string& controller, std::vector<std::string>& drives) {
  std::vector<std::string> names;
  if (!host().listDirectory(controller.c_str(), names)) return;
  const std::string prefix = controller + "/";
  for (const std::string& name : names) {
    if (name == "." || name == "..") continue;
    const std::string path = prefix + name;
    struct stat status = {};
    if (host().stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) drives.push_back(path);
  }
}

}  // namespace

std::optional<IdeGeometry> parseLogicalGeometry(const std::string& line) {
  std::array<std::string, 3> digits;
  size_t number = 0;
  for (const char character : line) {
    if (character == '/' && ++number == digits.size()) break;
    if (character >= '0' && character <= '9') digits[number] += character;
  }
  if (digits[0].empty() || digits[1].empty() || digits[2].empty()) return std::nullopt;
  return IdeGeometry{leadingNumber(digits[0]), leadingNumber(digits[1]), leadingNumber(digits[2])};
}

ideinfo::ideinfo(const char* dir) : m_dir(dir), m_name(lastComponent(m_dir)) {
  DeviceOpener opener;
  probe(opener);
}

ideinfo::ideinfo(const char* dir, DeviceOpener& opener) : m_dir(dir), m_name(lastComponent(m_dir)) {
  probe(opener);
}

void ideinfo::probe(DeviceOpener& opener) {
  const TraceFunction at{kSourcePath, "ideinfo()"};
  m_type = firstLine("media", kLineSize);
  if (!contains(m_type, "cdrom")) {
    readGeometry(opener);
    readCapacity();
    askDrive(opener);
  }
  readModel();
  getCcLogHw()->traceMAX(at(), "hardware %s %s %d", "ideinfo", m_dir.c_str(), m_errorcode);
}

bool ideinfo::removable() const { return !contains(m_type, "disk"); }

std::string ideinfo::nextIDEdisk() const {
  if (m_name.empty() || m_name.back() < 'a' || m_name.back() >= 'z') return "";
  std::string next = m_name;
  ++next.back();
  return next;
}

std::string ideinfo::firstLine(const char* file, size_t bufferSize) {
  const FileStream stream = openFile((m_dir + "/" + file).c_str());
  if (!stream) {
    m_errorcode = errno;
    return "";
  }
  LineReader reader(stream.get(), bufferSize);
  return reader.next() ? reader.line() : "";
}

// Sectors and heads change places here: the digests that identify drives have been built from the
// crossed numbers ever since. The ioctl's numbers are in their proper places.
void ideinfo::readGeometry(DeviceOpener& opener) {
  const FileStream stream = openFile((m_dir + "/geometry").c_str());
  LineReader reader(stream.get(), kLineSize);
  while (reader.next()) {
    if (std::strstr(reader.line(), "logical") == nullptr) continue;
    const std::optional<IdeGeometry> geometry = parseLogicalGeometry(reader.line());
    if (!geometry) break;
    m_cylinders = geometry->first;
    m_sectors = geometry->second;
    m_heads = geometry->third;
    return;
  }
  askGeometry(opener);
}

Descriptor ideinfo::openDevice(DeviceOpener& opener) {
  if (m_name.empty()) {
    m_errorcode = -1;
    return Descriptor();
  }
  Descriptor device = opener.open("/dev/" + m_name, O_RDONLY);
  if (!device) m_errorcode = errno;
  return device;
}

void ideinfo::askGeometry(DeviceOpener& opener) {
  const Descriptor device = openDevice(opener);
  if (!device) return;
  hd_geometry geometry = {};
  if (host().ioctl(device.get(), HDIO_GETGEO, &geometry) != 0) {
    m_errorcode = errno;
    return;
  }
  m_heads = geometry.heads;
  m_sectors = geometry.sectors;
  m_cylinders = geometry.cylinders;
}

void ideinfo::readCapacity() {
  const unsigned long sectors = leadingNumber(firstLine("capacity", kLineSize));
  m_totalsize = sectors == kUnknownCapacity ? 0 : sectors / 2;
}

void ideinfo::askDrive(DeviceOpener& opener) {
  const Descriptor device = openDevice(opener);
  m_security = -1;
  if (!device) return;
  askSerialNumber(device.get());
  askSecurity(device.get());
}

void ideinfo::askSerialNumber(int fd) {
  std::array<char, kIdentifySize> identity{};
  if (host().ioctl(fd, HDIO_GET_IDENTITY, identity.data()) != 0) {
    m_errorcode = errno;
    return;
  }
  const char* field = identity.data() + kSerialNumberOffset;
  m_serialNumber.assign(field, ::strnlen(field, kSerialNumberLength));
}

void ideinfo::askSecurity(int fd) {
  std::array<unsigned char, kRegisters + kIdentifySize> buffer{kIdentifyDevice, 1, 0, 1};
  if (host().ioctl(fd, HDIO_DRIVE_CMD, buffer.data()) != 0) {
    m_errorcode = errno;
    return;
  }
  const unsigned char status = buffer[kSecurityStatusOffset];
  if ((status & kSecuritySupported) != 0) m_security = (status & kSecurityEnabled) != 0 ? 1 : 0;
}

void ideinfo::readModel() {
  std::string line = firstLine("model", kModelSize);
  if (line.ends_with('\n')) line.pop_back();
  const size_t blank = line.find(' ');
  if (blank != std::string::npos) m_manufacturer = line.substr(0, blank);
  m_model = blank == std::string::npos ? line : line.substr(blank + 1);
}

std::vector<std::string> ideDriveDirectories() {
  std::vector<std::string> drives;
  std::vector<std::string> names;
  if (!host().listDirectory(kIdeDirectory, names)) return drives;
  for (const std::string& name : names) {
    if (contains(name, "ide")) appendDrivesOf(kIdeDirectory + ("/" + name), drives);
  }
  return drives;
}

int determineIDEfilelist(char (*list)[255], size_t slots) {
  size_t count = 0;
  for (const std::string& path : ideDriveDirectories()) {
    if (count == slots) break;
    if (path.size() >= kPathSize) continue;  // half a path would name something else
    std::memcpy(list[count++], path.c_str(), path.size() + 1);
  }
  return static_cast<int>(count);
}

}  // namespace quenlor
