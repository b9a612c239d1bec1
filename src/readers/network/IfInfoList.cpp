#include "readers/network/IfInfoList.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "host/Host.h"

namespace quenlor {
namespace {

constexpr const char* StdErrRedir = " 2>/dev/null";
constexpr const char* kIfconfig = "ifconfig";
constexpr const char* kIfconfigPrefix = "/sbin/";
constexpr const char* kIfconfigArgs = "-a";

struct CommandCloser {
  void operator()(FILE* stream) const { host().pclose(stream); }
};
using OwnedCommand = std::unique_ptr<FILE, CommandCloser>;

std::string commandLine(const char* prefix, const char* command, const char* args) {
  std::string line = prefix == nullptr ? "" : prefix;
  line += command;
  if (args != nullptr) line.append(" ").append(args);
  return line + StdErrRedir;
}

void replaceText(char*& text, const char* replacement) {
  const std::unique_ptr<char[]> old(text);
  text = x_strdup(replacement);
}

void freeRecord(IfInfo* record) {
  const std::unique_ptr<IfInfo> owned(record);
  for (const char* text : {record->name, record->ipv4Address, record->ipv6Address}) delete[] text;
  *record = {};
}

}  // namespace

IfInfoList::~IfInfoList() {
  for (int i = 0; i < m_count; ++i) freeRecord(m_items[static_cast<size_t>(i)]);
}

void IfInfoList::add(const IfInfo& record) {
  if (record.ipv4Address == nullptr && record.ipv6Address == nullptr) return;
  IfInfo* merged = find_if(record.name, *this);
  if (merged == nullptr) {
    const auto count = static_cast<size_t>(m_count);
    auto items = std::make_unique_for_overwrite<IfInfo*[]>(count + 1);
    std::copy_n(m_items.get(), count, items.get());
    merged = items[count] = new IfInfo{};
    m_items = std::move(items);
    ++m_count;
    merged->name = x_strdup(record.name);
    m_byName.emplace(merged->name, merged);
  }
  if (record.ipv4Address != nullptr) replaceText(merged->ipv4Address, record.ipv4Address);
  if (record.ipv6Address != nullptr) replaceText(merged->ipv6Address, record.ipv6Address);
}

IfInfo* IfInfoList::get(int i) const {
  return i >= 0 && i < m_count ? m_items[static_cast<size_t>(i)] : nullptr;
}

IfInfo* IfInfoList::find(std::string_view name) const {
  const auto found = m_byName.find(name);
  return found == m_byName.end() ? nullptr : found->second;
}

IfInfo* find_if(const char* name, const IfInfoList& list) { return list.find(name); }

IfInfo* findIPv4(IfInfoList& list, const char* address) {
  if (address == nullptr || *address == '\0') return nullptr;
  for (int i = 0; i < list.count(); ++i) {
    const char* candidate = list.get(i)->ipv4Address;
    if (candidate != nullptr && std::strcmp(candidate, address) == 0) return list.get(i);
  }
  return nullptr;
}

char* x_strdup(const char* text) {
  if (text == nullptr) return nullptr;
  const size_t size = std::strlen(text) + 1;
  char* copy = new char[size];
  std::memcpy(copy, text, size);
  return copy;
}

FILE* x_popen(const char* command, const char* prefix, const char* args, FILE** unread) {
  if (unread != nullptr) *unread = nullptr;
  OwnedCommand first(host().popen(commandLine(nullptr, command, args).c_str()));
  if (first == nullptr || prefix == nullptr) return first.release();
  FILE* result = host().popen(commandLine(prefix, command, args).c_str());
  if (unread != nullptr) *unread = first.release();
  return result;
}

int populateIfInfoList(IfInfoList& list) {
  FILE* unreadStream = nullptr;
  FILE* stream = x_popen(kIfconfig, kIfconfigPrefix, kIfconfigArgs, &unreadStream);
  // Closed in reverse order: only when the listing is read to its end does the other command have
  // to go, which its closed pipe sees to.
  const OwnedCommand unread(unreadStream);
  const OwnedCommand listing(stream);
  parse_ifconfig_linux(stream, list);
  return -1;
}

}  // namespace quenlor
