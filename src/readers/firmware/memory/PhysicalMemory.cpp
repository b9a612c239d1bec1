#include "readers/firmware/memory/PhysicalMemory.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <memory>
#include <utility>

#include "host/Handles.h"
#include "host/Host.h"

namespace quenlor {

struct slm_mapping {
  void* address;
  size_t length;
  Descriptor descriptor;
};

size_t slm_get_page_size() { return static_cast<size_t>(host().getpagesize()); }

uint64_t slm_page_off(uint64_t addr) { return addr % slm_get_page_size(); }

uint64_t slm_page_align(uint64_t addr, slm_page_alignment_direction direction) {
  const uint64_t offset = slm_page_off(addr);
  if (offset == 0) return addr;
  return direction == kAlignDown ? addr - offset : addr + slm_get_page_size() - offset;
}

bool isMappable(int fd, uint64_t offset, uint64_t length) {
  struct stat status {};
  if (host().fstat(fd, &status) != 0) return false;
  if (!S_ISREG(status.st_mode)) return true;
  const auto size = static_cast<uint64_t>(status.st_size);
  return offset <= size && length <= size - offset;
}

void* slm_file_mmap(const char* path, uint64_t offset, size_t length, slm_page_alignment alignment,
                    slm_file_access_mode mode, slm_handle* handle_out) {
  const bool writable = mode != kReadOnly;
  Descriptor descriptor(host().open(path, writable ? O_CREAT | O_RDWR : O_CREAT, 0640));
  if (alignment == kPageAligned) {
    length += slm_page_off(offset);
    offset = slm_page_align(offset, kAlignDown);
  }
  if (!descriptor || !isMappable(descriptor.get(), offset, length)) return kMapFailed;
  void* address = host().mmap(length, writable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED,
                              descriptor.get(), static_cast<off_t>(offset));
  if (address == kMapFailed) return kMapFailed;
  *handle_out = new slm_mapping{address, length, std::move(descriptor)};
  return address;
}

int slm_file_munmap(slm_handle* handle_in_out) {
  const std::unique_ptr<slm_mapping> mapping(std::exchange(*handle_in_out, nullptr));
  if (mapping == nullptr) return -1;
  return host().munmap(mapping->address, mapping->length) == 0 ? 0 : -1;
}

void* slm_phys_mmap(uint64_t start, uint64_t end, slm_page_alignment alignment,
                    slm_handle* handle_out) {
  // The mapping opens with O_CREAT, which would leave a regular file behind as "/dev/mem".
  struct stat status {};
  if (host().stat(kPhysicalMemoryPath, &status) != 0) return kMapFailed;
  return slm_file_mmap(kPhysicalMemoryPath, start, end - start, alignment, kReadOnly, handle_out);
}

int slm_phys_munmap(slm_handle* handle) { return slm_file_munmap(handle); }

}  // namespace quenlor
