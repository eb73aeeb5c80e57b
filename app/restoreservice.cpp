#include "app/restoreservice.h"

#include "llib/gen/serviceengine.h"

namespace {

class LServiceControlSwitch : public LRestoreServiceSwitch {
 public:
  // false when no service answers: there is then nothing to start again.
  bool SwitchOff() override { return LServiceEngineSendControl(kServiceControlWebOff); }
  void SwitchOn() override { LServiceEngineSendControl(kServiceControlRestart); }
};

}  // namespace

LRestoreServiceSwitch* LGetRestoreServiceSwitch() {
  static LServiceControlSwitch service;
  return &service;
}
