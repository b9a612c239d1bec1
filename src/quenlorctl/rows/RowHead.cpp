#include "quenlorctl/document/HostKey.h"
#include "quenlorctl/rows/RowWriter.h"

namespace quenlor::ctl {
namespace {

constexpr uint32_t kScanTime = 101;

}  // namespace

RowHead RowHead::of(const Document& document, const std::string& toldHost) {
  RowHead head;
  head.scan = document.textOf(group::kScanInfo, kScanTime);
  head.host = toldHost;
  if (!toldHost.empty()) return head;
  if (auto key = hostKey(document)) {
    head.host = std::move(key->key);
    head.hostRank = key->rank;
  }
  return head;
}

}  // namespace quenlor::ctl
