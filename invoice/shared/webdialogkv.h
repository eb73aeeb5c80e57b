// Dialogs that edit one record of a list of the session's business, control by control: each
// bound control shows one field of the record and writes it back on OK. The record is named by
// the request's "id" (kept in a hidden field across the round trip); without "id" the dialog
// creates a record whose key the user types in the key control.
//
//     class LWebItemDialog : public LWebDialogExKv {
//       LWebItemDialog(LWebletForm& form) : LWebDialogExKv(form, "itemprop", "Items", "itemlist") {
//         BindKey(101, "Code :", 20);
//         BindField(102, "Description", "Description :", LWebKVKind::kText);
//         BindField(103, "Price", "Prix unitaire :", LWebKVKind::kMoney, 12);
//       }
//     };
//
// OK refuses, in order: a user who may only view the data; an empty key; the key of an
// existing record for a new one; an amount that does not read as money; the page's own checks
// (CheckValues). Then the fields are written: an empty text removes its field, an amount is
// stored in minor currency units, a check box as 1 or 0.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/webaccess.h"

class LProfile;
class LRecord;

enum class LWebKVKind { kText, kMoney, kCheck };

class LWebDialogKV : public LWebDialogEx {
 public:
  // listName: the list of the session's business that holds the record.
  LWebDialogKV(LWebletForm& form, std::string_view routeName, std::string_view listName);
  ~LWebDialogKV() override;

  // The key control: editable for a new record, read-only for an existing one.
  void BindKey(int id, std::string_view label, int width);
  void BindField(int id, std::string_view field, std::string_view label, LWebKVKind kind, int width = 30);
  // The refusals of the key: when it is empty, and when a new record's key is taken ("%s" is
  // replaced by the key).
  void SetKeyMessages(std::string_view empty, std::string_view taken);

  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;

 protected:
  // Further checks of the record as the controls filled it, before anything is written; they
  // may turn typed values into stored ones. false after an error answer (PopupControlDataInvalid).
  virtual bool CheckValues(LRecord& record) { return true; }
  // The key of the record being edited; empty for a new record.
  std::string EditedKey() const;
  LProfile& Profile();

 private:
  struct Binding {
    int id;
    std::string field;  // empty for the key control
    std::string label;
    LWebKVKind kind;
    int width;
  };
  // Control values into the record; false after an error answer (an amount that is not one).
  bool ReadControls(LRecord& record);

  std::string listName_;
  std::vector<Binding> bindings_;
  int keyControl_ = 0;
  std::string keyEmptyMessage_ = "Veuillez entrer une clé.";
  std::string keyTakenMessage_ = "La clé « %s » est déjà utilisée.";
  std::unique_ptr<LProfile> profile_;  // the session's business, opened on first use
};

// The same dialog under the tab bar, with the tab of its section marked.
class LWebDialogExKv : public LWebDialogKV {
 public:
  LWebDialogExKv(LWebletForm& form, std::string_view routeName, std::string_view listName,
                 std::string_view currentTab)
      : LWebDialogKV(form, routeName, listName), currentTab_(currentTab) {}
  void PrintHeader() override;

 private:
  std::string currentTab_;
};
