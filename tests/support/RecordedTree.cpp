#include "tests/support/RecordedTree.h"

#include <sys/stat.h>

#include <cerrno>
#include <deque>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace quenlor::test {
namespace {

constexpr int kMostLinks = 40;  // as the kernel's

[[noreturn]] void refuse(const std::string& why) { throw std::runtime_error(why); }

std::deque<std::string> componentsOf(std::string_view path) {
  std::deque<std::string> parts;
  std::istringstream stream{std::string(path)};
  for (std::string part; std::getline(stream, part, '/');) {
    if (!part.empty() && part != ".") parts.push_back(part);
  }
  return parts;
}

std::string joined(const std::vector<std::string>& parts) {
  std::string path;
  for (const std::string& part : parts) path += "/" + part;
  return path.empty() ? "/" : path;
}

std::string contentOf(const std::filesystem::path& file) {
  std::ostringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  return content.str();
}

char escaped(const std::string& text, size_t& at) {
  switch (text.at(at)) {
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case '\\':
      return '\\';
    case 'x':
      at += 2;
      return static_cast<char>(std::stoi(text.substr(at - 1, 2), nullptr, 16));
    default:
      refuse("unknown escape in: " + text);
  }
}

// Text of a list line with its escapes undone, and the line end that sysfs puts behind a value.
std::string valueOf(const std::string& text) {
  std::string value;
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      value += text[at];
    } else if (text.substr(at) == "\\c") {
      return value;
    } else {
      value += escaped(text, ++at);
    }
  }
  return value + "\n";
}

// Calls `take` with the line for each number that a "{0-3,8}" in it names; "{}" behind it repeats
// the number. A line without braces is taken as it is.
void eachExpansion(const std::string& line, const std::function<void(const std::string&)>& take) {
  const size_t begin = line.find('{');
  const size_t end = line.find('}', begin);
  if (begin == std::string::npos || end == std::string::npos || end == begin + 1) return take(line);
  for (const uint32_t number : recordedNumbers(line.substr(begin + 1, end - begin - 1))) {
    const std::string text = std::to_string(number);
    std::string rest = line.substr(end + 1);
    for (size_t at = rest.find("{}"); at != std::string::npos; at = rest.find("{}")) {
      rest.replace(at, 2, text);
    }
    eachExpansion(line.substr(0, begin).append(text).append(rest), take);
  }
}

void setPair(const std::string& value, uint32_t& major, uint32_t& minor) {
  const size_t colon = value.find(':');
  if (colon == std::string::npos) refuse("no MAJOR:MINOR: " + value);
  major = static_cast<uint32_t>(std::stoul(value.substr(0, colon)));
  minor = static_cast<uint32_t>(std::stoul(value.substr(colon + 1)));
}

void setFact(RecordedNode& node, const std::string& key, const std::string& value) {
  if (key == "mode") {
    node.permissions = static_cast<mode_t>(std::stoul(value, nullptr, 8));
  } else if (key == "mtime") {
    node.modified = std::stol(value);
  } else if (key == "btime") {
    node.born = std::stol(value);
  } else if (key == "ino") {
    node.inode = std::stoul(value);
  } else if (key == "dev") {
    setPair(value, node.deviceMajor, node.deviceMinor);
  } else if (key == "char" || key == "block") {
    node.type = key == "char" ? S_IFCHR : S_IFBLK;
    setPair(value, node.nodeMajor, node.nodeMinor);
  } else {
    refuse("unknown fact: " + key);
  }
}

}  // namespace

void eachRecordedLine(const std::string& text,
                      const std::function<void(const std::string&)>& take) {
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && line.front() != '#') eachExpansion(line, take);
  }
}

std::vector<uint32_t> recordedNumbers(const std::string& list) {
  std::vector<uint32_t> numbers;
  std::istringstream stream(list);
  for (std::string range; std::getline(stream, range, ',');) {
    const size_t dash = range.find('-');
    const unsigned long first = std::stoul(range);
    const unsigned long last =
        dash == std::string::npos ? first : std::stoul(range.substr(dash + 1));
    if (last < first || last > 65535) refuse("no list of numbers: " + list);
    for (unsigned long number = first; number <= last; ++number) {
      numbers.push_back(static_cast<uint32_t>(number));
    }
  }
  return numbers;
}

int recordedErrno(const std::string& name) {
  static const std::map<std::string, int> kNames{
      {"ENOENT", ENOENT}, {"EACCES", EACCES}, {"EPERM", EPERM},        {"EINVAL", EINVAL},
      {"EIO", EIO},       {"ENODEV", ENODEV}, {"ENODATA", ENODATA},    {"EOPNOTSUPP", EOPNOTSUPP},
      {"ENXIO", ENXIO},   {"EBUSY", EBUSY},   {"ETIMEDOUT", ETIMEDOUT}};
  const auto found = kNames.find(name);
  if (found == kNames.end()) refuse("unknown error name: " + name);
  return found->second;
}

