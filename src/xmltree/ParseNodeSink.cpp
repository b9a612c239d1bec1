#include "xmltree/ParseNodeSink.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace quenlor {
namespace {

constexpr char kHardwareElement[] = "Hardware";

// Moves the outermost "Hardware" elements below the node to another one. Takes the tree to pieces
// instead of detaching one element after the other, which a million siblings would make quadratic.
void moveHardware(Node& from, Node& to) {
  std::vector<std::unique_ptr<Node>> rest;  // in document order from its end
  const auto pushChildren = [&rest](Node& node) {
    auto children = node.takeChildren();
    std::move(children.rbegin(), children.rend(), std::back_inserter(rest));
  };
  pushChildren(from);
  while (!rest.empty()) {
    std::unique_ptr<Node> node = std::move(rest.back());
    rest.pop_back();
    if (node->name() == kHardwareElement) {
      to.addChild(std::move(node));
    } else {
      pushChildren(*node);
    }
  }
}

}  // namespace

int ParseNodeSink::onNodeTree(Node* node) {
  m_root = node;
  return 0;
}

int ParseNodeSink::onWarning(const String&, int) { return 0; }

int ParseNodeSink::onError(const String&, int) { return kStop; }

int ParseNodeSink::onCriticalError(const String&, int) { return kStop; }

Node* ParseNodeSink::getNode(int tagType) {
  if (tagType != kHardwareTag || m_root == nullptr) return nullptr;
  Node* root = std::exchange(m_root, nullptr);
  if (root->name() == kHardwareElement) return handOver(root);

  auto section = std::make_unique<Node>(kHardwareElement);
  moveHardware(*root, *section);
  if (section->children().empty()) return nullptr;
  if (section->children().size() == 1) return section->takeChildren().front().release();
  return section.release();
}

}  // namespace quenlor
