// kontavo item add|edit|list|stock: items of the item list, their kind, prices, cost, reorder
// figures and stock (invoice/shared/item.h, invoice/shared/inventory.h).
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/cliasker.h"
#include "app/commands.h"
#include "invoice/shared/inventory.h"
#include "invoice/shared/item.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/money.h"
#include "llib/gen/jsontext.h"

namespace {

// The options of add and edit; false with the message when one does not read.
bool TakeItemInput(LCliArgs& args, const LProfile& profile, LItemInput& input, std::string& error) {
  std::string text;
  if (args.TakeOption("--description", text)) input.description = text;
  if (args.TakeOption("--account", text)) input.account = text;
  for (auto [option, target] : {std::pair{"--price", &input.price}, std::pair{"--cost", &input.cost}}) {
    if (!args.TakeOption(option, text)) continue;
    long long amount = 0;
    if (!LCliParseAmount(profile, text, amount)) {
      error = LCliBadAmountMessage(profile, text);
      return false;
    }
    *target = amount;
  }
  for (auto [option, target] :
       {std::pair{"--reorder-level", &input.reorderLevel}, std::pair{"--reorder-qty", &input.reorderQuantity}}) {
    if (!args.TakeOption(option, text)) continue;
    double quantity = 0;
    if (!LParseQuantity(text, quantity)) {
      error = "Quantité invalide : " + text + ".";
      return false;
    }
    *target = quantity;
  }
  if (args.TakeOption("--kind", text)) {
    LItemKind kind;
    if (!LItemKindParse(text, kind)) {
      error = "Type d'article invalide : " + text + " (stock, product ou service).";
      return false;
    }
    input.kind = kind;
  }
  return true;
}

std::string Amount(const LProfile& profile, long long cents) {
  return LFormatAmountPlain(cents, profile.GetCurrencyDigits());
}

nlohmann::ordered_json ItemJson(const LInventoryItem& item) {
  nlohmann::ordered_json json = {{"code", item.code},
                                 {"Description", item.description},
                                 {"Kind", LItemKindWord(item.kind)},
                                 {"Price", item.price},
                                 {"Quantity", item.stock.quantity},
                                 {"AverageCost", item.stock.AverageCost()},
                                 {"Value", item.stock.value}};
  if (item.hasReorderLevel) json["ReorderLevel"] = item.reorderLevel;
  if (item.reorderQuantity != 0) json["ReorderQty"] = item.reorderQuantity;
  return json;
}

// One line an item: code, description, kind, price, quantity, average cost, value, reorder level.
int List(LCliContext& context, LProfile& profile) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const LInventoryItem& item : LInventoryAt(profile, {})) {
    if (context.json) {
      all.push_back(ItemJson(item));
      continue;
    }
    bool stocked = item.kind == LItemKind::kStocked;
    context.out << item.code << "\t" << item.description << "\t" << LItemKindTitle(item.kind) << "\t"
                << Amount(profile, item.price) << "\t" << (stocked ? LQuantityText(item.stock.quantity) : "") << "\t"
                << (stocked ? Amount(profile, item.stock.AverageCost()) : "") << "\t"
                << (stocked ? Amount(profile, item.stock.value) : "") << "\t"
                << (item.hasReorderLevel ? LQuantityText(item.reorderLevel) : "") << "\n";
  }
  if (context.json) context.out << LJsonDump(all) << "\n";
  return kExitOk;
}

// The stock of one item at --date (today by default), then its movements up to that date.
int Stock(LCliContext& context, LProfile& profile, const std::string& code, const std::string& date) {
  LInventoryItem item;
  if (!LInventoryItemAt(profile, code, date, item)) return context.Fail("Article introuvable : " + code + ".");
  if (context.json) {
    nlohmann::ordered_json json = ItemJson(item);
    nlohmann::ordered_json moves = nlohmann::ordered_json::array();
    for (const LStockMove& move : item.moves)
      if (date.empty() || move.date <= date)
        moves.push_back({{"date", move.date},
                         {"document", move.document},
                         {"quantity", move.quantity},
                         {"unitCost", move.unitCost}});
    json["moves"] = moves;
    context.out << LJsonDump(json) << "\n";
    return kExitOk;
  }
  context.out << "Article\t" << item.code << "\t" << item.description << "\n"
              << "Type\t" << LItemKindTitle(item.kind) << "\n"
              << "Quantité\t" << LQuantityText(item.stock.quantity) << "\n"
              << "Coût moyen\t" << Amount(profile, item.stock.AverageCost()) << "\n"
              << "Valeur\t" << Amount(profile, item.stock.value) << "\n";
  if (item.hasReorderLevel)
    context.out << "Seuil de commande\t" << LQuantityText(item.reorderLevel) << "\n"
                << "Quantité à commander\t" << LQuantityText(item.reorderQuantity) << "\n";
  for (const LStockMove& move : item.moves)
    if (date.empty() || move.date <= date)
      context.out << move.date << "\t" << LStockDocumentTitle(move.document) << "\t" << LQuantityText(move.quantity)
                  << "\t" << Amount(profile, move.unitCost) << "\n";
  return kExitOk;
}

}  // namespace

int LCmdItem(LCliContext& context, LCliArgs& args) {
  std::string verb = LCliPeekVerb(args,
                                  {"--description", "--price", "--account", "--kind", "--cost", "--reorder-level",
                                   "--reorder-qty", "--date"},
                                  {});
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  std::string error;
  if (verb == "add" || verb == "edit") {
    LItemInput input;
    if (!TakeItemInput(args, *profile, input, error)) return context.Fail(error);
    std::vector<std::string> words;
    if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
    if (!LItemSave(*profile, words[1], input, verb == "add", &error)) return context.Fail(error);
    return kExitOk;
  }
  std::string dateText;
  bool hasDate = args.TakeOption("--date", dateText);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  LDate date;
  if (hasDate && !LDate::Parse(dateText, date)) return context.Fail(LInvalidDateMessage(dateText));
  if (verb == "list" && words.size() == 1 && !hasDate) return List(context, *profile);
  if (verb == "stock" && words.size() == 2) return Stock(context, *profile, words[1], hasDate ? date.ToText() : "");
  return context.Usage();
}
