#include "invoice/shared/item.h"

#include <charconv>
#include <set>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/file.h"
#include "llib/gen/filestore.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/textnum.h"

void LForEachLineItem(LProfile& profile, const LSalesDocument& document,
                      const std::function<void(int index, const LItem& item)>& visit) {
  const LFileStoreListBase& items = profile.MainList(kItemsList);
  LFKItemCollectionRecord lines = document.Items();
  int count = lines.GetItemCount();
  for (int i = 0; i < count; ++i) {
    std::string code = lines.GetItemCode(i);
    LItem item;
    if (code.empty() || !items.Open(item, code)) continue;
    item.DetachWithoutSave();
    visit(i, item);
  }
}

bool LItemSyncEnabled(LProfile& profile) {
  LOptions options;
  options.OpenFrom(profile);
  bool enabled = options.GetBool("ClientEnabled", false);
  options.DetachWithoutSave();
  return enabled;
}

void LItemSyncAddDocument(const LSalesDocument& document, int sign, std::vector<LSyncItemMove>& moves) {
  LFKItemCollectionRecord lines = document.Items();
  for (int i = 0; i < lines.GetItemCount(); ++i) moves.push_back({{}, lines.GetItemCode(i), sign * lines.GetItemQty(i)});
}

void LItemSyncFixNumbers(LProfile& profile, std::vector<LSyncItemMove>& moves) {
  // One look at the folder rather than a try per number: the linked client empties the list in
  // any order, so free numbers are found anywhere.
  std::set<long long> taken;
  for (const std::string& name : LFile::ListFolder(profile.MainList(kSyncItemsList).GetFolder())) {
    long long number = 0;
    std::string_view stem = std::string_view(name).substr(0, name.size() - 4);
    auto parsed = std::from_chars(stem.data(), stem.data() + stem.size(), number);
    if (name.ends_with(".dat") && parsed.ec == std::errc() && parsed.ptr == stem.data() + stem.size()) taken.insert(number);
  }
  long long number = 1;
  for (LSyncItemMove& move : moves) {
    while (taken.contains(number)) ++number;
    move.number = std::to_string(number++);
  }
}

bool LItemSyncWriteMissing(LProfile& profile, const std::vector<LSyncItemMove>& moves, int* nWritten) {
  const LFileStoreListBase& queue = profile.MainList(kSyncItemsList);
  for (const LSyncItemMove& move : moves) {
    if (queue.TestRecordExists(move.number)) continue;
    LRecord record;
    queue.CreateNewRecord(record, move.number);
    record.SetString("Name", move.code);
    record.SetString("Qty", ftotl(move.quantity));
    if (!record.Flush()) return false;
    if (nWritten != nullptr) ++*nWritten;
  }
  return true;
}

bool LItemSave(LProfile& profile, std::string_view code, const LItemInput& input, bool create, std::string* error) {
  if (code.empty()) return LFail(error, "Veuillez indiquer le code de l'article.");
  const LFileStoreListBase& list = profile.MainList(kItemsList);
  bool exists = list.TestRecordExists(code);
  if (create && exists) return LFail(error, "L'article « " + std::string(code) + " » existe déjà.");
  if (!create && !exists) return LFail(error, "Article introuvable : " + std::string(code) + ".");
  LItem item;
  list.OpenAlways(item, code);
  if (input.description) item.SetString("Description", *input.description);
  if (input.price) item.SetInt64("Price", *input.price);
  if (input.account) item.SetString("PLAccount", *input.account);
  if (input.kind) item.SetString("Kind", LItemKindWord(*input.kind));
  if (input.cost) item.SetInt64("Cost", *input.cost);
  if (input.reorderLevel) item.SetString("ReorderLevel", ftotl(*input.reorderLevel));
  if (input.reorderQuantity) item.SetString("ReorderQty", ftotl(*input.reorderQuantity));
  item.SetDirty(true);
  if (!item.Flush()) return LFail(error, "Impossible d'enregistrer l'article.");
  return true;
}
