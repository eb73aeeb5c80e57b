// kontavo supplier add: suppliers, the parties of purchase orders and bills.
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"

int LCmdSupplier(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  std::string error;
  if (!args.Finish(words, error)) return context.Usage(error);
  if (words.size() < 2 || words[0] != "add") return context.Usage();
  std::vector<std::pair<std::string, std::string>> fields;
  for (std::size_t i = 2; i < words.size(); ++i) {
    std::string name, value;
    if (!LCliSplitAssignment(words[i], name, value)) return context.Usage("champ invalide : " + words[i]);
    fields.emplace_back(name, value);
  }
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  const LFileStoreListBase& list = profile->MainList("Suppliers");
  if (list.TestRecordExists(words[1])) return context.Fail("Le fournisseur « " + words[1] + " » existe déjà.");
  LRecord supplier;
  list.OpenAlways(supplier, words[1]);
  for (const auto& [name, value] : fields) supplier.SetString(name, value);
  supplier.SetDirty(true);
  if (!supplier.Flush()) return context.Fail("Impossible d'enregistrer le fournisseur.");
  return kExitOk;
}
