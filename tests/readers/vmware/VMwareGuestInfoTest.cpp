#include "readers/vmware/VMwareGuestInfo.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <map>

#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"

namespace quenlor::test {
namespace {

constexpr const char* kToolsPath = "/usr/lib/vmware-tools/lib32/libvmGuestLib.so";
constexpr const char* kShortName = "libvmGuestLib.so";
constexpr uint32_t kUntouched = 0xFFFFFFFF;

// Loads stub libraries with the real loader under the names of the real ones.
class LoaderHost : public FakeHost {
 public:
  void install(const char* name, const std::string& stub) {
    m_stubs[name] = QUENLOR_STUB_DIR + stub + ".so";
  }

  void* dlopen(const char* path, int flags) override {
    asked.emplace_back(path);
    lastFlags = flags;
    const auto stub = m_stubs.find(path);
    library = systemHost().dlopen(stub == m_stubs.end() ? "/no/such/library" : stub->second.c_str(),
                                  flags);
    if (library != nullptr) ++loaded;
    return library;
  }
  void* dlsym(void* from, const char* symbol) override {
    symbols.emplace_back(symbol);
    return systemHost().dlsym(from, symbol);
  }
  int dlclose(void* closing) override {
    --loaded;
    return systemHost().dlclose(closing);
  }
  const char* dlerror() override { return systemHost().dlerror(); }

  template <class Value>
  Value& variable(const char* name) {
    return *static_cast<Value*>(systemHost().dlsym(library, name));
  }

  std::vector<std::string> asked;
  std::vector<std::string> symbols;
  int lastFlags = 0;
  int loaded = 0;
  void* library = nullptr;

