#include "invoice/shared/webpartydialog.h"

#include "invoice/shared/profile.h"
#include "llib/gen/record.h"

LWebPartyDialog::LWebPartyDialog(LWebletForm& form, std::string_view routeName, LPartyKind kind,
                                 std::string_view currentTab)
    : LWebDialogExKv(form, routeName, LPartyKindOf(kind).list, currentTab), kind_(kind) {}

void LWebPartyDialog::BindPartyField(int id, std::string_view field, std::string_view label, int width) {
  const LPartyField* rule = LPartyFieldNamed(kind_, field);
  bool money = rule != nullptr && rule->type == LFieldType::kAmount;
  BindField(id, field, label, money ? LWebKVKind::kMoney : LWebKVKind::kText, width);
  if (rule != nullptr && !money && rule->type != LFieldType::kText) checked_.emplace_back(id, std::string(field));
}

bool LWebPartyDialog::CheckValues(LRecord& record) {
  for (const auto& [id, name] : checked_) {
    if (!record.TestFieldExists(name)) continue;
    std::string stored, error;
    if (!LPartyFieldStore(*LPartyFieldNamed(kind_, name), record.GetString(name), Profile().GetCurrencyFormat(),
                          stored, &error)) {
      PopupControlDataInvalid(id, error);
      return false;
    }
    record.SetString(name, stored);
  }
  return true;
}
