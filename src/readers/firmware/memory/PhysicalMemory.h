// Page-aware read access to files and to physical memory ("/dev/mem").
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>

namespace quenlor {

inline constexpr char kPhysicalMemoryPath[] = "/dev/mem";

// 1: the offset of a mapping is aligned down to its page; any other value maps the offset given.
using slm_page_alignment = int;
inline constexpr slm_page_alignment kPageAligned = 1;

// 1: towards lower addresses; any other value towards higher ones.
using slm_page_alignment_direction = int;
inline constexpr slm_page_alignment_direction kAlignDown = 1;
inline constexpr slm_page_alignment_direction kAlignUp = 0;

// 0: read-only; any other value read-write.
using slm_file_access_mode = int;
inline constexpr slm_file_access_mode kReadOnly = 0;

// A live mapping, made by slm_file_mmap and freed by slm_file_munmap.
struct slm_mapping;
using slm_handle = slm_mapping*;

// What a failed mapping returns, as mmap does.
inline void* const kMapFailed = MAP_FAILED;

size_t slm_get_page_size();            // bytes
uint64_t slm_page_off(uint64_t addr);  // bytes from the start of the address's page
uint64_t slm_page_align(uint64_t addr, slm_page_alignment_direction direction);

// Maps length bytes of a file, shared; a missing file is created (mode 0640). Returns the start of
// the mapping, which for an aligned one lies slm_page_off(offset) bytes before the byte asked for,
// or kMapFailed. A range that leads past the end of a regular file fails: touching it would be
// SIGBUS.
void* slm_file_mmap(const char* path, uint64_t offset, size_t length, slm_page_alignment alignment,
                    slm_file_access_mode mode, slm_handle* handle_out);
// 0, or -1 when unmapping failed. The descriptor is closed and the handle freed in both cases.
int slm_file_munmap(slm_handle* handle_in_out);

// Maps the physical addresses start up to end (exclusive) for reading. A machine without "/dev/mem"
// fails and stays without it.
void* slm_phys_mmap(uint64_t start, uint64_t end, slm_page_alignment alignment,
                    slm_handle* handle_out);
int slm_phys_munmap(slm_handle* handle);

// True when bytes offset to offset + length of an open file can be touched through a mapping: the
// file is a device, or long enough.
bool isMappable(int fd, uint64_t offset, uint64_t length);

}  // namespace quenlor
