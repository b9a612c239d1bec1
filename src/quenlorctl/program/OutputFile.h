// Files that are written beside their place and put there when they are whole.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace quenlor::ctl {

// What cannot be written: the text names the file.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A new file is its owner's alone (0600), one that is replaced keeps its mode; behind a symbolic
// link the file that it names is replaced. What is not finished is removed. Throws OutputError.
class ReplacedFile {
 public:
  explicit ReplacedFile(const std::string& name);
  ReplacedFile(const ReplacedFile&) = delete;
  ReplacedFile& operator=(const ReplacedFile&) = delete;
  ~ReplacedFile();

  void write(std::string_view bytes);
  void finish();

 private:
  [[noreturn]] void fail() const;

  std::string m_name;
  std::string m_temporary;
  int m_descriptor = -1;
  std::string m_buffer;
};

// Writes to standard output; throws OutputError. What a reader that has gone away does not take
// ends the program as any other: by SIGPIPE.
void writeOutput(std::string_view bytes);
void flushOutput();

}  // namespace quenlor::ctl
