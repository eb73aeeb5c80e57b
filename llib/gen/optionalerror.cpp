#include "llib/gen/optionalerror.h"

void LSetError(std::string* error, std::string_view message) {
  if (error != nullptr) error->assign(message);
}

bool LFail(std::string* error, std::string_view message) {
  LSetError(error, message);
  return false;
}
