// The processor descriptions of the hardware configuration file, of which a scan wants one or two.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "factory/GroupFactory.h"

namespace quenlor {

// The same document with only those "Processor" elements that have the model in quotes, as the
// decimal number without leading zeros. Any document whose elements cannot be told by looking at
// the text (one with a document type, a section of character data or a reference) stays as it is.
std::string withModelOnly(std::string_view document, int model);

// Reads the file once, at once. Parsing all of it would take half of a scan's time.
class ProcessorDescriptions {
 public:
  explicit ProcessorDescriptions(const std::string& path);

  using Descriptions = std::vector<std::unique_ptr<ProcessorInfo>>;

  // Those that may be of the model, in the file's order; none where the file is missing, malformed
  // or longer than a text file may be. Packages are mostly alike: a model is looked up once.
  const Descriptions& ofModel(int model);

 private:
  Descriptions parse(int model) const;

  std::string m_document;
  std::map<int, Descriptions> m_found;
};

}  // namespace quenlor
