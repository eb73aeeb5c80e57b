// kontavo: the command line and the service of Kontavo. What it prints is UTF-8, record text of
// older programs in Latin-1 or Windows-1252 included (llib/gen/utf8stream.h).
#include <iostream>

#include "app/cli.h"
#include "llib/gen/utf8stream.h"

int main(int argc, char** argv) {
  LUtf8OutBuf outBuffer(std::cout.rdbuf()), errBuffer(std::cerr.rdbuf());
  std::ostream out(&outBuffer), err(&errBuffer);
  return LCliMain(argc, argv, out, err);
}
