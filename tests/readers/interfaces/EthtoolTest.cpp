#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/ethtool.h>
#include <linux/ethtool_netlink.h>
#include <linux/genetlink.h>
#include <linux/sockios.h>
#include <net/if.h>

#include <cstring>
#include <string>

#include "readers/interfaces/EthtoolCalls.h"
#include "readers/interfaces/EthtoolMessages.h"
#include "tests/support/FakeHost.h"
#include "tests/support/NetlinkBytes.h"

namespace quenlor {
namespace {

using test::attribute;
using test::numberAttribute;
using test::textAttribute;

constexpr uint16_t kFamily = 20;

genlmsghdr header(uint8_t command) { return {command, 1, 0}; }

NetlinkMessage message(uint16_t type, const std::string& payload) {
  return {type, NLM_F_MULTI, payload};
}

std::string settings(uint8_t command, uint32_t index, const std::string& attributes) {
  return test::bytesOf(header(command)) +
         attribute(ETHTOOL_A_LINKINFO_HEADER | NLA_F_NESTED,
                   numberAttribute(ETHTOOL_A_HEADER_DEV_INDEX, index) +
                       textAttribute(ETHTOOL_A_HEADER_DEV_NAME, "eth0")) +
         attributes;
}

std::string family(const std::string& name) {
  return test::bytesOf(header(CTRL_CMD_NEWFAMILY)) + textAttribute(CTRL_ATTR_FAMILY_NAME, name) +
         numberAttribute(CTRL_ATTR_FAMILY_ID, kFamily);
}

TEST(EthtoolMessagesTest, familyIsFoundByItsName) {
  EXPECT_EQ(parseEthtoolFamily(message(GENL_ID_CTRL, family("ethtool"))), kFamily);
  EXPECT_EQ(parseEthtoolFamily(message(GENL_ID_CTRL, family("nl80211"))), std::nullopt);
  EXPECT_EQ(parseEthtoolFamily(message(GENL_ID_CTRL, family("ethtool2"))), std::nullopt);
  EXPECT_EQ(parseEthtoolFamily(message(kFamily, family("ethtool"))), std::nullopt);
  EXPECT_EQ(parseEthtoolFamily(message(GENL_ID_CTRL, "ab")), std::nullopt);
}

TEST(EthtoolMessagesTest, noFamilyIsAskedForByName) {
  // The kernel would try to load a module of a name that it does not know.
  EXPECT_EQ(familyDumpRequest().find("ethtool"), std::string::npos);
}

TEST(EthtoolMessagesTest, speedAndDuplexOfALink) {
  const std::string payload =
      settings(ETHTOOL_MSG_LINKMODES_GET_REPLY, 4,
               numberAttribute(ETHTOOL_A_LINKMODES_SPEED, uint32_t{25000}) +
                   numberAttribute(ETHTOOL_A_LINKMODES_DUPLEX, uint8_t{DUPLEX_FULL}));
  const auto found = parseLinkSettings(message(kFamily, payload));
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->interface, 4u);
  EXPECT_EQ(found->speed, 25000u);
  EXPECT_EQ(found->duplex, "full");
  EXPECT_EQ(found->connector, "");
}

TEST(EthtoolMessagesTest, connectorOfALink) {
  const std::string payload =
      settings(ETHTOOL_MSG_LINKINFO_GET_REPLY, 4,
               numberAttribute(ETHTOOL_A_LINKINFO_PORT, uint8_t{PORT_FIBRE}));
  const auto found = parseLinkSettings(message(kFamily, payload));
  EXPECT_EQ(found->connector, "Fibre");
  EXPECT_EQ(found->speed, std::nullopt);
}

TEST(EthtoolMessagesTest, unknownSpeedIsNone) {
  EXPECT_EQ(plausibleSpeed(0), std::nullopt);
  EXPECT_EQ(plausibleSpeed(1), 1u);
  EXPECT_EQ(plausibleSpeed(0x7FFFFFFF), 0x7FFFFFFFu);
  EXPECT_EQ(plausibleSpeed(0x80000000), std::nullopt);
  EXPECT_EQ(plausibleSpeed(0xFFFFFFFF), std::nullopt);
}

TEST(EthtoolMessagesTest, wordsOfNumbers) {
  EXPECT_EQ(duplexWord(DUPLEX_HALF), "half");
  EXPECT_EQ(duplexWord(DUPLEX_UNKNOWN), "");
  EXPECT_EQ(connectorWord(PORT_TP), "Twisted Pair");
  EXPECT_EQ(connectorWord(PORT_DA), "Direct Attach Copper");
  EXPECT_EQ(connectorWord(PORT_NONE), "");
  EXPECT_EQ(connectorWord(PORT_OTHER), "");
  EXPECT_EQ(connectorWord(77), "");
}

TEST(EthtoolMessagesTest, messageWithoutInterfaceTellsNothing) {
  EXPECT_FALSE(parseLinkSettings(message(kFamily, "")).has_value());
  EXPECT_FALSE(
      parseLinkSettings(message(kFamily, test::bytesOf(header(ETHTOOL_MSG_LINKINFO_GET_REPLY))))
          .has_value());
}

TEST(EthtoolMessagesTest, everyCutIsReadWithinItsBounds) {
  const std::string whole = settings(ETHTOOL_MSG_LINKMODES_GET_REPLY, 4,
                                     numberAttribute(ETHTOOL_A_LINKMODES_SPEED, uint32_t{1000}));
  for (size_t size = 0; size < whole.size(); ++size) {
    const std::string cut(whole.data(), size);
    const auto found = parseLinkSettings(message(kFamily, cut));
    if (found) {
      EXPECT_EQ(found->interface, 4u) << size;
    }
  }
}

class EthtoolCallsTest : public ::testing::Test {
 protected:
  ~EthtoolCallsTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  // `fill` gets what the caller's pointer leads to.
  template <class Request>
  void answer(uint32_t command, std::function<void(Request&)> fill) {
    machine.socketDevice.ioctl = [this, command, fill](unsigned long request, void* argument) {
      EXPECT_EQ(request, static_cast<unsigned long>(SIOCETHTOOL));
      auto* frame = static_cast<ifreq*>(argument);
      names.emplace_back(frame->ifr_name);
      uint32_t asked = 0;
      std::memcpy(&asked, frame->ifr_data, sizeof asked);
      if (asked != command) {
        errno = EOPNOTSUPP;
        return -1;
      }
      fill(*reinterpret_cast<Request*>(frame->ifr_data));
      return 0;
    };
  }

