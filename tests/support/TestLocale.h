// Locales that the build machine need not have installed.
#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {

// The process's locale for the object's lifetime.
class ScopedLocale {
 public:
  explicit ScopedLocale(const char* name) : m_previous(std::setlocale(LC_ALL, nullptr)) {
    m_set = std::setlocale(LC_ALL, name) != nullptr;
  }
  ~ScopedLocale() { std::setlocale(LC_ALL, m_previous.c_str()); }
  ScopedLocale(const ScopedLocale&) = delete;
  ScopedLocale& operator=(const ScopedLocale&) = delete;

  explicit operator bool() const { return m_set; }

 private:
  std::string m_previous;
  bool m_set;
};

// Compiles a locale into a folder of its own and looks for locales there. False where the machine
// has no localedef or no sources of locales.
class CompiledLocale {
 public:
  CompiledLocale(const std::string& name, const std::string& source, const std::string& charmap) {
    const std::string command = "localedef -c --quiet -i '" + source + "' -f " + charmap + " '" +
                                m_folder.path(name) + "' >/dev/null 2>&1";
    m_made = std::system(command.c_str()) != -1 && std::filesystem::exists(m_folder.path(name));
    setenv("LOCPATH", m_folder.path().c_str(), 1);
  }
  ~CompiledLocale() { unsetenv("LOCPATH"); }
  CompiledLocale(const CompiledLocale&) = delete;
  CompiledLocale& operator=(const CompiledLocale&) = delete;

  explicit operator bool() const { return m_made; }

 private:
  TemporaryDirectory m_folder;
  bool m_made;
};

}  // namespace quenlor::test
