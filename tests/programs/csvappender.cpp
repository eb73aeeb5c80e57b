// Test helper: appends rows to one CSV file with LCSVWriteRow, as an export running in another
// process would. Each row is (tag, index, payload, tag:index) with a payload derived from both,
// so a reader can tell a row torn by another writer from an intact one.
//     csvappender PATH TAG ROWS PAYLOAD_BYTES
// Exit status 0 when every row was written, 1 when one was not, 2 on wrong usage.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "llib/gen/csv.h"

// The payload of one row; the test computes the same text to check it.
static std::string Payload(const std::string& tag, int index, std::size_t nBytes) {
  std::string unit = tag + "-" + std::to_string(index) + ";";
  std::string payload;
  while (payload.size() < nBytes) payload.append(unit);
  payload.resize(nBytes);
  return payload;
}

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: csvappender PATH TAG ROWS PAYLOAD_BYTES\n");
    return 2;
  }
  std::string path = argv[1], tag = argv[2];
  int nRows = std::atoi(argv[3]);
  std::size_t payloadBytes = static_cast<std::size_t>(std::atol(argv[4]));
  for (int index = 0; index < nRows; ++index) {
    std::string payload = Payload(tag, index, payloadBytes);
    std::string indexText = std::to_string(index);
    std::string check = tag + ":" + indexText;
    if (!LCSVWriteRow(path, {tag, indexText, payload, check})) return 1;
  }
  return 0;
}
