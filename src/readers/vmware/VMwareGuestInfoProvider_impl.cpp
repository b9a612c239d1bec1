#include "readers/vmware/VMwareGuestInfoProvider_impl.h"

#include <dlfcn.h>

#include <string>
#include <utility>

#include "host/Host.h"

namespace quenlor {

namespace {

constexpr const char* kSourcePath = "../../../src/invscan/com/VMwareGuestInfo.cpp";
// The place of the 32-bit library; a 64-bit program is refused it and finds its own by the name.
constexpr const char* kToolsLibrary = "/usr/lib/vmware-tools/lib32/libvmGuestLib.so";
constexpr const char* kLibraryName = "libvmGuestLib.so";

}  // namespace

VMwareGuestInfoProvider_impl::VMwareGuestInfoProvider_impl()
    : VMwareGuestInfoProvider_impl({kToolsLibrary, kLibraryName}) {}

VMwareGuestInfoProvider_impl::VMwareGuestInfoProvider_impl(std::vector<std::string> libraries)
    : m_libraries(std::move(libraries)) {
  const TraceFunction at{kSourcePath, "VMwareGuestInfoProvider_impl()"};
  getCcLogHw()->traceMidEntry(at(), "hardware %s", "VMwareGuestInfoProvider_impl()");
  getCcLogHw()->traceMidExit(at(), "hardware %s", "VMwareGuestInfoProvider_impl()");
}

VMwareGuestInfoProvider_impl::~VMwareGuestInfoProvider_impl() {
  const TraceFunction at{kSourcePath, "~VMwareGuestInfoProvider_impl()"};
  CcLogWrapper* log = getCcLogHw();
  log->traceMidEntry(at(), "hardware %s", "~VMwareGuestInfoProvider_impl()");
  if (m_isOpen) {
    const Error error = m_closeHandle(m_handle);
    log->traceMIN(at(), "hardware VMGuestLib_CloseHandle()=%d, %s\n", error, errorText(error));
  }
  if (m_library != nullptr) host().dlclose(m_library);
  log->traceMidExit(at(), "hardware %s", "~VMwareGuestInfoProvider_impl()");
}

bool VMwareGuestInfoProvider_impl::retrieve(VMwareGuestInfo& info) {
  const TraceFunction at{kSourcePath, "retrieve()"};
  getCcLogHw()->traceMidEntry(at(), "hardware %s", "retrieve()");
  const bool result = (m_library != nullptr || load()) && (m_isOpen || openHandle()) &&
                      updateSession() && readValues(info);
  getCcLogHw()->traceMidExit(at(), "hardware result=%d", result ? 1 : 0);
  return result;
}

bool VMwareGuestInfoProvider_impl::load() {
  const TraceFunction at{kSourcePath, "retrieve()"};
  m_isOpen = false;
  host().dlerror();  // forgets an error of somebody else
  for (const std::string& path : m_libraries) {
    if (m_library == nullptr) m_library = open(path.c_str());
  }
  if (m_library == nullptr) return false;
  if (resolveAll()) return true;
  getCcLogHw()->traceMIN(at(), "hardware Failed to resolve all symbols");
  host().dlclose(m_library);
  m_library = nullptr;
  return false;
}

void* VMwareGuestInfoProvider_impl::open(const char* path) {
  const TraceFunction at{kSourcePath, "retrieve()"};
  void* library = host().dlopen(path, RTLD_NOW);
  if (library == nullptr) {
    const char* error = host().dlerror();
    getCcLogHw()->traceMIN(at(), "hardware Failed to load guest API library, error=%s",
                           error == nullptr ? "" : error);
  }
  return library;
}

// Resolves and traces all nine, also behind a missing one.
bool VMwareGuestInfoProvider_impl::resolveAll() {
  bool complete = resolve("GetErrorText", m_getErrorText);
  complete &= resolve("OpenHandle", m_openHandle);
  complete &= resolve("GetSessionId", m_getSessionId);
  complete &= resolve("UpdateInfo", m_updateInfo);
  complete &= resolve("GetCpuReservationMHz", m_getCpuReservationMHz);
  complete &= resolve("GetCpuLimitMHz", m_getCpuLimitMHz);
  complete &= resolve("GetCpuShares", m_getCpuShares);
  complete &= resolve("GetHostProcessorSpeed", m_getHostProcessorSpeed);
  complete &= resolve("CloseHandle", m_closeHandle);
  return complete;
}

template <class Function>
bool VMwareGuestInfoProvider_impl::resolve(const char* name, Function& entryPoint) {
  const TraceFunction at{kSourcePath, "retrieve()"};
  const std::string symbol = std::string("VMGuestLib_") + name;
  entryPoint = reinterpret_cast<Function>(host().dlsym(m_library, symbol.c_str()));
  getCcLogHw()->traceMAX(at(), "hardware gl%s=%08lX", name,
                         reinterpret_cast<unsigned long>(entryPoint));
  return entryPoint != nullptr;
}

bool VMwareGuestInfoProvider_impl::openHandle() {
  const TraceFunction at{kSourcePath, "retrieve()"};
  CcLogWrapper* log = getCcLogHw();
  const Error error = m_openHandle(&m_handle);
  if (error != 0) {
    log->traceMIN(at(), "hardware VMGuestLib_OpenHandle() failed: %d, %s\n", error,
                  errorText(error));
    return false;
  }
  // The text prints 32 bits; the low half of a handle's address is enough to tell handles apart.
  log->traceMAX(at(), "hardware VMGuestLib_OpenHandle = 0x%08X\n",
                static_cast<unsigned>(reinterpret_cast<uintptr_t>(m_handle)));
  m_isOpen = true;
  return true;
}

// A session id of 0 means that the hypervisor gave no data; a changed one is nothing to heed here.
bool VMwareGuestInfoProvider_impl::updateSession() {
  const TraceFunction at{kSourcePath, "retrieve()"};
  CcLogWrapper* log = getCcLogHw();
  Error error = m_updateInfo(m_handle);
  if (error != 0) {
    log->traceMIN(at(), "hardware VMGuestLib_UpdateInfo failed: %d, %s\n", error, errorText(error));
    return false;
  }
  log->traceMAX(at(), "hardware VMGuestLib_UpdateInfo = %d\n", error);
  error = m_getSessionId(m_handle, &m_sessionId);
  if (error != 0) {
    log->traceMIN(at(), "hardware VMGuestLib_GetSessionId failed: %d, %s\n", error,
                  errorText(error));
    return false;
  }
  if (m_sessionId != 0) return true;
  log->traceMIN(at(), "hardware VMGuestLib_GetSessionId invalid (%lld)\n",
                static_cast<long long>(m_sessionId));
  return false;
}

// Calls all four getters, also behind a failed one: the trace then shows everything there is.
bool VMwareGuestInfoProvider_impl::readValues(VMwareGuestInfo& info) {
  const TraceFunction at{kSourcePath, "retrieve()"};
  CcLogWrapper* log = getCcLogHw();
  VMwareGuestInfo read;
  Error error = m_getHostProcessorSpeed(m_handle, &read.hostProcessorSpeed);
  log->traceMAX(at(), "hardware hostMHz = %d, error=%d\n",
                static_cast<int>(read.hostProcessorSpeed), error);
  error |= m_getCpuReservationMHz(m_handle, &read.cpuReservation);
  log->traceMAX(at(), "hardware cpuReservationMHz = %d, error=%d\n",
                static_cast<int>(read.cpuReservation), error);
  error |= m_getCpuLimitMHz(m_handle, &read.cpuLimit);
  log->traceMAX(at(), "hardware cpuLimitMHz = %d, error=%d\n", static_cast<int>(read.cpuLimit),
                error);
  error |= m_getCpuShares(m_handle, &read.cpuShares);
  log->traceMAX(at(), "hardware cpuShares = %d, error=%d\n", static_cast<int>(read.cpuShares),
                error);
  if (error == 0) {
    info = read;
    return true;
  }
  log->traceMIN(at(), "hardware One or more of get functions failed, error=%d, %s\n", error,
                errorText(error));
  return false;
}

const char* VMwareGuestInfoProvider_impl::errorText(Error error) const {
  const char* text = m_getErrorText(error);
  return text == nullptr ? "" : text;
}

}  // namespace quenlor
