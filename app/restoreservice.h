// How a restore reaches a running service: while the data root is replaced, the web server of
// a running "kontavo serve" must not serve the old files, so it is switched off for the duration
// and started again after. The restore runs in another process than the service, so the switch
// goes through the service's control socket; with no service running a restore proceeds with
// nothing to switch off.
#pragma once

#include "llib/gen/backup.h"

// The switch of the service running on this application folder, if any.
LRestoreServiceSwitch* LGetRestoreServiceSwitch();
