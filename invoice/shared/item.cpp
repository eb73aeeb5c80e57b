#include "invoice/shared/item.h"

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/filestore.h"
#include "llib/gen/textnum.h"

void LForEachLineItem(LProfile& profile, const LSalesDocument& document,
                      const std::function<void(int index, LItem& item)>& visit) {
  const LFileStoreListBase& items = profile.MainList(kItemsList);
  LFKItemCollectionRecord lines = document.Items();
  int count = lines.GetItemCount();
  for (int i = 0; i < count; ++i) {
    std::string code = lines.GetItemCode(i);
    LItem item;
    if (code.empty() || !items.Open(item, code)) continue;
    visit(i, item);
    item.Flush();
  }
}

void LInvoiceChangeQuantity(LProfile& profile, const LSalesDocument& document, int sign) {
  LFKItemCollectionRecord lines = document.Items();
  LForEachLineItem(profile, document, [&](int index, LItem& item) {
    item.SetString("Quantity", ftotl(item.GetQuantity() + sign * lines.GetItemQty(index)));
  });
}

void LItemSyncDocument(LProfile& profile, const LSalesDocument& document, int sign) {
  LOptions options;
  options.OpenFrom(profile);
  bool enabled = options.GetBool("ClientEnabled", false);
  options.DetachWithoutSave();
  if (!enabled) return;
  const LFileStoreListBase& queue = profile.MainList(kItemSyncList);
  LFKItemCollectionRecord lines = document.Items();
  int count = lines.GetItemCount();
  for (int i = 0; i < count; ++i) {
    LRecord movement;
    queue.CreateNewRecord(movement);
    movement.SetString("Name", lines.GetItemCode(i));
    movement.SetString("Qty", ftotl(sign * lines.GetItemQty(i)));
    movement.Flush();
  }
}
