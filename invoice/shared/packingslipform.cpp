#include "invoice/shared/packingslipform.h"

#include "invoice/shared/formparts.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/pdftable.h"

namespace {

constexpr std::string_view kPackingSlipTitle = "Bon de livraison";
constexpr double kLabelWidthPt = 283.46;   // 10 cm
constexpr double kLabelHeightPt = 425.20;  // 15 cm

struct Delivery {
  std::string name;     // the customer's name, else its key
  std::string address;  // where the goods go
};

Delivery DeliveryOf(LProfile& profile, const LSalesDocument& document) {
  LRecord customer;
  (void)profile.MainList("Customers").Open(customer, document.GetCustomer());  // absent: key and document address
  Delivery delivery{customer.GetString("Name"), document.GetString("ShippingAddress")};
  if (delivery.name.empty()) delivery.name = document.GetCustomer();
  if (delivery.address.empty()) delivery.address = document.GetString("Address");
  if (delivery.address.empty()) delivery.address = customer.GetString("Address");
  return delivery;
}

}  // namespace

std::string LPackingSlipPdfName(std::string_view key) { return LFormPdfName(kPackingSlipTitle, key); }
std::string LShippingLabelPdfName(std::string_view key) { return LFormPdfName("Etiquette", key); }

bool LPackingSlipPdf(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                     std::string& pdf, std::string* error, std::string* warning) {
  if (warning != nullptr) warning->clear();
  LPrintFormat format(profile);
  LFormSeller seller(profile);
  LRecord slipOptions;
  (void)profile.List(kMiscList).Open(slipOptions, "PackingSlip");
  const std::string& key = document.GetPrimaryKey();
  std::string continued = std::string(kPackingSlipTitle) + " N° " + key + " (suite)";

  LPdfCanvas canvas(seller.paper);
  LFormBegin(canvas, seller, format, std::string(kPackingSlipTitle) + " " + key);
  std::vector<std::string> info = {"N° " + key, "Date : " + format.Date(document.GetDate()),
                                   std::string(kind.title) + " " + key};
  if (!document.GetString("CustomerPO").empty()) info.push_back("Votre commande : " + document.GetString("CustomerPO"));
  if (!document.GetString("TrackingRef").empty()) info.push_back("Suivi : " + document.GetString("TrackingRef"));
  double y = LFormDrawHeader(canvas, seller, kPackingSlipTitle, info, warning);
  Delivery delivery = DeliveryOf(profile, document);
  y = LFormDrawParty(canvas, "Livrer à", delivery.name, {delivery.address}, y);

  double width = canvas.Right() - canvas.Left();
  LPdfTable table(canvas,
                  {{"Réf.", 80, LTextAlign::kLeft}, {"Désignation", width - 80 - 70, LTextAlign::kLeft},
                   {"Qté", 70, LTextAlign::kRight}},
                  canvas.Left(), [&continued](LPdfCanvas& c) { return LFormContinuedTop(c, continued); });
  table.Heading(y);
  LFKItemCollectionRecord items = document.Items();
  int discountLine = items.GetFixedPercentageDiscountItem();
  double totalQuantity = 0;
  for (int i = 0; i < items.GetItemCount(); ++i) {
    if (i == discountLine) continue;  // a discount is not a parcel's content
    table.Row({items.GetItemCode(i), items.GetItemDescription(i), format.Quantity(items.GetItemQty(i))}, y);
    totalQuantity += items.GetItemQty(i);
  }
  table.Row({"", "Nombre d'articles", format.Quantity(totalQuantity)}, y, true);
  y += 10;
  LFormNotesAndFooter(canvas, continued, slipOptions, nullptr, y);
  return canvas.Finish(pdf, error);
}

bool LShippingLabelPdf(LProfile& profile, const LSalesDocument& document, std::string& pdf, std::string* error) {
  LPrintFormat format(profile);
  LFormSeller seller(profile);
  const std::string& key = document.GetPrimaryKey();
  LPdfCanvas canvas(seller.paper);
  canvas.SetTitle("Etiquette " + key);
  canvas.SetAuthor(seller.company.GetName());

  const double x = canvas.Left(), top = canvas.Top(), pad = 14, inner = kLabelWidthPt - 2 * pad;
  canvas.Line(x, top, x + kLabelWidthPt, top, 1);
  canvas.Line(x, top + kLabelHeightPt, x + kLabelWidthPt, top + kLabelHeightPt, 1);
  canvas.Line(x, top, x, top + kLabelHeightPt, 1);
  canvas.Line(x + kLabelWidthPt, top, x + kLabelWidthPt, top + kLabelHeightPt, 1);

  LTextStyle label;
  label.sizePt = 8;
  label.gray = 0.4;
  LTextStyle small;
  small.sizePt = 9;
  double y = top + pad;
  y += canvas.Text(x + pad, y, inner, "Expéditeur", label) + 2;
  y += canvas.Text(x + pad, y, inner, LFormJoinLines({seller.company.GetName(), seller.company.GetAddress()}), small);
  y += 16;
  canvas.Line(x + pad, y, x + kLabelWidthPt - pad, y, 0.5, 0.6);
  y += 16;

  Delivery delivery = DeliveryOf(profile, document);
  y += canvas.Text(x + pad, y, inner, "Destinataire", label) + 4;
  LTextStyle big;
  big.sizePt = 16;
  big.bold = true;
  y += canvas.Text(x + pad, y, inner, delivery.name, big) + 4;
  LTextStyle address;
  address.sizePt = 14;
  canvas.Text(x + pad, y, inner, delivery.address, address);

  std::vector<std::string> reference = {"Document N° " + key + " du " + format.Date(document.GetDate())};
  if (!document.GetString("TrackingRef").empty()) reference.push_back("Suivi : " + document.GetString("TrackingRef"));
  std::string referenceText = LFormJoinLines(reference);
  double referenceHeight = canvas.TextHeight(referenceText, inner, small);
  canvas.Text(x + pad, top + kLabelHeightPt - pad - referenceHeight, inner, referenceText, small);
  return canvas.Finish(pdf, error);
}
