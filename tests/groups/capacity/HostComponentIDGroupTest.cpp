#include "groups/capacity/HostComponentIDGroup.h"

#include <gtest/gtest.h>

#include "tests/readers/virtualization/VmwareGuest.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor::test {
namespace {

class HostComponentIDGroupTest : public testing::Test {
 protected:
  void publish(const std::string& maker, const std::string& product, const std::string& type) {
    becomeVmwareGuest(m_host);
    setAgentValue(m_host, "dov_node_man", maker);
    setAgentValue(m_host, "dov_node_prod", product);
    setAgentValue(m_host, "dov_node_ver", "1.0");
    setAgentValue(m_host, "dov_node_id", "KQXYZ12");
    setAgentValue(m_host, "dov_node_type", type);
  }
  std::string type() {
    const auto rows = collect<HostComponentIDGroup>();
    return rows.size() == 1 ? valueOf(rows[0], 7) : "(no row)";
  }

  FakeHost m_host;
};

TEST_F(HostComponentIDGroupTest, realMachineHasNoTable) {
  HostComponentIDGroup group;
  EXPECT_EQ(group.getTable(), nullptr);
  EXPECT_TRUE(m_host.started.empty());
}

TEST_F(HostComponentIDGroupTest, guestReportsItsHost) {
  CapturedTraces trace;
  publish("Maker", "Server 9", "8670");
  EXPECT_EQ(collect<HostComponentIDGroup>(),
            (std::vector<RowValues>{
                {{1, "Maker"}, {2, "Server 9"}, {3, "1.0"}, {4, "KQXYZ12"}, {7, "8670"}}}));
  EXPECT_EQ(m_host.openCommands(), 0);
  for (const char* text : {"HOST Manufact=Maker", "HOST Product=Server 9", "HOST Version=1.0",
                           "HOST Type=8670", "HOST SerialNum=KQXYZ12", "Type = 8670"}) {
    EXPECT_TRUE(trace.contains(std::string("hardware ") + text)) << text;
  }
  EXPECT_FALSE(trace.contains("ZUM Type"));
}

TEST_F(HostComponentIDGroupTest, guestWithoutAnAgentHasOneRowOfEmptyTexts) {
  becomeVmwareGuest(m_host);
  EXPECT_EQ(collect<HostComponentIDGroup>(),
            (std::vector<RowValues>{{{1, ""}, {2, ""}, {3, ""}, {4, ""}, {7, ""}}}));
}

TEST_F(HostComponentIDGroupTest, makerWithTypesInItsProductsReplacesTheType) {
  CapturedTraces trace;
  publish("ZUM", "System x3650 -[7979AC1]-", "other");
  EXPECT_EQ(type(), "7979");
  EXPECT_TRUE(trace.contains("hardware ZUM Type = 7979"));
}

TEST_F(HostComponentIDGroupTest, productWithoutATypeGivesAnEmptyOneForThatMaker) {
  publish("ZUM", "System", "other");
  EXPECT_EQ(type(), "");
  publish("ZUM", "8670A1X", "other");
  EXPECT_EQ(type(), "8670");
  publish("ZUM", "None", "other");
  EXPECT_EQ(type(), "");
}

TEST_F(HostComponentIDGroupTest, makerMustBeExactlyThatText) {
  for (const char* maker : {"ZUM Corp", "zum", "ZU", " ZUM"}) {
    publish(maker, "System x3650 -[7979AC1]-", "agent's");
    EXPECT_EQ(type(), "agent's") << maker;
  }
}

TEST_F(HostComponentIDGroupTest, noneIsEmptyForProductVersionAndType) {
  publish("None", "None", "None");
  setAgentValue(m_host, "dov_node_ver", "None");
  EXPECT_EQ(collect<HostComponentIDGroup>(),
            (std::vector<RowValues>{{{1, "None"}, {2, ""}, {3, ""}, {4, "KQXYZ12"}, {7, ""}}}));
}

TEST_F(HostComponentIDGroupTest, tableIsGroup45Version1) {
  becomeVmwareGuest(m_host);
  HostComponentIDGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->getGroupId(), 45u);
  EXPECT_EQ(table->getGroupVersion(), 1u);
}

}  // namespace
}  // namespace quenlor::test
