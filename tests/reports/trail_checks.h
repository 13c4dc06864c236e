// What holds for every trail.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "reports/trail/trail_node.h"

namespace corvane::testing {

/// Every inner node is what its children give.
inline void expectRecomputes(const TrailNode& node) {
  EXPECT_EQ(node.value, node.recomputed()) << node.label;
  for (const TrailNode& child : node.children) {
    expectRecomputes(child);
  }
}

/// The first node of the trail that is called `label`, or null.
inline const TrailNode* nodeNamed(const TrailNode& node, const std::string& label) {
  if (node.label == label) {
    return &node;
  }
  for (const TrailNode& child : node.children) {
    if (const TrailNode* found = nodeNamed(child, label)) {
      return found;
    }
  }
  return nullptr;
}

}  // namespace corvane::testing
