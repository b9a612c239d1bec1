// Reads the documents of one source of bytes, one after another, with expat.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "quenlorctl/document/Document.h"
#include "quenlorctl/input/ByteSource.h"

namespace quenlor::ctl {

// What one document may cost.
inline constexpr size_t kMostBytes = size_t{64} << 20;
inline constexpr size_t kMostElements = 1'000'000;
inline constexpr size_t kMostDepth = 8;
inline constexpr size_t kMostText = size_t{1} << 20;

// What is wrong with an input. Without a line the trouble is the file's as a whole.
struct Trouble {
  std::string file;
  Place place;
  std::string text;
};

// Where documents and troubles go.
struct InputSinks {
  // The document, and its bytes where they were asked for, are the callee's until it returns.
  std::function<void(Document&, const std::string& bytes)> document;
  std::function<void(const Trouble&)> trouble;
  bool wantsBytes = false;
  bool wantsForeign = false;  // documents that are no inventories too; else they are troubles
};

// Gives every document of the source to the sinks under the file's name. After a document that is
// damaged or too large it goes on with the next XML declaration; a source that breaks ends there.
void parseDocuments(ByteSource& source, const std::string& file, const InputSinks& sinks);

}  // namespace quenlor::ctl
