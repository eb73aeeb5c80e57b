#include "invoice/sales/webparties.h"

#include <algorithm>

#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/log.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kKeyControl = 101;
constexpr int kFirstFieldControl = 102;

// The labels of the fields, in the order of LPartyFields.
std::string_view LabelOf(std::string_view field) {
  if (field == "Name") return "Nom :";
  if (field == "Email") return "E-mail :";
  if (field == "CommissionRate") return "Taux de commission (%) :";
  if (field == "Description") return "Description :";
  if (field == "PriceLevel") return "Remise sur le prix des articles (%) :";
  return field;
}

std::string ColumnOf(std::string_view field) {
  std::string label(LabelOf(field));
  if (label.size() > 2 && label.substr(label.size() - 2) == " :") label.resize(label.size() - 2);
  return label;
}

void BindAll(LWebPartyDialog& dialog, LPartyKind kind, const std::function<void(int, std::string_view)>& bind) {
  int id = kFirstFieldControl;
  for (const LPartyField& field : LPartyFields(kind)) bind(id++, field.name);
}

void Delete(LWebletForm& form, LPartyKind kind, std::string_view list) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  std::string key = form.GetParam("id");
  if (!key.empty() && WLMayChangeData(form)) {
    LProfile profile(WLSessionBusinessFolder(form));
    if (profile.MainList(LPartyKindOf(kind).list).Delete(key))
      LLogInfo("« %s » a été supprimé de %s.", key.c_str(), std::string(LPartyKindOf(kind).list).c_str());
  }
  WLRedirect(form, list);
}

}  // namespace

LWebPartyListPage::LWebPartyListPage(LWebletForm& form, LPartyKind kind, std::string_view route,
                                     std::string_view title, std::string_view addText)
    : LWebPageMainEx(form, std::string(route) + "list", title), kind_(kind), route_(route), addText_(addText) {}

void LWebPartyListPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  const LFileStoreListBase& records = profile.MainList(LPartyKindOf(kind_).list);
  LHtmlList list(form_, 0, true);
  list.AddColumn("Code", 15, kListAlignLeft, true);
  for (const LPartyField& field : LPartyFields(kind_))
    list.AddColumn(ColumnOf(field.name), 70 / static_cast<int>(LPartyFields(kind_).size()),
                   field.type == LFieldType::kPercent ? kListAlignRight : kListAlignLeft, true);
  list.AddColumn("", 10, kListAlignCenter, false);
  bool mayChange = WLMayChangeData(form_);
  std::vector<std::string> keys;
  LRecord record;
  for (LFileStoreIteratorBase it(records, record); record.IsAttached(); it.Next(record))
    keys.push_back(record.GetPrimaryKey());
  std::sort(keys.begin(), keys.end());
  std::string prop = route_ + "prop", back = route_ + "list";
  for (const std::string& key : keys) {
    LRecord one;
    if (!records.Open(one, key)) continue;
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellTextLink(
        LWebFormat("%s?id=%U&onok=%s&oncancel=%s", prop.c_str(), key.c_str(), back.c_str(), back.c_str()), key);
    for (const LPartyField& field : LPartyFields(kind_))
      row->AddCellText(LPartyFieldText(field, one.GetString(field.name), profile.GetCurrencyDigits()));
    one.DetachWithoutSave();
    LWebListDeleteCell(*row, mayChange, LWebFormat("%sdelete?id=%U", route_.c_str(), key.c_str()),
                       "Supprimer « " + key + " » ?");
    list.AddRow(std::move(row));
  }
  UseListScript();
  list.Write(form_, 100);
  if (mayChange)
    form_.Write(LWebFormat("<p><a href='%s?onok=%s&oncancel=%s' class=actionlink>", prop.c_str(), back.c_str(),
                           back.c_str()) +
                LHtmlEscape(addText_) + "</a></p>");
}

LWebSalesPersonsPage::LWebSalesPersonsPage(LWebletForm& form)
    : LWebPartyListPage(form, LPartyKind::kSalesPerson, "salesperson", "Vendeurs", "Ajouter un vendeur") {}

LWebGroupsPage::LWebGroupsPage(LWebletForm& form)
    : LWebPartyListPage(form, LPartyKind::kGroup, "group", "Groupes de clients", "Ajouter un groupe de clients") {}

LWebSalesPersonDialog::LWebSalesPersonDialog(LWebletForm& form)
    : LWebPartyDialog(form, "salespersonprop", LPartyKind::kSalesPerson, "salespersonlist") {
  SetTitle("Vendeur");
  AddNavLink("salespersonlist", "Vendeurs");
  SetOkPage("salespersonlist");
  SetCancelPage("salespersonlist");
  BindKey(kKeyControl, "Code :", 15);
  BindAll(*this, LPartyKind::kSalesPerson,
          [this](int id, std::string_view field) { BindPartyField(id, field, LabelOf(field), 30); });
  SetKeyMessages("Veuillez entrer le code du vendeur.", "Le vendeur « %s » existe déjà.");
}

LWebGroupDialog::LWebGroupDialog(LWebletForm& form)
    : LWebPartyDialog(form, "groupprop", LPartyKind::kGroup, "grouplist") {
  SetTitle("Groupe de clients");
  AddNavLink("grouplist", "Groupes de clients");
  SetOkPage("grouplist");
  SetCancelPage("grouplist");
  BindKey(kKeyControl, "Code :", 15);
  BindAll(*this, LPartyKind::kGroup,
          [this](int id, std::string_view field) { BindPartyField(id, field, LabelOf(field), 30); });
  SetKeyMessages("Veuillez entrer le code du groupe.", "Le groupe « %s » existe déjà.");
}

void WLSalesPersonDelete(LWebletForm& form) { Delete(form, LPartyKind::kSalesPerson, "salespersonlist"); }
void WLGroupDelete(LWebletForm& form) { Delete(form, LPartyKind::kGroup, "grouplist"); }
