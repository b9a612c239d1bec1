#include "config/DovCfg.h"

#include <sys/auxv.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "base/File.h"
#include "base/Properties.h"
#include "base/StringMap.h"

namespace quenlor {
namespace {

constexpr char kFileName[] = "quenlor.conf";
constexpr char kSystemDirectory[] = "/etc/quenlor";
constexpr char kConfigDirKey[] = "config_dir";

struct Configuration {
  int error = DovCfg::kSuccess;
  StringMap values;
};

// Never destroyed: a worker that was given up may still read it while the process ends.
Configuration& configuration() {
  static auto& theConfiguration = *new Configuration;
  return theConfiguration;
}

// The file that a path leads to, symbolic links followed; empty when there is none.
std::string realPath(const char* path) {
  char resolved[PATH_MAX];
  return realpath(path, resolved) == nullptr ? std::string() : std::string(resolved);
}

// A name without "/" was looked up in the caller's search path and says nothing about the place.
std::string programFile(const char* programPath) {
  std::string file;
  if (programPath != nullptr && std::strchr(programPath, '/') != nullptr) {
    file = realPath(programPath);
  }
  if (file.empty()) file = realPath("/proc/self/exe");
  if (!file.empty()) return file;
  // Without "/proc": the name that the kernel was asked to start.
  const auto executed = reinterpret_cast<const char*>(getauxval(AT_EXECFN));  // NOLINT: the ABI
  return executed == nullptr ? std::string() : realPath(executed);
}

bool isDirectory(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string defaultConfigDir(const std::string& programDirectory) {
  std::string shared = programDirectory + "/../share/quenlor";
  return isDirectory(shared) ? shared : programDirectory;
}

bool isAbsent(int error) { return error == ENOENT || error == ENOTDIR; }

// Takes the file's values over. False when there is no such file.
bool load(const std::string& path, Configuration& config) {
  std::string text;
  const int error = File::readText(path.c_str(), text);
  if (isAbsent(error)) return false;
  if (error != 0) {
    std::fprintf(stderr, "quenlor: %s: cannot be read: %s\n", path.c_str(), std::strerror(error));
    config.error = DovCfg::kUnreadable;
    return true;
  }
  const int badLine = parseProperties(text, config.values);
  if (badLine != 0) {
    std::fprintf(stderr, "quenlor: %s:%d: not a line of the form \"key = value\"\n", path.c_str(),
                 badLine);
    config.error = DovCfg::kMalformed;
  }
  return true;
}

void loadFirst(const std::string& programDirectory, Configuration& config) {
  const std::string directories[] = {programDirectory, programDirectory + "/../etc/quenlor",
                                     kSystemDirectory};
  for (const std::string& directory : directories) {
    if (load(directory + File::pathSeparator + kFileName, config)) return;
  }
}

}  // namespace

void DovCfg::initialize(const char* programPath) {
  const std::string program = programFile(programPath);
  // A program that cannot be found counts as installed beside the system's configuration: the root
  // or the current directory could be anybody's.
  const std::string directory =
      program.empty() ? kSystemDirectory : program.substr(0, program.rfind('/'));

  Configuration& config = configuration();
  config = Configuration();
  loadFirst(directory, config);
  if (config.error != kSuccess) config.values.clear();
  if (config.values.get(kConfigDirKey).empty()) {
    config.values.set(kConfigDirKey, defaultConfigDir(directory));
  }
}

int DovCfg::getError() { return configuration().error; }

String DovCfg::getKey(const String& key) { return configuration().values.get(key); }

}  // namespace quenlor
