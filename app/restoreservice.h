// How a restore reaches a running service: while the data root is replaced, the web server of
// a running "kontavo serve" must not serve the old files, so it is switched off for the duration
// and the service started again after. The service engine registers its switch here; until one
// is registered a restore proceeds with nothing to switch off.
#pragma once

#include "llib/gen/backup.h"

// Registers the service's switch (null: none). The object must outlive every restore.
void LSetRestoreServiceSwitch(LRestoreServiceSwitch* service);
// The registered switch, or null.
LRestoreServiceSwitch* LGetRestoreServiceSwitch();
