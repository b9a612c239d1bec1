// Identity texts: MD5 digests (RFC 1321) and machine types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace quenlor {

// State of one digest.
struct md5file_context {
  uint32_t chain[4];
  uint32_t bitCount[2];  // low half first
  unsigned char block[64];
};

void md5file_clear(md5file_context* context);  // starts a digest
void md5file_addn(md5file_context* context, const unsigned char* bytes, size_t length);
void md5file_add(md5file_context* context, unsigned char byte);
void md5file_hash(md5file_context* context,
                  unsigned char digest[16]);                        // finishes, wipes the context
void md5file_sprint_hash(md5file_context* context, char text[33]);  // finishes, 32 hex digits

// 32 lower-case hexadecimal digits of the text's digest in a new 36-byte buffer (malloc) that the
// caller frees with free(); null when the text is null or empty or memory is exhausted.
char* md5_checksum(const char* text);
// The same digest as a string; empty for an empty text.
std::string md5Text(const std::string& text);

// HMAC (RFC 2104) of the message with MD5 under the key, as 32 lower-case hexadecimal digits.
std::string hmacMd5Text(const std::string& key, const std::string& message);

// Four-character machine type of a product text, into out (at least 5 bytes, preset to ""): the
// four characters after '[', or the first four of a seven-character product; otherwise out stays.
void getTypeFromProd(const char* product, char* out);

}  // namespace quenlor
