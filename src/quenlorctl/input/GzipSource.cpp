// gzip (RFC 1952), members one after another, by zlib.
#include <zlib.h>

#include <string>

#include "quenlorctl/input/PackedSource.h"

namespace quenlor::ctl {
namespace {

constexpr int kGzipOnly = MAX_WBITS + 16;

class GzipSource : public PackedSource {
 public:
  explicit GzipSource(std::unique_ptr<ByteSource> packed) : PackedSource(std::move(packed)) {
    if (inflateInit2(&m_stream, kGzipOnly) != Z_OK) throw InputError("no memory to expand it");
  }
  ~GzipSource() override { inflateEnd(&m_stream); }

  size_t read(char* target, size_t size) override {
    m_stream.next_out = reinterpret_cast<Bytef*>(target);
    m_stream.avail_out = static_cast<uInt>(size);
    while (m_stream.avail_out == size && next()) {
    }
    return counted(size - m_stream.avail_out);
  }

 private:
  // Expands some bytes; false at the end of the input. What the library still holds at the end of
  // the packed bytes comes out without new ones.
  bool next() {
    if (m_stream.avail_in == 0) load();
    if (m_stream.avail_in == 0 && m_isBetweenMembers) return false;
    if (m_isBetweenMembers && inflateReset(&m_stream) != Z_OK) throw InputError("gzip: damaged");
    const int status = inflate(&m_stream, Z_NO_FLUSH);
    if (status == Z_BUF_ERROR) throw InputError("gzip: cut off");
    if (status != Z_OK && status != Z_STREAM_END) {
      throw InputError(std::string("gzip: ") + (m_stream.msg ? m_stream.msg : "damaged"));
    }
    m_isBetweenMembers = status == Z_STREAM_END;
    return true;
  }

  void load() {
    m_stream.next_in = reinterpret_cast<Bytef*>(buffer());
    m_stream.avail_in = static_cast<uInt>(refill());
  }

  z_stream m_stream{};
  bool m_isBetweenMembers = false;
};

}  // namespace

std::unique_ptr<ByteSource> gunzip(std::unique_ptr<ByteSource> packed) {
  return std::make_unique<GzipSource>(std::move(packed));
}

}  // namespace quenlor::ctl
