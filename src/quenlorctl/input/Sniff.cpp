#include "quenlorctl/input/Sniff.h"

#include <array>
#include <string>
#include <utility>

namespace quenlor::ctl {
namespace {

constexpr size_t kHeadSize = 512;  // a tar's first header
constexpr size_t kUstarOffset = 257;
constexpr std::string_view kUstar = "ustar";
constexpr std::string_view kGzip = "\x1F\x8B";
constexpr std::string_view kZstd = "\x28\xB5\x2F\xFD";
constexpr std::string_view kSkippable = "\x2A\x4D\x18";  // behind a byte of 50 to 5F

// Gives the head that was looked at before the rest.
class HeadedSource : public ByteSource {
 public:
  HeadedSource(std::string head, std::unique_ptr<ByteSource> rest)
      : m_head(std::move(head)), m_rest(std::move(rest)) {}

  size_t read(char* buffer, size_t size) override {
    if (m_head.empty()) return m_rest->read(buffer, size);
    const size_t count = m_head.copy(buffer, size);
    m_head.erase(0, count);
    return count;
  }

 private:
  std::string m_head;
  std::unique_ptr<ByteSource> m_rest;
};

std::string headOf(ByteSource& source) {
  std::string head(kHeadSize, '\0');
  size_t filled = 0;
  while (filled < head.size()) {
    const size_t count = source.read(head.data() + filled, head.size() - filled);
    if (count == 0) break;
    filled += count;
  }
  head.resize(filled);
  return head;
}

SniffedSource look(std::unique_ptr<ByteSource> source) {
  std::string head = headOf(*source);
  const InputKind kind = kindOf(head);
  return {kind, std::make_unique<HeadedSource>(std::move(head), std::move(source))};
}

bool isSkippable(std::string_view bytes) {
  return bytes.size() > kSkippable.size() && (static_cast<uint8_t>(bytes[0]) & 0xF0) == 0x50 &&
         bytes.substr(1, kSkippable.size()) == kSkippable;
}

}  // namespace

InputKind kindOf(std::string_view firstBytes) {
  if (firstBytes.starts_with(kGzip)) return InputKind::kGzip;
  if (firstBytes.starts_with(kZstd) || isSkippable(firstBytes)) return InputKind::kZstd;
  if (firstBytes.size() >= kUstarOffset + kUstar.size() &&
      firstBytes.substr(kUstarOffset, kUstar.size()) == kUstar) {
    return InputKind::kTar;
  }
  return InputKind::kXml;
}

SniffedSource sniff(std::unique_ptr<ByteSource> source) {
  SniffedSource outer = look(std::move(source));
  if (outer.kind == InputKind::kGzip) return look(gunzip(std::move(outer.bytes)));
  if (outer.kind == InputKind::kZstd) return look(unzstd(std::move(outer.bytes)));
  return outer;
}

}  // namespace quenlor::ctl
