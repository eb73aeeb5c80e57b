#include "llib/gen/randomtext.h"

#include <sys/random.h>

#include <cerrno>
#include <random>

#include "llib/gen/hextext.h"

namespace {

// Fills buffer from getrandom; falls back on std::random_device when the call is refused (old
// kernels or seccomp filters), which is seeded once per call of the generator.
void FillRandom(unsigned char* buffer, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    ssize_t n = ::getrandom(buffer + done, size - done, 0);
    if (n > 0) {
      done += static_cast<std::size_t>(n);
    } else if (n < 0 && errno != EINTR) {
      std::random_device device;
      for (; done < size; ++done) buffer[done] = static_cast<unsigned char>(device());
    }
  }
}

}  // namespace

std::string LStringGenerateRandomPassword(std::size_t length) {
  std::string letters(length, 'a');
  std::basic_string<unsigned char> random(length, 0);
  FillRandom(random.data(), length);
  for (std::size_t i = 0; i < length; ++i) letters[i] = static_cast<char>('a' + random[i] % 26);
  return letters;
}

std::string LRandomHexText(std::size_t nBytes) {
  std::string random(nBytes, '\0');
  FillRandom(reinterpret_cast<unsigned char*>(random.data()), nBytes);
  return LHexText(random);
}
