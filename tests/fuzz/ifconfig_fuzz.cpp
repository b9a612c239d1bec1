// ifconfig listings of any content, read by both grammars.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "host/Handles.h"
#include "readers/network/IfInfoList.h"
#include "tests/support/FakeHost.h"

namespace {

using namespace quenlor;

void require(bool condition) {
  if (!condition) std::abort();
}

void checkListing(int (*parse)(FILE* stream, IfInfoList& list)) {
  const FileStream stream = openFile("listing");
  IfInfoList list;
  require(parse(stream.get(), list) == 0);
  std::set<std::string> names;
  for (int i = 0; i < list.count(); ++i) {
    const IfInfo* info = list.get(i);
    require(names.insert(info->name).second);
    require(info->ipv4Address != nullptr || info->ipv6Address != nullptr);
    require(find_if(info->name, list) == info);
    const IfInfo* found = findIPv4(list, info->ipv4Address);
    const bool isSought = info->ipv4Address != nullptr && *info->ipv4Address != '\0';
    require((found != nullptr) == isSought);
    require(!isSought || std::strcmp(found->ipv4Address, info->ipv4Address) == 0);
  }
  require(list.get(list.count()) == nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  test::FakeHost machine;
  machine.files["listing"].assign(reinterpret_cast<const char*>(data), size);
  checkListing(parse_ifconfig_linux);
  checkListing(parse_ifconfig_unix);
  return 0;
}
