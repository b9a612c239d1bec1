// Zstandard (RFC 8878), frames one after another, by libzstd.
#include <zstd.h>

#include <string>

#include "quenlorctl/input/PackedSource.h"

namespace quenlor::ctl {
namespace {

// The window that a frame may ask memory for, 32 MiB: `zstd -19` uses 8.
constexpr int kLargestWindowLog = 25;

struct StreamEnd {
  void operator()(ZSTD_DStream* stream) const { ZSTD_freeDStream(stream); }
};

class ZstdSource : public PackedSource {
 public:
  explicit ZstdSource(std::unique_ptr<ByteSource> packed)
      : PackedSource(std::move(packed)), m_stream(ZSTD_createDStream()) {
    if (!m_stream) throw InputError("no memory to expand it");
    ZSTD_DCtx_setParameter(m_stream.get(), ZSTD_d_windowLogMax, kLargestWindowLog);
  }

  size_t read(char* target, size_t size) override {
    ZSTD_outBuffer out{target, size, 0};
    while (out.pos == 0 && next(out)) {
    }
    return counted(out.pos);
  }

 private:
  // Expands some bytes; false at the end of the input. What the library still holds at the end of
  // the packed bytes comes out without new ones.
  bool next(ZSTD_outBuffer& out) {
    if (m_in.pos == m_in.size) m_in = {buffer(), refill(), 0};
    if (m_in.size == 0 && m_isBetweenFrames) return false;
    const size_t status = ZSTD_decompressStream(m_stream.get(), &out, &m_in);
    if (ZSTD_isError(status) != 0) {
      throw InputError(std::string("zstd: ") + ZSTD_getErrorName(status));
    }
    m_isBetweenFrames = status == 0;
    if (m_in.size == 0 && out.pos == 0 && !m_isBetweenFrames) throw InputError("zstd: cut off");
    return true;
  }

  std::unique_ptr<ZSTD_DStream, StreamEnd> m_stream;
  ZSTD_inBuffer m_in{};
  bool m_isBetweenFrames = true;
};

}  // namespace

std::unique_ptr<ByteSource> unzstd(std::unique_ptr<ByteSource> packed) {
  return std::make_unique<ZstdSource>(std::move(packed));
}

}  // namespace quenlor::ctl
