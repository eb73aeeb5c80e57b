// Text building blocks shared by every module: the growable text and byte array types that
// records and tables hold, and the fixed 260-byte buffers in which keys, paths and short field
// values travel. A fixed buffer holds at most 259 bytes and a terminating NUL; longer text is
// cut silently, always through LCopyTruncated, never by hand.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Growable text (buffer, length, capacity).
template <class C>
using LStringLongTemplate = std::basic_string<C>;
using LStringLongKey = std::string;

// Owned byte array (buffer, size).
template <class T>
using LSizedArray = std::vector<T>;

inline constexpr std::size_t kTextBufferSize = 260;  // bytes of a fixed text buffer, NUL included
inline constexpr std::size_t kMaxTextBytes = kTextBufferSize - 1;  // 259: longest key, path or short value
inline constexpr std::size_t kMaxFieldNameBytes = 63;              // longest record field name

using LTextBuffer = char[kTextBufferSize];

// Copies at most outSize - 1 bytes of text into out and terminates it. Returns the number of
// bytes copied. outSize 0 writes nothing.
std::size_t LCopyTruncated(char* out, std::size_t outSize, std::string_view text);

template <std::size_t N>
std::size_t LCopyTruncated(char (&out)[N], std::string_view text) {
  return LCopyTruncated(out, N, text);
}

// The first maxBytes bytes of text (all of it when shorter).
inline std::string_view LTruncated(std::string_view text, std::size_t maxBytes) {
  return text.substr(0, maxBytes);
}
