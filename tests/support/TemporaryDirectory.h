// A place for the files of a test.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace quenlor::test {

// A new, empty directory, removed with all that is in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    const std::filesystem::path parent =
        std::filesystem::canonical(std::filesystem::temp_directory_path());
    std::string name = parent / "quenlor-test-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
    m_path = name;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return m_path; }
  std::string path(const std::string& name) const { return m_path / name; }

  // Writes a file and gives its path.
  std::string write(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }

  // The content of a file; empty where there is none.
  std::string read(const std::string& name) const {
    std::ostringstream content;
    content << std::ifstream(path(name), std::ios::binary).rdbuf();
    return content.str();
  }

 private:
  std::filesystem::path m_path;
};

}  // namespace quenlor::test
