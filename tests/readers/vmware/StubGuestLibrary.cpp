// A guest SDK library without a hypervisor behind it: fixed values, failures by definition.
#include <cstdint>

#ifndef STUB_SESSION_ID
#define STUB_SESSION_ID 0x1122334455667788ULL
#endif
#ifndef STUB_SESSION_ERROR
#define STUB_SESSION_ERROR 0
#endif
#ifndef STUB_UPDATE_ERROR
#define STUB_UPDATE_ERROR 0
#endif
#ifndef STUB_RESERVATION_ERROR
#define STUB_RESERVATION_ERROR 0
#endif
#ifndef STUB_SHARES_ERROR
#define STUB_SHARES_ERROR 0
#endif
#ifndef STUB_OPEN_FAILURES
#define STUB_OPEN_FAILURES 0
#endif

namespace {

int openCalls = 0;
int session;  // its address is the handle

int valueOf(void* handle, uint32_t* value, uint32_t result, int error) {
  constexpr int kInvalidHandle = 8;
  if (handle != &session) return kInvalidHandle;
  if (error == 0) *value = result;
  return error;
}

}  // namespace

extern "C" {

int stubGetterCalls = 0;
int stubUpdateCalls = 0;
int* stubCloseCalls = nullptr;  // where a test counts: the library is gone when it looks

const char* VMGuestLib_GetErrorText(int error) {
#ifdef STUB_NO_ERROR_TEXT
  return error < 0 ? "" : nullptr;
#else
  return error == 0 ? "Success" : "Stub failure";
#endif
}

int VMGuestLib_OpenHandle(void** handle) {
  if (++openCalls <= STUB_OPEN_FAILURES) return 3;
  *handle = &session;
  return 0;
}

int VMGuestLib_CloseHandle(void* handle) {
  if (stubCloseCalls != nullptr && handle == &session) ++*stubCloseCalls;
  return 0;
}

int VMGuestLib_UpdateInfo(void*) {
  ++stubUpdateCalls;
  return STUB_UPDATE_ERROR;
}

int VMGuestLib_GetSessionId(void*, uint64_t* id) {
  *id = STUB_SESSION_ID;
  return STUB_SESSION_ERROR;
}

int VMGuestLib_GetCpuReservationMHz(void* handle, uint32_t* mhz) {
  ++stubGetterCalls;
  return valueOf(handle, mhz, 500, STUB_RESERVATION_ERROR);
}

int VMGuestLib_GetCpuLimitMHz(void* handle, uint32_t* mhz) {
  ++stubGetterCalls;
  return valueOf(handle, mhz, 3000, 0);
}

int VMGuestLib_GetCpuShares(void* handle, uint32_t* shares) {
  ++stubGetterCalls;
  return valueOf(handle, shares, 1000, STUB_SHARES_ERROR);
}

#ifndef STUB_NO_HOST_SPEED
int VMGuestLib_GetHostProcessorSpeed(void* handle, uint32_t* mhz) {
  ++stubGetterCalls;
  return valueOf(handle, mhz, 2000, 0);
}
#endif

}  // extern "C"
