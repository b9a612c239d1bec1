// One run of the scanner: options, configuration, and either the scan or the plain listing.
#pragma once

namespace quenlor {

class EntryBuilder;

// Runs the program and returns its exit status. Workers that hang may still run afterwards:
// see hasAbandonedWorkers().
int quenlor(int argc, char* argv[]);
// The same with a given builder of the plain listing.
int quenlor(int argc, char* argv[], EntryBuilder& entryBuilder);

// Start and end of the document, XML or MIF; 0, 4 or 11 as the writers return.
int printHwHeader(bool xmlFlag, const char* outputFileName);
int printHwFooter(bool xmlFlag, const char* outputFileName);

// ASCII capitals to lower case, in place; other bytes stay.
void lowerCase(char*& text);

}  // namespace quenlor
