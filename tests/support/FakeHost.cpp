#include "tests/support/FakeHost.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

namespace quenlor::test {
namespace {

constexpr size_t kPage = 4096;
constexpr int kShellNotFound = 127 << 8;

int fail(int error) {
  errno = error;
  return -1;
}

bool isWriting(int flags) { return (flags & O_ACCMODE) != O_RDONLY && (flags & O_PATH) == 0; }

size_t wholePages(size_t length) { return (length + kPage - 1) / kPage * kPage; }

ssize_t readFrom(const std::string& content, size_t& position, void* buffer, size_t size) {
  const size_t count = position >= content.size() ? 0 : std::min(size, content.size() - position);
  if (count != 0) std::memcpy(buffer, content.data() + position, count);
  position += count;
  return static_cast<ssize_t>(count);
}

// A stream over callbacks. fmemopen would end a text at its first NUL byte.
struct Stream {
  std::function<ssize_t(char*, size_t)> read;
  std::function<ssize_t(const char*, size_t)> write;
  std::function<void()> onClose;
  std::function<int(off64_t*, int)> seek{};  // unset: a pipe
};

FILE* openStream(Stream stream, const char* mode) {
  cookie_io_functions_t functions{};
  functions.read = [](void* cookie, char* buffer, size_t size) {
    return static_cast<Stream*>(cookie)->read(buffer, size);
  };
  functions.write = [](void* cookie, const char* data, size_t size) {
    return static_cast<Stream*>(cookie)->write(data, size);
  };
  functions.close = [](void* cookie) {
    const std::unique_ptr<Stream> closing(static_cast<Stream*>(cookie));
    if (closing->onClose) closing->onClose();
    return 0;
  };
  if (stream.seek) {
    functions.seek = [](void* cookie, off64_t* offset, int whence) {
      return static_cast<Stream*>(cookie)->seek(offset, whence);
    };
  }
  return ::fopencookie(new Stream(std::move(stream)), mode, functions);
}

FILE* openText(std::string content) {
  auto position = std::make_shared<size_t>(0);
  auto text = std::make_shared<std::string>(std::move(content));
  return openStream({[position, text](char* buffer, size_t size) {
                       return readFrom(*text, *position, buffer, size);
                     },
                     [](const char*, size_t) -> ssize_t { return 0; }, nullptr},
                    "r");
}

int flagsOfMode(const char* mode) {
  const bool both = std::strchr(mode, '+') != nullptr;
  if (mode[0] == 'r') return both ? O_RDWR : O_RDONLY;
  return (both ? O_RDWR : O_WRONLY) | O_CREAT | (mode[0] == 'w' ? O_TRUNC : O_APPEND);
}

}  // namespace

FakeHost::FakeHost() : m_scope(*this) {}

FakeHost::~FakeHost() {
  for (const auto& [stream, result] : m_commandStreams) std::fclose(stream);
  for (const auto& [address, length] : m_mappings) ::munmap(address, length);
}

int FakeHost::openDescriptors() const {
  const std::lock_guard lock(m_mutex);
  return static_cast<int>(m_open.size());
}

int FakeHost::openStreams() const { return *m_streams; }

int FakeHost::openCommands() const {
  const std::lock_guard lock(m_mutex);
  return static_cast<int>(m_commandStreams.size());
}

int FakeHost::openMappings() const {
  const std::lock_guard lock(m_mutex);
  return static_cast<int>(m_mappings.size());
}

int FakeHost::openLibraries() const { return m_libraries; }

void FakeHost::setUname(const std::string& node, const std::string& release,
                        const std::string& machine) {
  const auto copy = [](char* field, size_t size, const std::string& text) {
    std::snprintf(field, size, "%s", text.c_str());
  };
  struct utsname names {};
  copy(names.sysname, sizeof names.sysname, "Linux");
  copy(names.nodename, sizeof names.nodename, node);
  copy(names.release, sizeof names.release, release);
  copy(names.version, sizeof names.version, "#1 SMP");
  copy(names.machine, sizeof names.machine, machine);
  unameResult = names;
}

bool FakeHost::isDirectory(const std::string& path) const {
  return directories.count(path) != 0 || fileSystems.count(path) != 0;
}

bool FakeHost::exists(const std::string& path) const {
  return files.count(path) != 0 || devices.count(path) != 0 || isDirectory(path);
}

// 0, or the errno with which the kernel would refuse.
int FakeHost::openError(const std::string& path, int flags) const {
  if (const auto error = openErrors.find(path); error != openErrors.end()) return error->second;
  if (!exists(path)) return (flags & O_CREAT) != 0 ? 0 : ENOENT;
  if ((flags & O_CREAT) != 0 && (flags & O_EXCL) != 0) return EEXIST;
  if ((flags & O_DIRECTORY) != 0 && !isDirectory(path)) return ENOTDIR;
  if (isDirectory(path) && isWriting(flags)) return EISDIR;
  const auto device = devices.find(path);
  const bool isDenied = device != devices.end() && (flags & O_PATH) == 0 &&
                        device->second.deniedAccessModes.count(flags & O_ACCMODE) != 0;
  return isDenied ? EACCES : 0;
}

int FakeHost::open(const char* path, int flags, mode_t mode) {
  const std::lock_guard lock(m_mutex);
  opened.emplace_back(path);
  if (const int error = openError(path, flags); error != 0) return fail(error);
  if (!exists(path)) {
    files[path] = "";
    permissions[path] = mode;
  }
  if ((flags & O_TRUNC) != 0 && files.count(path) != 0) files[path].clear();
  m_open[m_nextDescriptor] = {path, 0, false, (flags & O_PATH) != 0};
  return m_nextDescriptor++;
}

int FakeHost::close(int fd) {
  const std::lock_guard lock(m_mutex);
  return m_open.erase(fd) == 1 ? 0 : fail(EBADF);
}

FakeDevice* FakeHost::deviceOf(const OpenFile& file) {
  if (file.isSocket) return &socketDevice;
  const auto device = devices.find(file.path);
  return device == devices.end() ? nullptr : &device->second;
}

// The callbacks of devices run without the lock, since they may well ask the host themselves.
ssize_t FakeHost::read(int fd, void* buffer, size_t size) {
  std::unique_lock lock(m_mutex);
  const auto found = m_open.find(fd);
  if (found == m_open.end() || found->second.isPathOnly) return fail(EBADF);
  OpenFile& file = found->second;
  if (FakeDevice* device = deviceOf(file)) {
    const auto answer = device->read;
    lock.unlock();
    return answer ? answer(buffer, size) : fail(EINVAL);
  }
  const auto content = files.find(file.path);
  if (content == files.end()) return fail(EISDIR);
  return readFrom(content->second, file.position, buffer, size);
}

ssize_t FakeHost::write(int fd, const void* buffer, size_t size) {
  std::unique_lock lock(m_mutex);
  const auto found = m_open.find(fd);
  if (found == m_open.end() || found->second.isPathOnly) return fail(EBADF);
  OpenFile& file = found->second;
  if (FakeDevice* device = deviceOf(file)) {
    const auto answer = device->write;
    lock.unlock();
    return answer ? answer(buffer, size) : fail(EINVAL);
  }
  std::string& content = files[file.path];
  if (content.size() < file.position + size) content.resize(file.position + size);
  if (size != 0) std::memcpy(content.data() + file.position, buffer, size);
  file.position += size;
  return static_cast<ssize_t>(size);
}

int FakeHost::ioctl(int fd, unsigned long request, void* argument) {
  std::unique_lock lock(m_mutex);
  const auto found = m_open.find(fd);
  if (found == m_open.end() || found->second.isPathOnly) return fail(EBADF);
  const FakeDevice* device = deviceOf(found->second);
  if (device == nullptr || !device->ioctl) return fail(ENOTTY);
  const auto answer = device->ioctl;
  lock.unlock();
  return answer(request, argument);
}

void FakeHost::fillStatus(const std::string& path, struct stat* out) const {
  *out = {};
  const auto permission = permissions.find(path);
  const auto bits = [&](mode_t usual) {
    return permission == permissions.end() ? usual : permission->second;
  };
  if (const auto device = devices.find(path); device != devices.end()) {
    out->st_mode = device->second.type | bits(0660);
    out->st_rdev = device->second.number;
  } else if (const auto file = files.find(path); file != files.end()) {
    out->st_mode = S_IFREG | bits(0644);
    out->st_size = static_cast<off_t>(file->second.size());
  } else {
    out->st_mode = S_IFDIR | bits(0755);
  }
}

int FakeHost::stat(const char* path, struct stat* out) {
  const std::lock_guard lock(m_mutex);
  if (!exists(path)) return fail(ENOENT);
  fillStatus(path, out);
  return 0;
}

int FakeHost::fstat(int fd, struct stat* out) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_open.find(fd);
  if (found == m_open.end()) return fail(EBADF);
  fillStatus(found->second.path, out);
  if (found->second.isSocket) out->st_mode = S_IFSOCK | 0777;
  return 0;
}

