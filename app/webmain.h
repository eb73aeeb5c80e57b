// The main page of the web access (routes "" and "main"): the open business's name, what its
// customers owe and what it owes its suppliers, and where the user can go from here.
#pragma once

#include "app/webaccess.h"

class LWebPageMain : public LWebPageEx {
 public:
  explicit LWebPageMain(LWebletForm& form);
  void Generate() override;
};
