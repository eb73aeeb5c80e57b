#include "app/restoreservice.h"

namespace {

LRestoreServiceSwitch* gService = nullptr;  // the running service's switch, once registered

}  // namespace

void LSetRestoreServiceSwitch(LRestoreServiceSwitch* service) { gService = service; }

LRestoreServiceSwitch* LGetRestoreServiceSwitch() { return gService; }
