// The dialogs of sales documents (quotes, orders, invoices, credit notes, purchase orders) with
// their editable grid of item lines: one row per line with the item code (offered from the
// business's items), the description, the quantity, the unit price, the tax (by name) and the
// line discount (only while line discounts count: "DontShowDiscountColumn" off); the line's amount
// is worked out in the browser as the user types ("itemgrid.js"), an item chosen fills the line's
// description and price from the server ("cbitemselchange": the customer's price), and "Ajouter
// une ligne" adds an empty row there. Under the grid, the document's percentage discount ("Remise sur le document"),
// kept as the document's fixed-percentage discount line.
//
// Each row remembers the stored line it shows (hidden column kFKGridOrigin): a stored line whose
// tax is unchanged keeps the rates frozen on it when it was first written, and its line discount
// while the discount column is hidden. New rows take today's rates.
//
// Grid controls follow the dialog's numbering: line n (from 0), column c has the id
// kFKGridFirstControl + n * kFKGridStride + c, and the hidden field "fklines" posts how many rows
// the grid holds, so the lines come back with the other values of the dialog.
//
//     void InitDialog() override { SetItemLines(document); }
//     void Generate() override { ...; AddItemGrid(); }
//     bool CmOk() override { if (!GetItemLines(document)) return false; ... }
#pragma once

#include <memory>
#include <string_view>

#include "invoice/shared/webaccess.h"

class LProfile;
class LSalesDocument;

inline constexpr int kFKGridFirstControl = 10000;
inline constexpr int kFKGridStride = 10;
// The grid holds at most this many rows (ids stay below the next thousands of controls).
inline constexpr int kFKGridMaxLines = 500;

enum LFKGridColumn : int {
  kFKGridCode = 0,
  kFKGridDescription = 1,
  kFKGridQuantity = 2,
  kFKGridUnitPrice = 3,
  kFKGridTax = 4,
  kFKGridDiscount = 5,
  kFKGridOrigin = 6,  // hidden: the stored line number (from 1) the row shows; empty for a new row
};

// The controls of the document's percentage discount: its rate and the line's text.
inline constexpr int kFKDocumentDiscountControl = 9001;
inline constexpr int kFKDocumentDiscountTextControl = 9002;

class LWebDialogFK : public LWebDialogEx {
 public:
  LWebDialogFK(LWebletForm& form, std::string_view routeName);
  ~LWebDialogFK() override;

  static int GridControl(int line, int column) { return kFKGridFirstControl + line * kFKGridStride + column; }

  // Puts the document's lines into the grid's controls.
  void SetItemLines(const LSalesDocument& document);
  // Writes the grid as a row of the control table: the lines of the request, then one empty
  // row to type a new line in.
  void AddItemGrid();
  // Replaces the document's lines by the grid's (rows left empty are skipped; "ItemCount" is
  // set), the percentage discount line last. false after the error script at the faulty
  // control of the row; the document's lines are then unspecified and the document must not be
  // saved.
  bool GetItemLines(LSalesDocument& document);
  // Line discounts count (the discount column is shown).
  bool LineDiscountsShown();

 protected:
  // The session's business, opened on first use.
  LProfile& Profile();

 private:
  // How many rows the request's grid holds.
  int GridLineCount() const;
  bool IsEmptyRow(int line) const;

  // Amounts and rates as the business writes them, for the controls.
  std::string AmountText(long long amount, int digits);
  std::string RateText(double rate);
  // Typed text the business's way, as the plain decimal text the line input reads.
  std::string PlainNumber(int id);

  std::unique_ptr<LProfile> profile_;
  int lineDiscounts_ = -1;  // LineDiscountsShown, read once
};
