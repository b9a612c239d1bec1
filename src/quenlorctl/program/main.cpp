// quenlorctl: reads, checks and compares inventory documents.
#include "quenlorctl/program/Run.h"

int main(int argc, char* argv[]) { return quenlor::ctl::runProgram(argc, argv); }
