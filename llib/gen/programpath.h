// Where the running program is, so that it finds the files installed with it and can start
// itself again as the service.
#pragma once

#include <string>

// The absolute path of the running program ("" when the system does not say).
std::string LProgramPath();
