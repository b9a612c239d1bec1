// The loaded guest SDK library and its nine entry points (VMware Guest SDK, "vmGuestLib.h").
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "log/CcLogWrapper.h"
#include "readers/vmware/VMwareGuestInfo.h"

namespace quenlor {

// Unloaded, then loaded (m_library), then open (m_isOpen). A failed step is tried again by the next
// retrieve().
class VMwareGuestInfoProvider_impl {
 public:
  VMwareGuestInfoProvider_impl();  // with the libraries of the classic sources
  explicit VMwareGuestInfoProvider_impl(std::vector<std::string> libraries);
  ~VMwareGuestInfoProvider_impl();
  VMwareGuestInfoProvider_impl(const VMwareGuestInfoProvider_impl&) = delete;
  VMwareGuestInfoProvider_impl& operator=(const VMwareGuestInfoProvider_impl&) = delete;

  bool retrieve(VMwareGuestInfo& info);  // as VMwareGuestInfoProvider::retrieveGuestInfo

 private:
  using Handle = void*;
  using Error = int;  // 0 is success
  using GetNumber = Error (*)(Handle, uint32_t*);

  bool load();
  void* open(const char* path);
  bool resolveAll();
  template <class Function>
  bool resolve(const char* name, Function& entryPoint);
  bool openHandle();
  bool updateSession();
  bool readValues(VMwareGuestInfo& info);
  const char* errorText(Error error) const;

  const std::vector<std::string> m_libraries;  // tried in this order
  void* m_library = nullptr;
  Handle m_handle = nullptr;
  uint64_t m_sessionId = 0;
  bool m_isOpen = false;

  const char* (*m_getErrorText)(Error) = nullptr;
  Error (*m_openHandle)(Handle*) = nullptr;
  Error (*m_getSessionId)(Handle, uint64_t*) = nullptr;
  Error (*m_updateInfo)(Handle) = nullptr;
  GetNumber m_getCpuReservationMHz = nullptr;
  GetNumber m_getCpuLimitMHz = nullptr;
  GetNumber m_getCpuShares = nullptr;
  GetNumber m_getHostProcessorSpeed = nullptr;
  Error (*m_closeHandle)(Handle) = nullptr;
};

}  // namespace quenlor