  void answerFirmware(const std::string& version) {
    answer<ethtool_drvinfo>(ETHTOOL_GDRVINFO, [version](ethtool_drvinfo& info) {
      version.copy(info.fw_version, sizeof info.fw_version);
    });
  }

  test::FakeHost machine;
  std::vector<std::string> names;
};

TEST_F(EthtoolCallsTest, firmwareIsTheDriversText) {
  answerFirmware("0x80000528, 1.1681.0 ");
  EXPECT_EQ(EthtoolCalls().firmware("eth0"), "0x80000528, 1.1681.0");
  EXPECT_THAT(names, ::testing::ElementsAre("eth0"));
}

TEST_F(EthtoolCallsTest, firmwareMayFillItsWholeField) {
  answerFirmware(std::string(32, 'f'));
  EXPECT_EQ(EthtoolCalls().firmware("eth0"), std::string(32, 'f'));
}

TEST_F(EthtoolCallsTest, whatStandsForNoFirmwareIsNone) {
  for (const char* text : {"", " ", "N/A", "n/a", "none", "Unknown"}) {
    answerFirmware(text);
    EXPECT_EQ(EthtoolCalls().firmware("eth0"), "") << text;
  }
}

TEST_F(EthtoolCallsTest, permanentAddressOfTheLengthThatTheDriverSays) {
  const auto answerAddress = [this](uint32_t size, char byte) {
    answer<ethtool_perm_addr>(ETHTOOL_GPERMADDR, [=](ethtool_perm_addr& address) {
      EXPECT_EQ(address.size, 32u);
      std::memset(reinterpret_cast<char*>(&address) + sizeof address, byte, 32);
      address.size = size;
    });
  };
  answerAddress(6, '\x02');
  EXPECT_EQ(EthtoolCalls().permanentAddress("eth0"), std::string(6, '\x02'));
  answerAddress(20, '\x02');
  EXPECT_EQ(EthtoolCalls().permanentAddress("ib0"), std::string(20, '\x02'));
  answerAddress(6, '\0');
  EXPECT_EQ(EthtoolCalls().permanentAddress("eth0"), "");
  answerAddress(33, '\x02');
  EXPECT_EQ(EthtoolCalls().permanentAddress("eth0"), "");
}

TEST_F(EthtoolCallsTest, connectorOfOldKernels) {
  answer<ethtool_cmd>(ETHTOOL_GSET, [](ethtool_cmd& settings) { settings.port = PORT_TP; });
  EXPECT_EQ(EthtoolCalls().connector("eth0"), "Twisted Pair");
}

TEST_F(EthtoolCallsTest, refusedCallTellsNothing) {
  const EthtoolCalls calls;
  EXPECT_EQ(calls.firmware("eth0"), "");
  EXPECT_EQ(calls.permanentAddress("eth0"), "");
  EXPECT_EQ(calls.connector("eth0"), "");
}

TEST_F(EthtoolCallsTest, nameThatTheFieldCannotHoldIsNotAskedFor) {
  answerFirmware("1.0");
  EXPECT_EQ(EthtoolCalls().firmware(std::string(16, 'e')), "");
  EXPECT_THAT(names, ::testing::IsEmpty());
  EXPECT_EQ(EthtoolCalls().firmware(std::string(15, 'e')), "1.0");
}

TEST_F(EthtoolCallsTest, withoutASocketNothingIsTold) {
  machine.socketsFail = true;
  EXPECT_EQ(EthtoolCalls().firmware("eth0"), "");
}

}  // namespace
}  // namespace quenlor
