// The files of a recorded machine: a tree held in memory, so that nothing outside it is reachable.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor::test {

// One file, directory, link or device node; st_mode's type bits tell which.
struct RecordedNode {
  mode_t type = 0;
  std::string bytes;  // content, or the text of a link
  std::map<std::string, std::unique_ptr<RecordedNode>> children;
  std::optional<mode_t> permissions;
  time_t modified = 0;
  std::optional<time_t> born;
  uint64_t inode = 0;
  uint32_t deviceMajor = 0;  // of the file system
  uint32_t deviceMinor = 0;
  uint32_t nodeMajor = 0;  // of a device node
  uint32_t nodeMinor = 0;
};

// Where a path leads: the node, or null and an errno. The path has no link, "." or ".." left in it.
struct RecordedPlace {
  const RecordedNode* node = nullptr;
  std::string path;
  int error = 0;
};

class RecordedTree {
 public:
  RecordedTree();

  // The files below a directory, links as links; ".gitkeep" only keeps a directory alive.
  void addDirectory(const std::filesystem::path& directory);
  // The lines of tree.txt (tests/recorded/README.md); throws std::runtime_error for any other line.
  void addList(const std::string& text);
  // A file of its own.
  void addFile(const std::string& path, const std::string& bytes);
  // The lines of "facts"; throws likewise.
  void addFacts(const std::string& text);

  // Follows links inside the tree, at most 40, the last component's only if asked.
  RecordedPlace find(std::string_view path, bool followLast = true) const;

 private:
  RecordedNode& nodeAt(std::string_view path, mode_t type);
  void addListLine(std::string line);
  void addNamed(const std::string& path, mode_t type, const std::string& bytes);

  RecordedNode m_root;
  uint64_t m_nextInode = 2;
  std::string m_base;  // of the list's paths that do not begin with a slash
};

// Calls `take` with each line that is neither empty nor a comment, once for each number that a
// "{0-3,8}" in it names; "{}" behind it repeats the number.
void eachRecordedLine(const std::string& text, const std::function<void(const std::string&)>& take);

// "0-3,8" as numbers; throws std::runtime_error for anything else.
std::vector<uint32_t> recordedNumbers(const std::string& list);

// The errno of a name such as EACCES; throws std::runtime_error for an unknown one.
int recordedErrno(const std::string& name);

}  // namespace quenlor::test
