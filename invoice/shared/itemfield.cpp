#include "invoice/shared/itemfield.h"

std::string LItemField(int line, std::string_view name) {
  std::string field = "Item" + std::to_string(line);
  field.append(name);
  return field;
}