int FakeHost::unlink(const char* path) {
  const std::lock_guard lock(m_mutex);
  unlinked.emplace_back(path);
  if (isDirectory(path)) return fail(EISDIR);
  permissions.erase(path);
  return files.erase(path) + devices.erase(path) == 0 ? fail(ENOENT) : 0;
}

// Bytes behind a mapping; no value with errno when it cannot be made.
std::optional<std::string> FakeHost::mappedBytes(int fd, size_t length, off_t offset) {
  std::unique_lock lock(m_mutex);
  const auto found = m_open.find(fd);
  errno = found == m_open.end() ? EBADF : EINVAL;
  if (found == m_open.end() || length == 0 || offset < 0) return {};
  if (static_cast<size_t>(offset) % kPage != 0) return {};
  if (const FakeDevice* device = deviceOf(found->second)) {
    const auto answer = device->map;
    lock.unlock();
    errno = answer ? EPERM : ENODEV;
    return answer ? answer(length, offset) : std::nullopt;
  }
  const auto content = files.find(found->second.path);
  errno = ENODEV;
  if (content == files.end()) return {};
  errno = EINVAL;
  if (static_cast<size_t>(offset) >= content->second.size()) return {};
  return content->second.substr(static_cast<size_t>(offset), length);
}

void* FakeHost::mmap(size_t length, int protection, int, int fd, off_t offset) {
  const std::optional<std::string> bytes = mappedBytes(fd, length, offset);
  if (!bytes) return MAP_FAILED;
  // A page that nobody may touch lies behind, so that reading past the mapping does not go unseen.
  const size_t size = wholePages(length);
  void* address =
      ::mmap(nullptr, size + kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (address == MAP_FAILED) return address;
  std::memcpy(address, bytes->data(), std::min(bytes->size(), size));
  ::mprotect(address, size, protection);
  ::mprotect(static_cast<char*>(address) + size, kPage, PROT_NONE);
  const std::lock_guard lock(m_mutex);
  m_mappings[address] = size + kPage;
  return address;
}

int FakeHost::munmap(void* address, size_t length) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_mappings.find(address);
  if (found == m_mappings.end() || found->second != wholePages(length) + kPage) return fail(EINVAL);
  ::munmap(address, found->second);
  m_mappings.erase(found);
  return 0;
}