 private:
  std::map<std::string, std::string> m_stubs;
};

VMwareGuestInfo untouched() { return {kUntouched, kUntouched, kUntouched, kUntouched}; }

void expectUntouched(const VMwareGuestInfo& info) {
  EXPECT_EQ(info.cpuReservation, kUntouched);
  EXPECT_EQ(info.cpuLimit, kUntouched);
  EXPECT_EQ(info.cpuShares, kUntouched);
  EXPECT_EQ(info.hostProcessorSpeed, kUntouched);
}

void expectStubValues(const VMwareGuestInfo& info) {
  EXPECT_EQ(info.cpuReservation, 500u);
  EXPECT_EQ(info.cpuLimit, 3000u);
  EXPECT_EQ(info.cpuShares, 1000u);
  EXPECT_EQ(info.hostProcessorSpeed, 2000u);
}

TEST(VMwareGuestInfo, libraryOfTheToolsIsReadAndClosedAgain) {
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_complete");
  int closed = 0;
  {
    VMwareGuestInfoProvider provider;
    VMwareGuestInfo info = untouched();
    ASSERT_TRUE(provider.retrieveGuestInfo(info));
    expectStubValues(info);
    EXPECT_EQ(host.lastFlags, RTLD_NOW);
    EXPECT_EQ(host.asked, std::vector<std::string>{kToolsPath});
    EXPECT_EQ(host.symbols.size(), 9u);
    host.variable<int*>("stubCloseCalls") = &closed;
  }
  EXPECT_EQ(closed, 1);
  EXPECT_EQ(host.loaded, 0);
}

TEST(VMwareGuestInfo, libraryOfTheSearchPathIsTheSecondChoice) {
  LoaderHost host;
  host.install(kShortName, "stub_guest_complete");
  VMwareGuestInfoProvider provider;
  VMwareGuestInfo info = untouched();
  ASSERT_TRUE(provider.retrieveGuestInfo(info));
  expectStubValues(info);
  EXPECT_EQ(host.asked, (std::vector<std::string>{kToolsPath, kShortName}));
  EXPECT_EQ(host.symbols.size(), 9u);
}

TEST(VMwareGuestInfo, onlyInstalledLibrariesAreNamedByTheirPaths) {
  LoaderHost host;
  EXPECT_EQ(installedGuestLibraries(), std::vector<std::string>{});
  host.directories["/usr/lib64/libguestlib.so.0"] = {};
  host.files["/usr/lib/x86_64-linux-gnu/libguestlib.so.0"] = "a library";
  host.files["/usr/lib/vmware-tools/lib64/libvmGuestLib.so"] = "a library";
  EXPECT_EQ(installedGuestLibraries(),
            (std::vector<std::string>{"/usr/lib/vmware-tools/lib64/libvmGuestLib.so",
                                      "/usr/lib/x86_64-linux-gnu/libguestlib.so.0"}));
}

TEST(VMwareGuestInfo, givenLibrariesAreTriedAloneAndInTheirOrder) {
  LoaderHost host;
  host.install("/b", "stub_guest_complete");
  VMwareGuestInfoProvider provider({"/a", "/b", "/c"});
  VMwareGuestInfo info = untouched();
  ASSERT_TRUE(provider.retrieveGuestInfo(info));
  expectStubValues(info);
  EXPECT_EQ(host.asked, (std::vector<std::string>{"/a", "/b"}));
  LoaderHost bare;
  VMwareGuestInfoProvider without(std::vector<std::string>{});
  EXPECT_FALSE(without.retrieveGuestInfo(info));
  EXPECT_EQ(bare.asked, std::vector<std::string>{});
}

TEST(VMwareGuestInfo, readIsTracedStepByStep) {
  CapturedTraces trace;
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_complete");
  {
    VMwareGuestInfoProvider provider;
    VMwareGuestInfo info = untouched();
    ASSERT_TRUE(provider.retrieveGuestInfo(info));
  }
  // The library's texts end with a newline of their own, before the record's.
  const std::vector<std::string> texts = trace.texts();
  auto next = texts.begin();
  for (const char* text :
       {"MID entry com/VMwareGuestInfo.cpp VMwareGuestInfoProvider_impl() hardware "
        "VMwareGuestInfoProvider_impl()",
        "MID exit com/VMwareGuestInfo.cpp VMwareGuestInfoProvider_impl() hardware "
        "VMwareGuestInfoProvider_impl()",
        "hardware retrieve()",
        "hardware glGetErrorText=",
        "hardware glOpenHandle=",
        "hardware glGetSessionId=",
        "hardware glUpdateInfo=",
        "hardware glGetCpuReservationMHz=",
        "hardware glGetCpuLimitMHz=",
        "hardware glGetCpuShares=",
        "hardware glGetHostProcessorSpeed=",
        "hardware glCloseHandle=",
        "hardware VMGuestLib_OpenHandle = 0x",
        "hardware VMGuestLib_UpdateInfo = 0\n",
        "hardware hostMHz = 2000, error=0\n",
        "hardware cpuReservationMHz = 500, error=0\n",
        "hardware cpuLimitMHz = 3000, error=0\n",
        "hardware cpuShares = 1000, error=0\n",
        "hardware result=1",
        "MID entry com/VMwareGuestInfo.cpp ~VMwareGuestInfoProvider_impl() hardware "
        "~VMwareGuestInfoProvider_impl()",
        "MIN com/VMwareGuestInfo.cpp ~VMwareGuestInfoProvider_impl() hardware "
        "VMGuestLib_CloseHandle()=0, Success\n",
        "MID exit com/VMwareGuestInfo.cpp ~VMwareGuestInfoProvider_impl() hardware "
        "~VMwareGuestInfoProvider_impl()"}) {
    next = std::find_if(next, texts.end(), [&](const std::string& record) {
      return record.find(text) != std::string::npos;
    });
    ASSERT_NE(next, texts.end()) << text;
  }
}

TEST(VMwareGuestInfo, repeatedReadsKeepTheLibraryAndItsHandle) {
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_complete");
  VMwareGuestInfoProvider provider;
  VMwareGuestInfo info;
  ASSERT_TRUE(provider.retrieveGuestInfo(info));
  ASSERT_TRUE(provider.retrieveGuestInfo(info));
  EXPECT_EQ(host.asked.size(), 1u);
  EXPECT_EQ(host.symbols.size(), 9u);
  EXPECT_EQ(host.variable<int>("stubUpdateCalls"), 2);
}

TEST(VMwareGuestInfo, withoutToolsBothLoadsFailWithAMessageEach) {
  CapturedTraces trace;
  LoaderHost host;
  VMwareGuestInfoProvider provider;
  VMwareGuestInfo info = untouched();
  EXPECT_FALSE(provider.retrieveGuestInfo(info));
  expectUntouched(info);
  EXPECT_EQ(trace.countHolding("MIN"), 2);
  EXPECT_EQ(trace.countHolding("hardware Failed to load guest API library, error=/no/such/library"),
            2);
  EXPECT_TRUE(trace.contains("hardware result=0"));
}

TEST(VMwareGuestInfo, oldLibraryWithoutHostSpeedIsUnloadedAgain) {
  CapturedTraces trace;
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_missing_speed");
  {
    VMwareGuestInfoProvider provider;
    VMwareGuestInfo info = untouched();
    EXPECT_FALSE(provider.retrieveGuestInfo(info));
    expectUntouched(info);
    EXPECT_EQ(host.loaded, 0);
    EXPECT_EQ(host.symbols.size(), 9u);
    EXPECT_EQ(trace.countHolding("MIN"), 1);
    EXPECT_TRUE(trace.contains("hardware Failed to resolve all symbols"));
    EXPECT_TRUE(trace.contains("hardware glGetHostProcessorSpeed=00000000"));

    host.install(kToolsPath, "stub_guest_complete");  // updated meanwhile
    EXPECT_TRUE(provider.retrieveGuestInfo(info));
  }
  EXPECT_EQ(host.loaded, 0);
}

TEST(VMwareGuestInfo, sessionIdZeroIsInvalidAfterASuccessfulUpdate) {
  CapturedTraces trace("MIN");
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_session_zero");
  VMwareGuestInfoProvider provider;
  VMwareGuestInfo info = untouched();
  EXPECT_FALSE(provider.retrieveGuestInfo(info));
  expectUntouched(info);
  EXPECT_EQ(host.variable<int>("stubUpdateCalls"), 1);
  EXPECT_EQ(host.variable<int>("stubGetterCalls"), 0);
  EXPECT_TRUE(trace.contains("hardware VMGuestLib_GetSessionId invalid (0)"));
}

TEST(VMwareGuestInfo, failedSessionIdIsFalse) {
  CapturedTraces trace("MIN");
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_session_error");
  VMwareGuestInfoProvider provider;
  VMwareGuestInfo info = untouched();
  EXPECT_FALSE(provider.retrieveGuestInfo(info));
  expectUntouched(info);
  EXPECT_TRUE(trace.contains("hardware VMGuestLib_GetSessionId failed: 5, Stub failure"));
}

TEST(VMwareGuestInfo, failedUpdateIsFalse) {
  CapturedTraces trace("MIN");
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_update_error");
  VMwareGuestInfoProvider provider;
  VMwareGuestInfo info = untouched();
  EXPECT_FALSE(provider.retrieveGuestInfo(info));
  expectUntouched(info);
  EXPECT_TRUE(trace.contains("hardware VMGuestLib_UpdateInfo failed: 3, Stub failure"));
}

TEST(VMwareGuestInfo, failedGetterInTheMiddleLetsTheOthersRun) {
  CapturedTraces trace;
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_failing_getter");
  VMwareGuestInfoProvider provider;
  VMwareGuestInfo info = untouched();
  EXPECT_FALSE(provider.retrieveGuestInfo(info));
  expectUntouched(info);
  EXPECT_EQ(host.variable<int>("stubGetterCalls"), 4);
  EXPECT_TRUE(trace.contains("hardware hostMHz = 2000, error=0"));
  EXPECT_TRUE(trace.contains("hardware cpuLimitMHz = 3000, error=4"));
  EXPECT_EQ(trace.countHolding("MIN"), 1);
  EXPECT_TRUE(
      trace.contains("hardware One or more of get functions failed, error=6, Stub failure"));
}

TEST(VMwareGuestInfo, openThatFailedOnceIsTriedAgainByTheNextRead) {
  CapturedTraces trace("MIN");
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_open_once_failing");
  {
    VMwareGuestInfoProvider provider;
    VMwareGuestInfo info = untouched();
    EXPECT_FALSE(provider.retrieveGuestInfo(info));
    expectUntouched(info);
    EXPECT_TRUE(trace.contains("hardware VMGuestLib_OpenHandle() failed: 3, Stub failure"));
    EXPECT_TRUE(provider.retrieveGuestInfo(info));
    expectStubValues(info);
    EXPECT_EQ(host.asked.size(), 1u);
  }
  EXPECT_TRUE(trace.contains("hardware VMGuestLib_CloseHandle()=0, Success"));
  EXPECT_EQ(host.loaded, 0);
}

TEST(VMwareGuestInfo, handleThatNeverOpenedIsNotClosedAndMissingErrorTextsDoNoHarm) {
  CapturedTraces trace;
  LoaderHost host;
  host.install(kToolsPath, "stub_guest_no_error_text");
  {
    VMwareGuestInfoProvider provider;
    VMwareGuestInfo info = untouched();
    EXPECT_FALSE(provider.retrieveGuestInfo(info));
  }
  EXPECT_FALSE(trace.contains("VMGuestLib_CloseHandle()"));
  EXPECT_EQ(host.loaded, 0);
}

TEST(VMwareGuestInfo, providerThatNeverReadsLoadsNothing) {
  LoaderHost host;
  { VMwareGuestInfoProvider provider; }
  EXPECT_TRUE(host.asked.empty());
}

}  // namespace
}  // namespace quenlor::test
