#include "accounts/transactiondate.h"

#include <cstdio>

#include "accounts/question.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/optionalerror.h"

namespace {

constexpr char kOldDateQuestion[] =
    "Vous avez entré la date \"%s\", qui date de plus d'un an. Voulez-vous vraiment vous enregistrer ?";
constexpr std::string_view kFutureDateRefusal =
    "Vous ne pouvez pas entrer de transaction future au-delà d'un an. Vous pouvez désactiver cette limite dans la "
    "fenêtre Options sous l'onglet Comptabilité";
constexpr std::string_view kClosedDateRefusal =
    "Les données entrées sont antérieures à la date de clôture. Veuillez désactiver la fonctionnalité date de "
    "clôture pour la date spécifiée sous l'onglet Comptes dans la fenêtre principale.";

}  // namespace

bool LCompanyOptionsCTDIsClosed(const LProfile& profile, const LDate& date) {
  LRecord company;
  profile.List(kMiscList).Open(company, "Company");
  if (!company.GetBool("CTDEnabled", false)) return false;
  LDate closing;
  if (!LDate::Parse(company.GetString("CTDDate"), closing)) return false;
  return date <= closing;
}

bool LCheckTransactionDate(const LProfile& profile, LAsker& asker, const LDate& date, std::string* message,
                           const LDate& today) {
  long long secondsAgo = (today.DayNumber() - date.DayNumber()) * 86400LL;
  if (secondsAgo >= kTransactionDateLimitSeconds) {
    char text[512];
    std::snprintf(text, sizeof text, kOldDateQuestion, date.ToText().c_str());
    LQuestion question{text, "Date incorrecte", "Enregistrer", "Annuler", false};
    if (!asker.Ask(question).confirmed) return LFail(message, text);
  } else if (-secondsAgo >= kTransactionDateLimitSeconds) {
    LOptions options;
    options.OpenFrom(profile);
    if (options.GetBool("ProhibitTransactionsInFuture", false)) return LFail(message, kFutureDateRefusal);
  }
  if (LCompanyOptionsCTDIsClosed(profile, date)) return LFail(message, kClosedDateRefusal);
  return true;
}
