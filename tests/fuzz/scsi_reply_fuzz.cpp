// Packets of the sg driver with any content, through everything that asks a generic SCSI node.
// Every read and every ioctl result comes from the input; where it ends, the device falls silent.
#include <scsi/sg.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "groups/storage/StorageGroup.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace {

using namespace quenlor;

void require(bool condition) {
  if (!condition) std::abort();
}

// Hands out the input piece by piece.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}

  size_t take(void* out, size_t wanted) {
    const size_t count = std::min(wanted, m_size);
    if (count != 0) std::memcpy(out, m_data, count);
    m_data += count;
    m_size -= count;
    return count;
  }

 private:
  const uint8_t* m_data;
  size_t m_size;
};

int answer(Input& input, unsigned long request, void* argument) {
  uint8_t kind = 0;
  if (input.take(&kind, 1) == 0 || (kind & 1) != 0) {
    errno = EIO;
    return -1;
  }
  if (request == SG_IO) {
    auto* packet = static_cast<sg_io_hdr*>(argument);
    input.take(packet->dxferp, packet->dxfer_len);
    input.take(&packet->resid, 1);
    packet->info = kind >> 7;
  } else {
    input.take(argument, 4);  // what every other request can take
  }
  return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input(data, size);
  test::FakeHost machine;
  test::FakeDevice node;
  node.write = [](const void*, size_t length) { return static_cast<ssize_t>(length); };
  node.read = [&](void* packet, size_t length) {
    std::memset(packet, 0, length);
    // Mostly clean headers: a device behind a broken one would hardly ever be reached.
    uint8_t dirty = 0;
    input.take(&dirty, 1);
    if ((dirty & 0xE0) == 0xE0) input.take(packet, sizeof(sg_header));
    input.take(static_cast<char*>(packet) + sizeof(sg_header), length - sizeof(sg_header));
    return static_cast<ssize_t>(length);
  };
  node.ioctl = [&](unsigned long request, void* argument) {
    return answer(input, request, argument);
  };
  machine.devices["/dev/sg0"] = node;
  machine.devices["/dev/sda"] = node;
  machine.directories["/dev"] = {"sda"};
  StorageGroup group;
  const std::unique_ptr<VelTable> table(group.generateTable());
  require(machine.openDescriptors() == 0);
  for (const test::RowValues& row : test::rowsOf(table.get())) {
    require(row.size() == 11);
    for (const char character : test::valueOf(row, 6)) require(character >= ' ');
  }
  return 0;
}
