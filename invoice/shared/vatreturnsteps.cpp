#include "invoice/shared/vatreturnsteps.h"

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/log.h"
#include "llib/gen/usersettings.h"
#include "llib/net/http.h"

bool FKVatConfigure(LProfile& profile, const std::optional<std::string>& vrn, const std::optional<std::string>& api,
                    std::string& error) {
  std::string address = api.value_or("");
  if (address == "sandbox") address = kMTDSandboxApi;
  if (address == "production") address = kMTDProductionApi;
  std::string host, target;
  int port = 0;
  if (api && !LHttpSplitUrl(address, host, port, target)) {
    error = "Adresse non valide : " + *api;
    return false;
  }
  if (vrn) {
    LOptions options;
    options.OpenFrom(profile);
    options.SetString(kVATRegistrationField, *vrn);
    if (!options.Flush()) {
      error = "Le numéro de TVA n'a pas pu être enregistré.";
      return false;
    }
  }
  if (api && !LUserSettingSetString(kMTDSettingsGroup, "ApiBaseURL", address)) {
    error = kVatSettingNotStored;
    return false;
  }
  return true;
}

std::string FKVatRegistrationNumber(LProfile& profile) {
  LOptions options;
  options.OpenFrom(profile);
  return options.GetString(kVATRegistrationField);
}

bool FKMTDforVATAuthorized() {
  std::string token;
  return LUserSettingGetPassword(kMTDPasswordSection, "AccessToken", token) && !token.empty();
}

std::vector<std::unique_ptr<LVATObligation>> FKVatObligationsWithStatus(LProfile& profile, bool fulfilled) {
  std::vector<std::unique_ptr<LVATObligation>> chosen;
  for (auto& obligation : LVATObligationsLoad(profile))
    if (obligation->IsFulfilled() == fulfilled) chosen.push_back(std::move(obligation));
  return chosen;
}

bool FKVatChoosePeriod(LProfile& profile, std::string_view periodKey, bool fulfilled, std::string& refusal) {
  if (periodKey.empty()) {
    refusal = "Empty period key";
    return false;
  }
  std::vector<std::unique_ptr<LVATObligation>> offered = FKVatObligationsWithStatus(profile, fulfilled);
  for (const auto& obligation : offered)
    if (obligation->GetPeriodKey() == periodKey) return true;
  refusal = offered.empty() ? (fulfilled ? "No fulfilled obligations found" : "No open obligations found")
                            : (fulfilled ? "Aucune obligation remplie pour la période "
                                         : "Aucune obligation ouverte pour la période ") +
                                  std::string(periodKey);
  return false;
}

namespace {

FKVatReturns ReturnOf(LProfile& profile, std::string_view periodKey, const FKVatGivenFigures& given,
                      FKVatRunningFigures& used) {
  FKVatReturns vatReturn;
  FKVatReturnFromFigures(given, FKVatRunningFiguresLoad(profile), vatReturn, used);
  vatReturn.periodKey = periodKey;
  return vatReturn;
}

}  // namespace

FKVatReturns FKVatReturnToSubmit(LProfile& profile, std::string_view periodKey, const FKVatGivenFigures& given) {
  FKVatRunningFigures used;
  return ReturnOf(profile, periodKey, given, used);
}

bool FKVatSubmitReturn(LProfile& profile, LProcessInterface& process, std::string_view periodKey,
                       const FKVatGivenFigures& given, FKVatAlert& alert, std::string* receipt) {
  std::string refusal;
  if (!FKVatChoosePeriod(profile, periodKey, false, refusal)) {
    alert = {refusal, ""};
    return false;
  }
  FKVatRunningFigures used;
  FKVatReturns vatReturn = ReturnOf(profile, periodKey, given, used);
  FKMTDforVATDlg dialog(profile, process);
  bool submitted = dialog.SubmitVatReturns(vatReturn, receipt);
  alert = dialog.Alert();
  if (!submitted) return false;
  // The return stands once accepted: figures left in would be declared again next time, so the
  // user is told beside HMRC's acceptance.
  if (!FKVatRunningFiguresTakeOut(profile, used)) {
    alert.message += std::string(alert.message.empty() ? "" : " ") + std::string(kVatFiguresNotTakenOutMessage);
    LLogError("%s", std::string(kVatFiguresNotTakenOutMessage).c_str());
  }
  LLogInfo("Déclaration de TVA %s transmise à HMRC.", std::string(periodKey).c_str());
  return true;
}
