#include "xmltree/Node.h"

#include <gtest/gtest.h>

namespace quenlor {
namespace {

TEST(Node, holdsAttributesByExactName) {
  Node node("Group");
  node.setAttribute("Name", "Memory");
  EXPECT_EQ(node.name(), "Group");
  EXPECT_EQ(node.attribute("Name"), "Memory");
  EXPECT_EQ(node.attribute("name"), "");
}

TEST(Node, childrenKnowTheirParentAndKeepTheirOrder) {
  Node root("r");
  Node* first = root.addChild(std::make_unique<Node>("a"));
  Node* second = root.addChild(std::make_unique<Node>("b"));
  EXPECT_EQ(first->parent(), &root);
  EXPECT_EQ(root.children()[1].get(), second);
  EXPECT_EQ(root.parent(), nullptr);
}

TEST(Node, detachedSubtreeLivesOnWithoutItsTree) {
  auto root = std::make_unique<Node>("r");
  Node* middle = root->addChild(std::make_unique<Node>("m"));
  Node* leaf = middle->addChild(std::make_unique<Node>("l"));
  const std::unique_ptr<Node> taken = middle->detach();
  EXPECT_TRUE(root->children().empty());
  root.reset();
  EXPECT_EQ(taken.get(), middle);
  EXPECT_EQ(taken->parent(), nullptr);
  EXPECT_TRUE(leaf->isWithin(*taken));
}

TEST(Node, aRootCannotBeDetached) {
  Node root("r");
  EXPECT_EQ(root.detach(), nullptr);
}

TEST(Node, isWithinItselfAndItsAncestorsOnly) {
  Node root("r");
  Node* a = root.addChild(std::make_unique<Node>("a"));
  Node* b = root.addChild(std::make_unique<Node>("b"));
  Node* below = a->addChild(std::make_unique<Node>("c"));
  EXPECT_TRUE(below->isWithin(*below));
  EXPECT_TRUE(below->isWithin(root));
  EXPECT_FALSE(below->isWithin(*b));
  EXPECT_FALSE(root.isWithin(*a));
}

TEST(Node, takenChildrenHaveNoParent) {
  Node root("r");
  root.addChild(std::make_unique<Node>("a"));
  const auto children = root.takeChildren();
  ASSERT_EQ(children.size(), 1u);
  EXPECT_EQ(children[0]->parent(), nullptr);
  EXPECT_TRUE(root.children().empty());
}

}  // namespace
}  // namespace quenlor
