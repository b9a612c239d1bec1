// The default gateway as the configuration files of the distributions give it.
#pragma once

namespace quenlor {

// The first gateway found, into out, which holds at least 255 bytes and is cleared by the caller;
// left as it is when there is none. len is the size, for the trace only.
void getDefaultGateway(char* out, int len);

// The address behind the key in a line such as "GATEWAY=192.168.1.1", at most 254 characters: 1
// when the line has one that is not commented out, else 0 and out as it was.
int getGateway(char* out, const char* line, const char* key);

}  // namespace quenlor
