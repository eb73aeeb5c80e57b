// kontavo item add: items of the item list, with the income account ("PLAccount", by
// description) that sales of the item are posted to.
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/item.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"

int LCmdItem(LCliContext& context, LCliArgs& args) {
  std::string description, price, account;
  bool hasDescription = args.TakeOption("--description", description);
  bool hasPrice = args.TakeOption("--price", price);
  bool hasAccount = args.TakeOption("--account", account);
  std::vector<std::string> words;
  std::string error;
  if (!args.Finish(words, error)) return context.Usage(error);
  if (words.size() != 2 || words[0] != "add" || words[1].empty()) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  long long priceValue = 0;
  if (hasPrice && !LParseAmount(price, profile->GetCurrencyDigits(), priceValue))
    return context.Fail("Montant invalide : " + price + ".");
  const LFileStoreListBase& list = profile->MainList(kItemsList);
  if (list.TestRecordExists(words[1])) return context.Fail("L'article « " + words[1] + " » existe déjà.");
  LItem item;
  list.OpenAlways(item, words[1]);
  if (hasDescription) item.SetString("Description", description);
  if (hasPrice) item.SetInt64("Price", priceValue);
  if (hasAccount) item.SetString("PLAccount", account);
  item.SetDirty(true);
  if (!item.Flush()) return context.Fail("Impossible d'enregistrer l'article.");
  return kExitOk;
}
