// Interfaces and their addresses as "ifconfig -a" prints them. The IP address group finds the IPv6
// address of an interface here; everything else it asks the kernel.
#pragma once

#include <cstdio>
#include <memory>
#include <string_view>
#include <unordered_map>

namespace quenlor {

// One interface. The texts are made with array new and owned by the list that holds the record.
struct IfInfo {
  char* name;
  char* ipv4Address;  // or null
  char* ipv6Address;  // or null; as printed, with the prefix length where ifconfig prints one
};

// Names are unique, and no record lacks both addresses. Not thread safe.
class IfInfoList {
 public:
  IfInfoList() = default;
  ~IfInfoList();
  IfInfoList(const IfInfoList&) = delete;
  IfInfoList& operator=(const IfInfoList&) = delete;

  // Merges a record by its name: addresses that it has replace those of the list. Copies the texts.
  void add(const IfInfo& record);
  IfInfo* get(int i) const;  // null outside 0 .. count() - 1; stays owned by the list
  IfInfo* find(std::string_view name) const;  // null when there is none
  int count() const { return m_count; }

 private:
  std::unique_ptr<IfInfo*[]> m_items;  // exactly m_count records; null when empty
  int m_count = 0;
  std::unordered_map<std::string_view, IfInfo*> m_byName;  // the keys are the records' own names
};

// First record of that name; null when there is none.
IfInfo* find_if(const char* name, const IfInfoList& list);
// First record of that IPv4 address; null when there is none or the address is null or empty.
IfInfo* findIPv4(IfInfoList& list, const char* address);

// A copy made with array new; null for null.
char* x_strdup(const char* text);

// Starts "command args" and, if that could be started and a prefix is given, "<prefix>command args"
// as well; the stream of the last one is the result. Error output goes to /dev/null; prefix and
// args may be null. Where the command lies decides the prefix alone: the first one is started but
// never read. Its stream, or null, goes to *unread; the caller ends both with Host::pclose, the
// result first. Without `unread` the first command is ended before this returns.
FILE* x_popen(const char* command, const char* prefix, const char* args, FILE** unread = nullptr);

// Add what a listing holds: net-tools up to 1.60 ("inet addr:10.0.0.1"), and the form of Unix
// systems and of net-tools since 2.0 ("inet 10.0.0.1"). -1 for a null stream, else 0; do not close
// the stream.
int parse_ifconfig_linux(FILE* stream, IfInfoList& list);
int parse_ifconfig_unix(FILE* stream, IfInfoList& list);

// Runs "ifconfig -a" and adds what parse_ifconfig_linux makes of it. Always -1: the list is the
// result.
int populateIfInfoList(IfInfoList& list);

}  // namespace quenlor
