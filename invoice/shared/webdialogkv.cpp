#include "invoice/shared/webdialogkv.h"

#include "invoice/shared/webnavtabs.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/record.h"
#include "llib/web/webletform.h"

namespace {

std::string WithKey(std::string_view message, std::string_view key) {
  std::string text(message);
  std::size_t at = text.find("%s");
  if (at != std::string::npos) text.replace(at, 2, key);
  return text;
}

}  // namespace

LWebDialogKV::LWebDialogKV(LWebletForm& form, std::string_view routeName, std::string_view listName)
    : LWebDialogEx(form, routeName), listName_(listName) {}

LWebDialogKV::~LWebDialogKV() = default;

void LWebDialogKV::BindKey(int id, std::string_view label, int width) {
  keyControl_ = id;
  bindings_.push_back({id, "", std::string(label), LWebKVKind::kText, width});
}

void LWebDialogKV::BindField(int id, std::string_view field, std::string_view label, LWebKVKind kind, int width) {
  bindings_.push_back({id, std::string(field), std::string(label), kind, width});
}

void LWebDialogKV::SetKeyMessages(std::string_view empty, std::string_view taken) {
  keyEmptyMessage_.assign(empty);
  keyTakenMessage_.assign(taken);
}

std::string LWebDialogKV::EditedKey() const { return form_.GetParam("id"); }

LProfile& LWebDialogKV::Profile() {
  if (!profile_) profile_ = std::make_unique<LProfile>(WLSessionBusinessFolder(form_));
  return *profile_;
}

void LWebDialogKV::InitDialog() {
  LRecord record;
  std::string key = EditedKey();
  if (key.empty() || !Profile().MainList(listName_).Open(record, key)) return;
  for (const Binding& binding : bindings_) {
    if (binding.field.empty()) {
      SetText(binding.id, key);
    } else if (binding.kind == LWebKVKind::kMoney) {
      if (record.TestFieldExists(binding.field))
        SetText(binding.id, LFormatAmountPlain(record.GetInt64(binding.field, 0), Profile().GetCurrencyDigits()));
    } else if (binding.kind == LWebKVKind::kCheck) {
      SetCheck(binding.id, record.GetBool(binding.field, false));
    } else {
      SetText(binding.id, record.GetString(binding.field));
    }
  }
  record.DetachWithoutSave();
}

void LWebDialogKV::Generate() {
  bool editing = !EditedKey().empty();
  AddHiddenField("id", EditedKey());
  for (const Binding& binding : bindings_) {
    if (binding.kind == LWebKVKind::kCheck) AddCheckBox(binding.id, binding.label);
    else if (binding.field.empty() && editing) AddInputReadOnly(binding.id, binding.label, "", binding.width);
    else AddInput(binding.id, binding.label, "", binding.width);
  }
}

bool LWebDialogKV::ReadControls(LRecord& record) {
  for (const Binding& binding : bindings_) {
    if (binding.field.empty()) continue;
    std::string text = GetTextAndTrim(binding.id);
    if (binding.kind == LWebKVKind::kCheck) {
      record.SetBool(binding.field, IsChecked(binding.id));
    } else if (text.empty()) {
      record.DeleteField(binding.field);
    } else if (binding.kind == LWebKVKind::kMoney) {
      long long amount = 0;
      if (std::string refusal; !LReadTypedAmount(text, Profile().GetCurrencyFormat(), amount, &refusal)) {
        PopupControlDataInvalid(binding.id, refusal);
        return false;
      }
      record.SetInt64(binding.field, amount);
    } else {
      record.SetString(binding.field, text);
    }
  }
  return true;
}

bool LWebDialogKV::CmOk() {
  if (RefuseViewer()) return false;
  const LFileStoreListBase& list = Profile().MainList(listName_);
  std::string key = EditedKey();
  bool creating = key.empty();
  if (creating && keyControl_ != 0) {
    key = GetTextAndTrim(keyControl_);
    if (key.empty()) {
      PopupControlDataInvalid(keyControl_, keyEmptyMessage_);
      return false;
    }
    if (list.TestRecordExists(key)) {
      PopupControlDataInvalid(keyControl_, WithKey(keyTakenMessage_, key));
      return false;
    }
  }
  LRecord record;
  bool opened = true;
  if (creating) list.OpenAlways(record, key);  // a new record: attached, written by its first save
  else opened = list.Open(record, key);
  if (!opened || !ReadControls(record) || !CheckValues(record)) {
    record.DetachWithoutSave();
    if (!opened) PopupBoxError("L'enregistrement « " + key + " » n'existe plus.");
    return false;
  }
  if (!record.Flush()) {
    PopupBoxError("L'enregistrement n'a pas pu être écrit.");
    return false;
  }
  return true;
}

void LWebDialogExKv::PrintHeader() {
  LWebDialogKV::PrintHeader();
  WLWriteNavTabs(form_, currentTab_);
}