FILE* FakeHost::fopen(const char* path, const char* mode) {
  const int fd = open(path, flagsOfMode(mode), 0644);
  if (fd < 0) return nullptr;
  if (mode[0] == 'a') {
    const std::lock_guard lock(m_mutex);
    m_open[fd].position = files[path].size();
  }
  ++*m_streams;
  return openStream({[this, fd](char* buffer, size_t size) { return read(fd, buffer, size); },
                     [this, fd](const char* data, size_t size) {
                       return std::max<ssize_t>(write(fd, data, size), 0);
                     },
                     [this, fd, streams = m_streams] {
                       close(fd);
                       --*streams;
                     },
                     [this, fd](off64_t* offset, int whence) { return seek(fd, offset, whence); }},
                    mode);
}

int FakeHost::seek(int fd, off64_t* offset, int whence) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_open.find(fd);
  if (found == m_open.end()) return fail(EBADF);
  OpenFile& file = found->second;
  const auto content = files.find(file.path);
  const size_t end = content == files.end() ? 0 : content->second.size();
  const size_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.position : end;
  const auto target = static_cast<off64_t>(base) + *offset;
  if (target < 0) return fail(EINVAL);
  *offset = target;
  file.position = static_cast<size_t>(target);
  return 0;
}

bool FakeHost::listDirectory(const char* path, std::vector<std::string>& names) {
  const std::lock_guard lock(m_mutex);
  names.clear();
  const auto found = directories.find(path);
  if (found == directories.end()) {
    errno = exists(path) ? ENOTDIR : ENOENT;
    return false;
  }
  names = {".", ".."};
  names.insert(names.end(), found->second.begin(), found->second.end());
  return true;
}

