// A whole scan of a recorded machine: the program's own driver, collectors and writers, on a
// RecordedHost.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

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

// The lines of xmllint that tell why XML documents are not what the generated schema allows; empty
// when all of them are.
std::string schemaErrors(const std::vector<std::string>& documents);

// One row of a group in an XML document: the texts of its elements, by name.
struct DocumentRow {
  std::string group;  // the element's name, "ScanResult"
  std::map<std::string, std::string> values;

  bool operator==(const DocumentRow& other) const = default;
};
// For a person who reads what a test found.
std::ostream& operator<<(std::ostream& stream, const DocumentRow& row);
// All rows in their order. Only of documents as the XML writer makes them.
std::vector<DocumentRow> rowsOfDocument(const std::string& xml);

}  // namespace quenlor::test
