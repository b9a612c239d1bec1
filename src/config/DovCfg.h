// The program's own configuration: lines "key = value" of quenlor.conf.
#pragma once

#include "base/String.h"

namespace quenlor {

class DovCfg {
 public:
  // Results of getError(); none of them is an exit status of the scanner itself.
  static constexpr int kSuccess = 0;
  static constexpr int kUnreadable = 20;  // quenlor.conf exists but cannot be read
  static constexpr int kMalformed = 21;   // a line of quenlor.conf is not "key = value"

  // Finds and reads quenlor.conf: in the program's directory, in ../etc/quenlor from there, in
  // /etc/quenlor; the first that exists. None is no error. An error writes one line to standard
  // error.
  static void initialize(const char* programPath);

  // Error of the last initialize().
  static int getError();

  // Value of a key; the empty text where the file does not set it. "config_dir", when not set or
  // empty, is "../share/quenlor" from the program's directory where that exists, else that
  // directory.
  static String getKey(const String& key);
};

}  // namespace quenlor