bool FakeHost::listEntries(const char* path, std::vector<DirectoryEntry>& entries) {
  std::vector<std::string> names;
  entries.clear();
  if (!listDirectory(path, names)) return false;
  const std::lock_guard lock(m_mutex);
  for (const std::string& name : names) {
    if (name == "." || name == "..") continue;
    const std::string entry = std::string(path) + "/" + name;
    const EntryType type = links.count(entry) != 0         ? EntryType::kLink
                           : directories.count(entry) != 0 ? EntryType::kDirectory
                           : files.count(entry) != 0       ? EntryType::kRegular
                                                           : EntryType::kUnknown;
    entries.push_back({name, type});
  }
  return true;
}

bool FakeHost::readLink(const char* path, std::string& target) {
  const std::lock_guard lock(m_mutex);
  const auto found = links.find(path);
  if (found == links.end()) {
    errno = exists(path) ? EINVAL : ENOENT;
    return false;
  }
  target = found->second;
  return true;
}

int FakeHost::statx(const char* path, int, unsigned, struct statx* out) {
  const std::lock_guard lock(m_mutex);
  const auto found = fileFacts.find(path);
  if (found == fileFacts.end()) return fail(ENOENT);
  *out = found->second;
  return 0;
}

int FakeHost::statvfs(const char* path, struct statvfs* out) {
  std::unique_lock lock(m_mutex);
  measured.emplace_back(path);
  if (onStatvfs) {
    const auto answer = onStatvfs;
    lock.unlock();
    return answer(path, out);
  }
  const auto found = fileSystems.find(path);
  if (found == fileSystems.end()) return fail(ENOENT);
  *out = found->second;
  return 0;
}

int FakeHost::fstatvfs(int fd, struct statvfs* out) {
  const std::lock_guard lock(m_mutex);
  const auto file = m_open.find(fd);
  if (file == m_open.end()) return fail(EBADF);
  const auto found = fileSystems.find(file->second.path);
  if (found == fileSystems.end()) return fail(EIO);
  *out = found->second;
  return 0;
}

FILE* FakeHost::popen(const char* commandLine) {
  {
    const std::lock_guard lock(m_mutex);
    started.emplace_back(commandLine);
    if (unstartableCommands.count(commandLine) != 0) {
      errno = ENOENT;
      return nullptr;
    }
  }
  if (onCommand) onCommand(commandLine);
  const std::lock_guard lock(m_mutex);
  const auto found = commands.find(commandLine);
  CommandResult result =
      found == commands.end() ? CommandResult{"", kShellNotFound} : found->second;
  FILE* stream = openText(result.output);
  m_commandStreams[stream] = std::move(result);
  return stream;
}

FILE* FakeHost::startProgram(const char* path, const std::vector<std::string>& arguments) {
  const std::lock_guard lock(m_mutex);
  std::string line = path;
  for (size_t i = 1; i < arguments.size(); ++i) line += " " + arguments[i];
  started.push_back(line);
  std::vector<std::string> call = arguments;
  if (!call.empty()) call[0] = path;
  const auto found = programs.find(call);
  if (found == programs.end()) {
    errno = ENOENT;
    return nullptr;
  }
  FILE* stream = openText(found->second.output);
  m_commandStreams[stream] = found->second;
  return stream;
}

void FakeHost::limitCommand(FILE*, std::chrono::milliseconds rest) {
  const std::lock_guard lock(m_mutex);
  limited.push_back(rest);
}

int FakeHost::pclose(FILE* stream) {
  const std::lock_guard lock(m_mutex);
  const auto found = m_commandStreams.find(stream);
  if (found == m_commandStreams.end()) return fail(ECHILD);
  const int status = found->second.waitStatus;
  m_commandStreams.erase(found);
  std::fclose(stream);
  return status;
}

