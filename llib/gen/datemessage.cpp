#include "llib/gen/datemessage.h"

std::string LInvalidDateMessage(std::string_view typed) {
  std::string message = "Date invalide : ";
  message.append(typed);
  message.append(".");
  return message;
}
