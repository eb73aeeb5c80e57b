#include "accounts/chequeform.h"

#include <cctype>

#include "accounts/accounts.h"
#include "accounts/cheques.h"
#include "invoice/shared/formparts.h"
#include "invoice/shared/profile.h"
#include "llib/gen/frenchwords.h"
#include "llib/gen/optionalerror.h"

namespace {

// A French bank cheque: 175 x 80 mm.
constexpr double kChequeWidthPt = 496;
constexpr double kChequeHeightPt = 227;

LTextStyle Style(double size, bool bold = false, LTextAlign align = LTextAlign::kLeft, double gray = 0) {
  LTextStyle style;
  style.sizePt = size;
  style.bold = bold;
  style.align = align;
  style.gray = gray;
  return style;
}

void Box(LPdfCanvas& canvas, double x, double y, double width, double height, double lineWidth) {
  canvas.Line(x, y, x + width, y, lineWidth);
  canvas.Line(x, y + height, x + width, y + height, lineWidth);
  canvas.Line(x, y, x, y + height, lineWidth);
  canvas.Line(x + width, y, x + width, y + height, lineWidth);
}

std::string AccountText(const LProfile& profile, const std::string& number) {
  LAccount account;
  if (!LAccountList(profile).Open(account, number)) return number;
  return number + " " + account.GetDescription();
}

// The stub: what the business keeps of the cheque; returns the y below it.
double DrawStub(LPdfCanvas& canvas, const LProfile& profile, const LCheque& cheque, const LPrintFormat& format,
                double y) {
  double width = canvas.Right() - canvas.Left();
  y += canvas.Text(canvas.Left(), y, width, "Talon du chèque n° " + cheque.GetNumber(), Style(12, true)) + 6;
  std::vector<std::string> lines = {"Date : " + format.Date(cheque.GetDate()),
                                    "À l'ordre de : " + cheque.GetPayee(),
                                    "Montant : " + format.Money(cheque.GetAmount()),
                                    "Tiré sur : " + AccountText(profile, cheque.GetAccount())};
  for (const LSplitLine& line : LSplitLinesLoad(cheque)) {
    std::string text = "Imputation : " + AccountText(profile, line.account) + " – " + format.Money(line.amount);
    if (!line.memo.empty()) text += " – " + line.memo;
    lines.push_back(text);
  }
  if (!cheque.GetBillPayment().empty()) lines.push_back("Règlement de factures : " + cheque.GetBillPayment());
  if (!cheque.GetString("Memo").empty()) lines.push_back("Mémo : " + cheque.GetString("Memo"));
  if (cheque.IsVoid()) lines.push_back("Annulé le " + format.Date(cheque.GetString("VoidDate")));
  y += canvas.Text(canvas.Left(), y, width, LFormJoinLines(lines), Style(9)) + 14;
  // The cut line between the stub and the cheque.
  for (double x = canvas.Left(); x < canvas.Right(); x += 8) canvas.Line(x, y, std::min(x + 4, canvas.Right()), y, 0.5, 0.4);
  canvas.Text(canvas.Left(), y + 2, width, "Détacher ici", Style(7, false, LTextAlign::kRight, 0.4));
  return y + 24;
}

void DrawCheque(LPdfCanvas& canvas, const LProfile& profile, const LCheque& cheque, const LPrintFormat& format,
                const LCompany& company, double top) {
  double left = canvas.Left(), pad = 12;
  Box(canvas, left, top, kChequeWidthPt, kChequeHeightPt, 1);
  double inner = left + pad, innerWidth = kChequeWidthPt - 2 * pad;

  // The amount in figures in its box at the top right.
  double boxWidth = 150, boxLeft = left + kChequeWidthPt - pad - boxWidth;
  Box(canvas, boxLeft, top + pad, boxWidth, 26, 0.8);
  canvas.Text(boxLeft + 6, top + pad + 6, boxWidth - 12, format.Money(cheque.GetAmount()),
              Style(12, true, LTextAlign::kRight));

  // The words run under the box across the cheque: long amounts take two lines there.
  canvas.Text(inner, top + pad + 8, boxLeft - inner - 10, "Payez contre ce chèque", Style(8, false, LTextAlign::kLeft, 0.35));
  double y = top + pad + 34;
  const LCurrencyFormat& currency = format.Currency();
  std::string words = LAmountInFrenchWords(cheque.GetAmount(), currency.digits, LCurrencyWordsForSymbol(currency.symbol));
  y += canvas.Text(inner, y, innerWidth, words, Style(10.5, true)) + 10;
  canvas.Text(inner, y, 60, "à l'ordre de", Style(8, false, LTextAlign::kLeft, 0.35));
  y += canvas.Text(inner + 60, y - 2, innerWidth - 60, cheque.GetPayee(), Style(11, true)) + 2;
  canvas.Line(inner + 60, y, inner + innerWidth, y, 0.4, 0.5);

  // The place and the date at the right, the drawer and the account at the left.
  double lowerY = top + kChequeHeightPt - pad - 62;
  std::string place = LChequePlace(company.GetAddress());
  std::string when = (place.empty() ? "" : "À " + place + ", ") + "le " + format.Date(cheque.GetDate());
  canvas.Text(inner + innerWidth / 2, lowerY, innerWidth / 2, when, Style(10, false, LTextAlign::kRight));
  std::vector<std::string> drawer = {company.GetName(), company.GetAddress(),
                                     "Compte " + AccountText(profile, cheque.GetAccount())};
  canvas.Text(inner, lowerY, innerWidth / 2, LFormJoinLines(drawer), Style(8));
  canvas.Text(inner, top + kChequeHeightPt - pad - 10, innerWidth, "Chèque n° " + cheque.GetNumber(),
              Style(8, true, LTextAlign::kLeft, 0.2));
  canvas.Text(inner + innerWidth / 2, top + kChequeHeightPt - pad - 22, innerWidth / 2, "Signature",
              Style(7, false, LTextAlign::kRight, 0.4));

  if (cheque.IsVoid()) {
    canvas.Line(left, top, left + kChequeWidthPt, top + kChequeHeightPt, 1.5, 0.3);
    canvas.Line(left, top + kChequeHeightPt, left + kChequeWidthPt, top, 1.5, 0.3);
    canvas.Text(left, top + kChequeHeightPt / 2 - 20, kChequeWidthPt, "ANNULÉ", Style(32, true, LTextAlign::kCenter, 0.3));
  }
}

}  // namespace

