#include "readers/vmware/VMwareGuestInfo.h"

#include "readers/vmware/VMwareGuestInfoProvider_impl.h"

namespace quenlor {

VMwareGuestInfoProvider::VMwareGuestInfoProvider()
    : m_impl(std::make_unique<VMwareGuestInfoProvider_impl>()) {}

VMwareGuestInfoProvider::~VMwareGuestInfoProvider() = default;

bool VMwareGuestInfoProvider::retrieveGuestInfo(VMwareGuestInfo& info) {
  return m_impl != nullptr && m_impl->retrieve(info);
}

}  // namespace quenlor
