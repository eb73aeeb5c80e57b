#include "app/startwizardhooks.h"

namespace {

LStartWizardHooks& Registered() {
  static LStartWizardHooks hooks;
  return hooks;
}

}  // namespace

void LStartWizardSetHooks(const LStartWizardHooks& hooks) { Registered() = hooks; }

const LStartWizardHooks& LStartWizardGetHooks() { return Registered(); }
