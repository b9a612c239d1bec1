#include "readers/network/HostNames.h"

#include <memory>
#include <utility>

#include "base/Thread.h"
#include "host/Host.h"

namespace quenlor {
namespace {

// So many look-ups wait at once; whoever asks for more waits a second time.
constexpr size_t kMostThreads = 64;

class Lookup final : public Thread {
 public:
  explicit Lookup(const in_addr& address) : m_address(address) {}

  void run() override {
    std::string name;
    if (host().hostNameOfAddress(m_address, name)) m_name = std::move(name);
  }

  std::optional<std::string> take() { return std::move(m_name); }

 private:
  in_addr m_address;
  std::optional<std::string> m_name;
};

}  // namespace

std::vector<std::optional<std::string>> hostNamesOf(const std::vector<in_addr>& addresses) {
  std::vector<std::optional<std::string>> names;
  while (names.size() < addresses.size()) {
    std::vector<std::unique_ptr<Lookup>> lookups;
    for (size_t i = names.size(); i < addresses.size() && lookups.size() < kMostThreads; ++i) {
      lookups.push_back(std::make_unique<Lookup>(addresses[i]));
    }
    // The last one needs no thread; where none can be made, look-ups are done in turn here.
    std::vector<Lookup*> here;
    for (const auto& lookup : lookups) {
      if (lookup == lookups.back() || !lookup->start()) here.push_back(lookup.get());
    }
    for (Lookup* lookup : here) lookup->run();
    for (const auto& lookup : lookups) {
      lookup->join();
      names.push_back(lookup->take());
    }
  }
  return names;
}

}  // namespace quenlor
