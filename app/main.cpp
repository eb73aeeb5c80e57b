// kontavo: the command line and the service of Kontavo.
#include <iostream>

#include "app/cli.h"

int main(int argc, char** argv) { return LCliMain(argc, argv, std::cout, std::cerr); }
