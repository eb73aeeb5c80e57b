#include "invoice/shared/item.h"

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
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

bool LItemSyncDocument(LProfile& profile, const LSalesDocument& document, int sign) {
  LOptions options;
  options.OpenFrom(profile);
  bool enabled = options.GetBool("ClientEnabled", false);
  options.DetachWithoutSave();
  if (!enabled) return true;
  const LFileStoreListBase& queue = profile.MainList(kItemSyncList);
  LFKItemCollectionRecord lines = document.Items();
  int count = lines.GetItemCount();
  for (int i = 0; i < count; ++i) {
    LRecord movement;
    queue.CreateNewRecord(movement);
    movement.SetString("Name", lines.GetItemCode(i));
    movement.SetString("Qty", ftotl(sign * lines.GetItemQty(i)));
    if (!movement.Flush()) return false;
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
