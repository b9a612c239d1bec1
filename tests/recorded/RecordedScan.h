// A whole scan of a recorded machine: the program's own driver, collectors and writers, on a
// RecordedHost.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/RecordedHost.h"

namespace quenlor::test {

enum class Document { kXml, kMif, kList };

// What one run of the program came to. The build's date in the document is "@BUILD@".
struct ScanOutput {
  int status = -1;
  std::string document;
  std::string errors;  // what it said on standard error
};

// Runs the program with modern sources and without a choice of groups on what is host() now; more
// lines of quenlor.conf may be given. Local times are those of TZ in the machine's environment,
// else UTC. Not from several threads at once.
ScanOutput scanHost(Document kind, const std::string& configuration = {});

// The lines of xmllint that tell why an XML document is not what the generated schema allows; empty
// when it is.
std::string schemaErrors(const std::string& document);

}  // namespace quenlor::test