std::string LChequePdfName(const LCheque& cheque) { return LFormPdfName("Chèque", cheque.GetNumber()); }

std::string LChequePlace(std::string_view address) {
  std::string_view last;
  while (!address.empty()) {
    std::size_t end = address.find('\n');
    std::string_view line = address.substr(0, end);
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
    if (!line.empty()) last = line;
    if (end == std::string_view::npos) break;
    address.remove_prefix(end + 1);
  }
  // "69002 Lyon" and "F-69002 Lyon": the town after the postal code.
  std::size_t space = last.find(' ');
  if (space != std::string_view::npos && space > 0 && std::isdigit(static_cast<unsigned char>(last[space - 1])))
    last.remove_prefix(space + 1);
  return std::string(last);
}

bool LChequePdf(LProfile& profile, const LCheque& cheque, std::string& pdf, std::string* error) {
  LPrintFormat format(profile);
  LFormSeller seller(profile);
  LPdfCanvas canvas(seller.paper);
  canvas.SetTitle("Chèque n° " + cheque.GetNumber());
  canvas.SetAuthor(seller.company.GetName());
  double y = DrawStub(canvas, profile, cheque, format, canvas.Top());
  DrawCheque(canvas, profile, cheque, format, seller.company, y);
  return canvas.Finish(pdf, error);
}

bool LPrintCheque(LProfile& profile, std::string_view key, std::string_view account, std::string& pdf,
                  std::string& fileName, std::string* error) {
  std::string found;
  if (!LChequeResolve(profile, key, account, found, error)) return false;
  LCheque cheque;
  if (!profile.List(kChequesList).Open(cheque, found)) {
    return LFail(error, "Le chèque n° " + std::string(key) + " n'existe pas.");
  }
  fileName = LChequePdfName(cheque);
  return LChequePdf(profile, cheque, pdf, error);
}