RecordedTree::RecordedTree() {
  m_root.type = S_IFDIR;
  m_root.inode = 1;
}

RecordedNode& RecordedTree::nodeAt(std::string_view path, mode_t type) {
  RecordedNode* node = &m_root;
  for (const std::string& part : componentsOf(path)) {
    if (node->type == 0) node->type = S_IFDIR;
    if (node->type != S_IFDIR) refuse("a file or link has entries: " + std::string(path));
    std::unique_ptr<RecordedNode>& child = node->children[part];
    if (!child) {
      child = std::make_unique<RecordedNode>();
      child->inode = m_nextInode++;
    }
    node = child.get();
  }
  if (node->type == 0 || type != S_IFDIR) node->type = type;
  return *node;
}

void RecordedTree::addNamed(const std::string& path, mode_t type, const std::string& bytes) {
  if (path.empty() || path.front() != '/') refuse("no absolute path: " + path);
  nodeAt(path, type).bytes = bytes;
}

void RecordedTree::addFile(const std::string& path, const std::string& bytes) {
  addNamed(path, S_IFREG, bytes);
}

void RecordedTree::addDirectory(const std::filesystem::path& directory) {
  using std::filesystem::recursive_directory_iterator;
  for (const auto& entry : recursive_directory_iterator(directory)) {
    const std::string path = "/" + entry.path().lexically_relative(directory).string();
    if (entry.is_symlink()) {
      addNamed(path, S_IFLNK, std::filesystem::read_symlink(entry.path()).string());
    } else if (entry.is_directory()) {
      nodeAt(path, S_IFDIR);
    } else if (entry.path().filename() != ".gitkeep") {
      addNamed(path, S_IFREG, contentOf(entry.path()));
    }
  }
}

void RecordedTree::addListLine(std::string line) {
  constexpr std::string_view kIn = "in /";
  if (line.starts_with(kIn)) {
    m_base = line.substr(kIn.size() - 1) + "/";
    return;
  }
  if (line.front() != '/') line.insert(0, m_base);
  const size_t value = line.find(" = ");
  const size_t link = line.find(" -> ");
  if (value != std::string::npos && value < link) {
    addNamed(line.substr(0, value), S_IFREG, valueOf(line.substr(value + 3)));
  } else if (link != std::string::npos) {
    addNamed(line.substr(0, link), S_IFLNK, line.substr(link + 4));
  } else if (!line.empty() && line.back() == '/') {
    nodeAt(line, S_IFDIR);
  } else {
    refuse("tree.txt, unknown line: " + line);
  }
}

void RecordedTree::addList(const std::string& text) {
  m_base.clear();
  eachRecordedLine(text, [this](const std::string& line) { addListLine(line); });
}

void RecordedTree::addFacts(const std::string& text) {
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (line.empty() || line.front() == '#') continue;
    std::istringstream words(line);
    std::string word;
    words >> word;
    const bool known = find(word, false).node != nullptr;
    RecordedNode& node = nodeAt(word, known ? S_IFDIR : S_IFREG);
    while (words >> word) {
      const size_t sign = word.find('=');
      if (sign == std::string::npos) refuse("facts, no key=value: " + line);
      setFact(node, word.substr(0, sign), word.substr(sign + 1));
    }
  }
}

RecordedPlace RecordedTree::find(std::string_view path, bool followLast) const {
  std::deque<std::string> pending = componentsOf(path);
  std::vector<std::string> names;
  std::vector<const RecordedNode*> nodes{&m_root};
  for (int links = 0; !pending.empty();) {
    const std::string part = pending.front();
    pending.pop_front();
    if (part == "..") {
      if (!names.empty()) names.pop_back();
      if (nodes.size() > 1) nodes.pop_back();
      continue;
    }
    const auto& children = nodes.back()->children;
    const auto child = children.find(part);
    names.push_back(part);
    if (child == children.end()) {
      const int error = nodes.back()->type == S_IFDIR ? ENOENT : ENOTDIR;
      names.insert(names.end(), pending.begin(), pending.end());
      return {nullptr, joined(names), error};
    }
    const RecordedNode* node = child->second.get();
    if (node->type != S_IFLNK || (pending.empty() && !followLast)) {
      nodes.push_back(node);
      continue;
    }
    if (++links > kMostLinks) return {nullptr, joined(names), ELOOP};
    names.pop_back();
    if (node->bytes.starts_with('/')) {
      names.clear();
      nodes.resize(1);
    }
    const std::deque<std::string> target = componentsOf(node->bytes);
    pending.insert(pending.begin(), target.begin(), target.end());
  }
  return {nodes.back(), joined(names), 0};
}

}  // namespace quenlor::test