int FakeHost::socket(int, int, int) {
  const std::lock_guard lock(m_mutex);
  if (socketsFail) return fail(EMFILE);
  m_open[m_nextDescriptor] = {"", 0, true, false};
  return m_nextDescriptor++;
}

int FakeHost::netlinkRequest(int protocol, const std::string& request, std::string& reply) {
  reply.clear();
  return netlink ? netlink(protocol, request, reply) : EPROTONOSUPPORT;
}

bool FakeHost::hostNameOfAddress(const in_addr& address, std::string& name) {
  char text[INET_ADDRSTRLEN] = "";
  ::inet_ntop(AF_INET, &address, text, sizeof text);
  const auto found = hostNames.find(text);
  if (found == hostNames.end()) return false;
  name = found->second;
  return true;
}

int FakeHost::uname(struct utsname* out) {
  if (!unameResult) return fail(EFAULT);
  *out = *unameResult;
  return 0;
}

int FakeHost::sysinfo(struct sysinfo* out) {
  if (!sysinfoResult) return fail(EFAULT);
  *out = *sysinfoResult;
  return 0;
}

long FakeHost::sysconf(int name) {
  if (const auto found = sysconfValues.find(name); found != sysconfValues.end()) {
    return found->second;
  }
  switch (name) {
    case _SC_NPROCESSORS_CONF:
      return nprocsConf;
    case _SC_NPROCESSORS_ONLN:
      return nprocs;
    case _SC_PAGESIZE:
      return pageSize;
    case _SC_CLK_TCK:
      return 100;
    default:
      return fail(EINVAL);
  }
}

bool FakeHost::findUtmp(short type, struct utmp* record) {
  const auto found = utmpRecords.find(type);
  if (found == utmpRecords.end()) return false;
  *record = found->second;
  return true;
}

const char* FakeHost::setlocale(int category, const char* locale) {
  const std::lock_guard lock(m_mutex);
  const auto entry = locales.try_emplace(category, "C").first;
  if (locale != nullptr && locale[0] != '\0') entry->second = locale;
  return entry->second ? entry->second->c_str() : nullptr;
}

const char* FakeHost::getenv(const char* name) {
  const auto found = environment.find(name);
  return found == environment.end() ? nullptr : found->second.c_str();
}

int FakeHost::gettimeofday(struct timeval* out) {
  *out = {now, 0};
  return 0;
}

int FakeHost::clockGettime(clockid_t clock, struct timespec* out) {
  const auto found = clocks.find(clock);
  *out = found == clocks.end() ? timespec{now, 0} : found->second;
  return 0;
}

void FakeHost::sleepMicroseconds(uint32_t microseconds) { sleptMicroseconds += microseconds; }

bool FakeHost::cpuid(uint32_t leaf, uint32_t subleaf, CpuidRegisters* out) {
  const auto& leaves = m_currentCpu ? cpuidOfCpus[*m_currentCpu] : cpuidLeaves;
  const auto found = leaves.find({leaf, subleaf});
  *out = found == leaves.end() ? CpuidRegisters{} : found->second;
  return found != leaves.end();
}

bool FakeHost::runOnCpu(uint32_t cpu, const std::function<void()>& work) {
  if (cpuidOfCpus.count(cpu) == 0) return false;
  m_currentCpu = cpu;
  work();
  m_currentCpu.reset();
  return true;
}

std::vector<uint32_t> FakeHost::allowedCpus() {
  std::vector<uint32_t> cpus;
  for (const auto& [cpu, leaves] : cpuidOfCpus) cpus.push_back(cpu);
  return cpus;
}

void FakeHost::portInput(PortRegisters* registers) {
  if (port) {
    port(registers);
  } else {
    ::raise(SIGSEGV);
  }
}

void* FakeHost::dlopen(const char* path, int flags) {
  void* library = loadLibrary ? loadLibrary(path, flags) : nullptr;
  if (library != nullptr) ++m_libraries;
  return library;
}

void* FakeHost::dlsym(void* library, const char* symbol) {
  return findSymbol ? findSymbol(library, symbol) : nullptr;
}

int FakeHost::dlclose(void*) {
  --m_libraries;
  return 0;
}

const char* FakeHost::dlerror() {
  return "cannot open shared object file: No such file or directory";
}

}  // namespace quenlor::test
