// Wires the program together: the machine's real collectors, one run, a safe end.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "factory/GroupFactory.h"
#include "groups/createGroup.h"
#include "host/ProcessStart.h"
#include "host/ScanState.h"
#include "scan/quenlor.h"
#include "supervise/outlive.h"

namespace {

// A document on a full or closed standard output is lost without a status of its own; say so at
// least.
void reportLostOutput() {
  const quenlor::ReadersTurn turn(true);
  const bool failed = std::fflush(stdout) != 0;
  if (failed || std::ferror(stdout) != 0) {
    std::fprintf(stderr, "quenlor: standard output cannot be written: %s\n", std::strerror(errno));
  }
}

}  // namespace

int main(int argc, char* argv[]) {
  quenlor::prepareProcess();
  return quenlor::outlive([argc, argv] {
    quenlor::GroupFactory& factory = quenlor::GroupFactory::getInstance();
    factory.setCreator(quenlor::createGroup);
    factory.setModernCreator(quenlor::modernGroups);
    const int status = quenlor::quenlor(argc, argv);
    reportLostOutput();
    return status;
  });
}
