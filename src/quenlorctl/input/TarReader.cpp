#include "quenlorctl/input/TarReader.h"

#include <archive.h>
#include <archive_entry.h>

#include <array>
#include <cerrno>
#include <string>
#include <utility>

#include "quenlorctl/input/Inputs.h"

namespace quenlor::ctl {
namespace {

// What the library calls back for bytes.
struct Bytes {
  std::unique_ptr<ByteSource> source;
  std::array<char, 65536> buffer{};
};

la_ssize_t readMore(archive* reader, void* user, const void** block) {
  auto& bytes = *static_cast<Bytes*>(user);
  try {
    *block = bytes.buffer.data();
    return static_cast<la_ssize_t>(bytes.source->read(bytes.buffer.data(), bytes.buffer.size()));
  } catch (const InputError& error) {
    archive_set_error(reader, EIO, "%s", error.what());
    return -1;
  }
}

std::string errorOf(archive* reader) {
  const char* text = archive_error_string(reader);
  return std::string("tar: ") + (text == nullptr ? "damaged" : text);
}

class MemberSource : public ByteSource {
 public:
  explicit MemberSource(archive* reader) : m_reader(reader) {}

  size_t read(char* buffer, size_t size) override {
    const la_ssize_t count = archive_read_data(m_reader, buffer, size);
    if (count < 0) throw InputError(errorOf(m_reader));
    return static_cast<size_t>(count);
  }

 private:
  archive* m_reader;
};

struct ArchiveEnd {
  void operator()(archive* reader) const { archive_read_free(reader); }
};

std::string nameOf(archive_entry* entry, size_t number) {
  const char* name = archive_entry_pathname(entry);
  if (name == nullptr) name = archive_entry_pathname_utf8(entry);
  return name == nullptr ? "member " + std::to_string(number) : name;
}

// False at the end of the archive. A header that could not be read whole still names a member.
bool nextMember(archive* reader, archive_entry** entry) {
  const int status = archive_read_next_header(reader, entry);
  if (status == ARCHIVE_EOF) return false;
  if (status < ARCHIVE_WARN) throw InputError(errorOf(reader));
  return true;
}

}  // namespace

void readTar(std::unique_ptr<ByteSource> source,
             const std::function<void(const std::string&, std::unique_ptr<ByteSource>)>& member) {
  Bytes bytes;
  bytes.source = std::move(source);
  const std::unique_ptr<archive, ArchiveEnd> reader(archive_read_new());
  if (!reader) throw std::bad_alloc();
  archive_read_support_format_tar(reader.get());
  if (archive_read_open(reader.get(), &bytes, nullptr, readMore, nullptr) != ARCHIVE_OK) {
    throw InputError(errorOf(reader.get()));
  }
  archive_entry* entry = nullptr;
  for (size_t number = 1; nextMember(reader.get(), &entry); ++number) {
    if (number > kMostMembers) {
      throw InputError("more than " + std::to_string(kMostMembers) + " members");
    }
    if (archive_entry_filetype(entry) != AE_IFREG) continue;
    member(nameOf(entry, number), std::make_unique<MemberSource>(reader.get()));
  }
}

}  // namespace quenlor::ctl
