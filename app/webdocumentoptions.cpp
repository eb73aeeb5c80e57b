// Route "settingsdocuments?kind=RECORD": the options of one kind of document (its notes and
// footer texts, the terms of the documents that fall due, the template form of the sales
// documents), with the options every document shares below them.
#include "app/websettings.h"
#include "invoice/shared/documentoptions.h"
#include "invoice/shared/profile.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kOnReceiptRadio = 101;
constexpr int kInDaysRadio = 102;
constexpr int kDaysControl = 103;
constexpr int kNotesControl = 104;
constexpr int kFooterControl = 105;
constexpr int kFormControl = 106;
constexpr int kLineDiscountsControl = 201;
constexpr int kParenthesesControl = 202;
constexpr int kFutureDatesControl = 203;

// The kind named by the request; invoices when it names none.
const LDocumentOptionKind& RequestedKind(LWebletForm& form) {
  const LDocumentOptionKind* kind = LDocumentOptionKindFind(form.GetParam("kind"));
  return kind != nullptr ? *kind : LDocumentOptionKinds().front();
}

}  // namespace

LWebDocumentOptionsDialog::LWebDocumentOptionsDialog(LWebletForm& form)
    : LWebSettingsDialog(form, "settingsdocuments", "options des documents") {}

void LWebDocumentOptionsDialog::InitDialog() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LDocumentOptions options;
  LDocumentOptionsLoad(profile, RequestedKind(form_), options);
  SetRadioCheck(options.paymentTerms == kTermsOnReceipt ? kOnReceiptRadio : kInDaysRadio);
  SetText(kDaysControl, options.termsDays);
  SetText(kNotesControl, options.notes);
  SetText(kFooterControl, options.footer);
  SetText(kFormControl, options.form);
  LGeneralDocumentOptions general;
  LGeneralDocumentOptionsLoad(profile, general);
  SetCheck(kLineDiscountsControl, general.lineDiscounts);
  SetCheck(kParenthesesControl, general.parenthesesForNegative);
  SetCheck(kFutureDatesControl, general.prohibitFutureDates);
}

void LWebDocumentOptionsDialog::Generate() {
  const LDocumentOptionKind& current = RequestedKind(form_);
  AddHiddenField("kind", current.record);
  std::string links;
  for (const LDocumentOptionKind& kind : LDocumentOptionKinds()) {
    std::string label(kind.label), record(kind.record);
    links += &kind == &current ? LWebFormat("<b>%H</b> ", label.c_str())
                               : LWebFormat("<a href='settingsdocuments?kind=%U'>%H</a> ", record.c_str(), label.c_str());
  }
  form_.Write("<tr><td colspan=2 class=documentkinds>" + links + "</td></tr>");
  StartGroupBox(current.label);
  if (current.hasTerms) {
    AddRadioButton(kOnReceiptRadio, "Payable à réception", true);
    AddRadioButton(kInDaysRadio, "Payable sous un délai (jours) :", true);
    AddInput(kDaysControl, "Délai de paiement (jours) :", "", 4);
    EnableControlOnRadioCheck(kInDaysRadio, kDaysControl);
  }
  AddEdit(kNotesControl, "Notes :", 60, 3);
  AddEdit(kFooterControl, "Pied de page :", 60, 2);
  LProfile profile(WLSessionBusinessFolder(form_));
  if (std::vector<std::string> forms = LDocumentOptionsForms(profile, current); !forms.empty()) {
    std::vector<std::string> texts = {"(formulaire par défaut)"}, values = {""};
    texts.insert(texts.end(), forms.begin(), forms.end());
    values.insert(values.end(), forms.begin(), forms.end());
    AddPullDownList(kFormControl, "Formulaire imprimé :", texts, values);
  }
  EndGroupBox();
  StartGroupBox("Tous les documents");
  AddCheckBox(kLineDiscountsControl, "Remises par ligne (colonne « Remise » des documents)");
  AddCheckBox(kParenthesesControl, "Montants négatifs entre parenthèses dans les rapports");
  AddCheckBox(kFutureDatesControl, "Refuser les dates à plus d'un an dans le futur");
  EndGroupBox();
}

bool LWebDocumentOptionsDialog::CmOk() {
  const LDocumentOptionKind& kind = RequestedKind(form_);
  LDocumentOptions options;
  options.paymentTerms = GetRadioCheck(kOnReceiptRadio) ? kTermsOnReceipt : kTermsInDays;
  options.termsDays = GetTextAndTrim(kDaysControl);
  options.notes = GetText(kNotesControl);
  options.footer = GetText(kFooterControl);
  options.form = GetText(kFormControl);
  if (std::string message = LDocumentOptionsCheck(kind, options); !message.empty()) {
    PopupControlDataInvalid(kDaysControl, message);
    return false;
  }
  LGeneralDocumentOptions general;
  general.lineDiscounts = IsChecked(kLineDiscountsControl);
  general.parenthesesForNegative = IsChecked(kParenthesesControl);
  general.prohibitFutureDates = IsChecked(kFutureDatesControl);
  LProfile profile(WLSessionBusinessFolder(form_));
  if (!LDocumentOptionsStore(profile, kind, options) || !LGeneralDocumentOptionsStore(profile, general)) {
    PopupBoxError("Impossible d'enregistrer les options des documents.");
    return false;
  }
  return true;
}
