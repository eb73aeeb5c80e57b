// A French business with the default chart of accounts, the primary business of a benchmark's own
// application folder, with the application's hooks installed (the sales side posts through them).
#pragma once

#include <stdlib.h>

#include <memory>
#include <string>

#include "accounts/accounts.h"
#include "app/appinstall.h"
#include "bench/benchfolder.h"
#include "invoice/shared/profile.h"

struct LBenchBusiness {
  // name tells the folders of different programs apart (LBenchFolder).
  explicit LBenchBusiness(const std::string& name) : home(name) {
    ::setenv("KONTAVO_COUNTRY", "FR", 1);
    LAppInstall();
    profile = std::make_unique<LProfile>(home.Business());
    LBenchRequire(LAccountListCreateDefault(*profile), "LAccountListCreateDefault");
  }

  LBenchHome home;                    // the application folder, removed at the end
  std::unique_ptr<LProfile> profile;  // its business "Shared"
};
