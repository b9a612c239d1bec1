// What the writers' tests share: a folder for documents, a small catalogue, tables of it.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "catalogue/Catalogue.h"
#include "tables/VelTable.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor::test {

// A folder that everybody may enter, removed with all that is in it.
class DocumentFolder {
 public:
  DocumentFolder() {
    std::filesystem::permissions(m_directory.path(), std::filesystem::perms(0755));
  }

  std::string path(const std::string& name) const { return m_directory.path(name); }

 private:
  TemporaryDirectory m_directory;
};

inline std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream content;
  content << file.rdbuf();
  return content.str();
}

inline void writeFile(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

// Result of a function run by a user without root's right to write everywhere.
inline int asOrdinaryUser(const std::function<int()>& function) {
  const pid_t child = fork();
  if (child == 0) {
    constexpr uid_t kNobody = 65534;
    if (geteuid() == 0 && (setgid(kNobody) != 0 || setuid(kNobody) != 0)) _exit(255);
    _exit(function());
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline constexpr velEnumDef kColours[] = {
    {1, "Red"}, {2, "Green > blue"}, {kCatalogueEnd, nullptr}};

inline constexpr velAttribDef kWriterAttribs[] = {
    {1, "Index", VEL_ULONG, 0, nullptr},          {2, "Full Name", VEL_STRING, 40, nullptr},
    {3, "Colour", VEL_ULONG, 0, kColours},        {4, "1394 Port/Speed", VEL_UCHAR, 0, nullptr},
    {5, "Short", VEL_USHORT, 0, nullptr},         {6, "Pair", VEL_UQUAD, 0, nullptr},
    {7, "Load", VEL_FLOAT, 0, nullptr},           {8, "Capacity", VEL_DOUBLE, 0, nullptr},
    {9, "Octets", VEL_OCTETSTRING, 0, nullptr},   {10, "Date", VEL_DATETIME, 0, nullptr},
    {11, "Big", VEL_ULONGLONG, 0, nullptr},       {12, "Long", VEL_LONGLONG, 0, nullptr},
    {13, "Text Colour", VEL_STRING, 8, kColours}, {kCatalogueEnd, nullptr, 0, 0, nullptr},
};

inline constexpr uint32_t kWriterKeys[] = {1, 2};
inline constexpr uint32_t kKeyed = 1;
inline constexpr uint32_t kKeyless = 2;
inline constexpr uint32_t kNoKeysListed = 3;
inline constexpr uint32_t kUnlisted = 99;

inline constexpr velGroupDef kWriterGroups[] = {
    {kKeyed, "Keyed Group", kWriterAttribs, kWriterKeys, 2, 1, 0},
    {kKeyless, "Keyless Group", kWriterAttribs, nullptr, 0, 1, 0},
    {kNoKeysListed, "No Keys Listed", kWriterAttribs, kWriterKeys, 0, 1, 0},
    {kCatalogueEnd, nullptr, nullptr, nullptr, 0, 0, 0},
};

// A table of the small catalogue whose rows have an index and a name.
inline std::unique_ptr<VelTable> namedRows(uint32_t groupId,
                                           std::initializer_list<const char*> names) {
  auto table = std::make_unique<VelTable>(kWriterGroups, groupId, 7u);
  uint32_t index = 0;
  for (const char* name : names) {
    auto row = std::make_unique<VelTableRow>();
    addUlong(*row, 1, ++index);
    addText(*row, 2, name);
    table->addRow(row.release());
  }
  return table;
}

// A table with one row of one attribute.
template <class... Value>
std::unique_ptr<VelTable> oneValue(uint32_t groupId, uint32_t id, Value... value) {
  auto table = std::make_unique<VelTable>(kWriterGroups, groupId, 7u);
  auto row = std::make_unique<VelTableRow>();
  row->addAttrib(new VelTableAttrib(id, value...));
  table->addRow(row.release());
  return table;
}

}  // namespace quenlor::test
