// The chart of accounts on the web: "acclist", "newacc", "accedit", "accdelete".
#include <algorithm>
#include <memory>

#include "accounts/accountlistwindow.h"
#include "accounts/accounts.h"
#include "accounts/accountsdlg.h"
#include "accounts/linkedaccounts.h"
#include "accounts/webledger.h"
#include "accounts/webpagemainex.h"
#include "accounts/webquestion.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/gen/money.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/process.h"
#include "llib/gen/trim.h"
#include "llib/web/webformat.h"
#include "llib/web/webjob.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"
#include "llib/web/webletroutes.h"

namespace {

constexpr int kNameControl = 101;
constexpr int kNumberControl = 102;
constexpr int kFirstSubTypeControl = 103;  // one list per type: 103 asset ... 107 expense
constexpr int kClassControl = 110;
constexpr int kHeaderControl = 111;
constexpr int kCashControl = 112;
constexpr int kTaxIncludedControl = 113;
constexpr int kOpeningControl = 114;
constexpr int kSlotControl = 115;
constexpr int kJobControl = 190;            // the AJAX command that follows a renumbering
constexpr int kFirstTypeRadio = 201;        // 201 asset ... 205 expense (group 2)
constexpr std::string_view kRestoreButton = "Restaurer";

const std::vector<std::string> kClassTexts = {"", "Exploitation", "Investissements", "Finance"};

std::vector<std::string> SubTypeTexts(int type) {
  std::vector<std::string> texts{""};
  auto add = [&](const auto& list) { texts.insert(texts.end(), list.begin(), list.end()); };
  switch (type) {
    case kAccountAsset: add(kAssetSubTypes); break;
    case kAccountLiability: add(kLiabilitySubTypes); break;
    case kAccountIncome: add(kIncomeSubTypes); break;
    case kAccountExpense: add(kExpenseSubTypes); break;
    default: break;
  }
  return texts;
}

// The slots a type may be linked to, by name, after "--- Aucun ---".
std::vector<std::string> SlotTexts(int type) {
  std::vector<std::string> texts{std::string(LDefAccountSlotName(0))};
  for (int slot : LDefAccountSlotsForType(type)) texts.emplace_back(LDefAccountSlotName(slot));
  return texts;
}

int IndexOf(const std::vector<std::string>& texts, const std::string& text) {
  for (std::size_t i = 0; i < texts.size(); ++i)
    if (texts[i] == text) return static_cast<int>(i);
  return 0;
}

// The control a refusal of the chart belongs to.
int ControlOfMessage(const std::string& message, int typeControl) {
  if (message.find("nom") != std::string::npos) return kNameControl;
  if (message.find("type de compte") != std::string::npos) return typeControl;
  if (message.find("classification") != std::string::npos) return kClassControl;
  if (message.find("solde d'ouverture") != std::string::npos) return kOpeningControl;
  return kNumberControl;
}

std::string Money(const LProfile& profile, long long amount) { return LFormatMoney(amount, profile.GetCurrencyFormat()); }

}  // namespace

// ---- Shared base -------------------------------------------------------------------------------------

LWebLedgerDialog::LWebLedgerDialog(LWebletForm& form, std::string_view routeName, std::string_view currentTab)
    : LWebDialogEx(form, routeName), currentTab_(currentTab) {
  AddNavLink("help/" + currentTab_ + ".html", "Aide");
}

void LWebLedgerDialog::PrintHeader() {
  LWebDialogEx::PrintHeader();
  WLWriteNavTabs(form_, currentTab_);
}

void LWebLedgerDialog::AskOrRefuse(const LWebAsker& asker, int control, const std::string& message) {
  if (!asker.HasPending()) {
    PopupControlDataInvalid(control, message);
    return;
  }
  WriteAnswerScript(asker.AskScript(form_.GetParam("submit")));
  SetAnswerWritten();
}

// ---- "acclist" ---------------------------------------------------------------------------------------

class LWebAccountsPage : public LWebPageMainEx {
 public:
  explicit LWebAccountsPage(LWebletForm& form) : LWebPageMainEx(form, "acclist", "Plan comptable") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    bool all = form_.GetParam("all") == "1";
    bool mayChange = WLMayChangeData(form_);
    if (std::string message = form_.GetParam("msg"); !message.empty())
      form_.Write(LWebFormat("<p class=errormessage id=pagemessage>%H</p>", message.c_str()));
    form_.Write("<p>");
    if (mayChange) form_.Write("<a href='newacc' class=actionlink id=newaccount>Nouveau compte</a> ");
    form_.Write(all ? "<a href='acclist' class=actionlink>Masquer les comptes supprimés</a></p>"
                    : "<a href='acclist?all=1' class=actionlink>Afficher les comptes supprimés</a></p>");
    LHtmlList list(form_, 0, true);
    list.AddColumn("N°", 10, kListAlignLeft);
    list.AddColumn("Description", 38, kListAlignLeft);
    list.AddColumn("Type", 15, kListAlignLeft);
    list.AddColumn("Sens", 8, kListAlignLeft);
    list.AddColumn("Solde", 17, kListAlignRight);
    list.AddColumn("", 12, kListAlignCenter, false);
    LAccountList accounts(profile);
    LAccount account;
    for (LFileStoreIteratorBase it(accounts, account); account.IsAttached(); it.Next(account)) {
      bool deleted = account.IsDeleted();
      if (deleted && !all) continue;
      std::string number = account.GetNumber();
      auto row = std::make_unique<LHtmlListRow>();
      std::string description = account.GetDescription();
      if (account.IsHeader()) description = "<b>" + LHtmlEscape(description) + "</b>";
      else description = LHtmlEscape(description);
      if (deleted) description += " <i>(supprimé)</i>";
      row->AddCellTextLink(LWebFormat("accedit?id=%U", number.c_str()), number);
      row->AddCell(account.GetDescription(), description);
      row->AddCellText(std::string(account.GetTypeString()));
      row->AddCellText(std::string(account.GetNormalSideString()));
      long long balance = account.GetTotalBalance();
      row->AddCell(LHtmlListRow::NumberOrderKey(static_cast<int>(balance / 100)), LHtmlEscape(Money(profile, balance)));
      row->AddCell("", mayChange ? LWebFormat("<a href='accdelete?id=%U' class=deletelink>Supprimer</a>", number.c_str())
                                 : std::string());
      list.AddRow(std::move(row));
    }
    UseListScript();
    list.Write(form_, 100, 0);
  }
};

// ---- "newacc" ----------------------------------------------------------------------------------------

class LWebNewAccountDialog : public LWebLedgerDialog {
 public:
  explicit LWebNewAccountDialog(LWebletForm& form) : LWebLedgerDialog(form, "newacc", "acclist") {
    SetTitle("Nouveau compte");
    SetOkPage("acclist");
    SetCancelPage("acclist");
  }
  void Generate() override {
    AddInput(kNameControl, "Nom :", "", 40);
    StartGroupBox("Type de compte");
    for (int type = kAccountAsset; type <= kAccountExpense; ++type) {
      AddRadioButton(kFirstTypeRadio + type - 1, LAccountTypeName(type), true);
      if (LAccountSubTypeCount(type) > 0)
        AddPullDownList(kFirstSubTypeControl + type - 1, "Sous-type :", SubTypeTexts(type));
    }
    EndGroupBox();
    AddPullDownList(kClassControl, "Flux de trésorerie :", kClassTexts);
    AddInput(kNumberControl, "Numéro :", "", 10);
    AddCheckBox(kHeaderControl, "Compte de regroupement", true);
    AddCheckBox(kCashControl, "Compte de banque ou de caisse", true);
    AddCheckBox(kTaxIncludedControl, "Montants toutes taxes comprises");
    AddInput(kOpeningControl, "Solde d'ouverture :", "", 14);
    std::vector<std::string> slots{std::string(LDefAccountSlotName(0))};
    for (int slot = 1; slot <= 9; ++slot) slots.emplace_back(LDefAccountSlotName(slot));
    AddPullDownList(kSlotControl, "Compte associé :", slots);
  }
  void EnableControls() override {
    for (int type = kAccountAsset; type <= kAccountExpense; ++type)
      if (LAccountSubTypeCount(type) > 0)
        EnableControlOnRadioCheck(kFirstTypeRadio + type - 1, kFirstSubTypeControl + type - 1);
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    LNewAccountDlg dialog;
    dialog.name = GetText(kNameControl);
    int chosen = GetRadioChoice(kFirstTypeRadio);
    dialog.type = chosen == 0 ? 0 : chosen - kFirstTypeRadio + 1;
    if (dialog.type > 0) {
      std::vector<std::string> subTypes = SubTypeTexts(dialog.type);
      dialog.subTypeEntry = IndexOf(subTypes, GetText(kFirstSubTypeControl + dialog.type - 1));
    }
    dialog.classificationEntry = IndexOf(kClassTexts, GetText(kClassControl));
    dialog.number = GetText(kNumberControl);
    dialog.header = IsChecked(kHeaderControl);
    dialog.cash = IsChecked(kCashControl);
    dialog.taxIncluded = IsChecked(kTaxIncludedControl);
    std::string opening = GetTextAndTrim(kOpeningControl);
    dialog.openingBalance = opening.empty() ? opening : LPlainAmountText(opening, profile.GetCurrencyFormat());
    dialog.linkedSlot = GetText(kSlotControl);
    std::string message;
    if (dialog.CmAddNewAcct(profile, &message)) return true;
    int typeControl = dialog.type > 0 ? kFirstSubTypeControl + dialog.type - 1 : kFirstTypeRadio;
    if (message.find("Veuillez sélectionner le type de compte.") == 0) typeControl = kFirstTypeRadio;
    PopupControlDataInvalid(ControlOfMessage(message, typeControl), message);
    return false;
  }
};

// ---- "accedit" ---------------------------------------------------------------------------------------

class LWebAccountDialog : public LWebLedgerDialog {
 public:
  explicit LWebAccountDialog(LWebletForm& form) : LWebLedgerDialog(form, "accedit", "acclist") {
    SetTitle("Compte");
    SetOkPage("acclist");
    SetCancelPage("acclist");
    number_ = form.GetParam("id");
    if (LProfile profile(WLSessionBusinessFolder(form)); LAccountList(profile).Open(account_, number_)) {
      found_ = true;
      account_.DetachWithoutSave();
      if (account_.IsDeleted()) AddSpecialSubmit(kRestoreButton, "acclist");
    }
  }
  void InitDialog() override {
    if (!found_) return;
    LProfile profile(WLSessionBusinessFolder(form_));
    LAccountDlg dialog;
    (void)dialog.Load(profile, number_);
    SetText(kNameControl, dialog.name);
    SetText(kNumberControl, dialog.number);
    SetCheck(kHeaderControl, dialog.header);
    SetCheck(kCashControl, dialog.cash);
    SetCheck(kTaxIncludedControl, dialog.taxIncluded);
    SetText(kClassControl, kClassTexts[static_cast<std::size_t>(std::clamp(dialog.classificationEntry, 0, 3))]);
    long long opening = 0;
    (void)LParseAmount(dialog.openingBalance, profile.GetCurrencyDigits(), opening);
    SetText(kOpeningControl, LFormatNumber(opening, profile.GetCurrencyFormat()));
    SetText(kSlotControl, dialog.linkedSlot);
    int type = account_.GetType();
    if (type == kAccountIncome || type == kAccountExpense) {
      std::vector<std::string> texts = SubTypeTexts(type);
      std::size_t entry = static_cast<std::size_t>(account_.GetSubClass()) + 1;
      if (entry < texts.size()) SetText(kFirstSubTypeControl, texts[entry]);
    }
  }
  void Generate() override {
    if (!found_) {
      AddRowError("Ce compte n'existe pas.");
      return;
    }
    AddHiddenField("id", number_);
    AddHiddenField("job", "");
    form_.Write("<tr><td colspan=2><div id=jobprogress class=jobprogress></div></td></tr>");
    AddStaticBold(std::string(account_.GetTypeString()) + (account_.IsDeleted() ? " (compte supprimé)" : ""));
    AddInput(kNameControl, "Nom :", "", 40);
    AddInput(kNumberControl, "Numéro :", "", 10);
    int type = account_.GetType();
    if (type == kAccountIncome || type == kAccountExpense)
      AddPullDownList(kFirstSubTypeControl, "Sous-type :", SubTypeTexts(type));
    if (type != kAccountIncome && type != kAccountExpense)
      AddPullDownList(kClassControl, "Flux de trésorerie :", kClassTexts);
    AddCheckBox(kHeaderControl, "Compte de regroupement");
    AddCheckBox(kCashControl, "Compte de banque ou de caisse");
    AddCheckBox(kTaxIncludedControl, "Montants toutes taxes comprises");
    AddInput(kOpeningControl, "Solde d'ouverture :", "", 14);
    AddPullDownList(kSlotControl, "Compte associé :", SlotTexts(type));
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    if (!found_) {
      PopupBoxError("Ce compte n'existe pas.");
      return false;
    }
    LProfile profile(WLSessionBusinessFolder(form_));
    if (form_.GetParam("submit") == kRestoreButton) {
      LFixedAsker unused(false);
      return LAccountListWindow(profile, unused).CmRestore(number_);
    }
    auto dialog = std::make_shared<LAccountDlg>();
    (void)dialog->Load(profile, number_);
    dialog->name = GetText(kNameControl);
    dialog->number = GetText(kNumberControl);
    dialog->header = IsChecked(kHeaderControl);
    dialog->cash = IsChecked(kCashControl);
    dialog->taxIncluded = IsChecked(kTaxIncludedControl);
    int type = account_.GetType();
    if (type == kAccountIncome || type == kAccountExpense) {
      int entry = IndexOf(SubTypeTexts(type), GetText(kFirstSubTypeControl));
      dialog->subClass = entry > 0 ? entry - 1 : -1;
      dialog->classificationEntry = 0;
    } else {
      dialog->classificationEntry = IndexOf(kClassTexts, GetText(kClassControl));
    }
    std::string opening = GetTextAndTrim(kOpeningControl);
    dialog->openingBalance = opening.empty() ? opening : LPlainAmountText(opening, profile.GetCurrencyFormat());
    dialog->linkedSlot = GetText(kSlotControl);
    auto asker = std::make_shared<LWebAsker>(form_);
    if (LTrim(dialog->number, " \t") == number_) return Answer(*dialog, *asker, profile);
    // A new number: the account is renumbered everywhere, a long operation that runs on while
    // the page follows it.
    std::string pressed = form_.GetParam("submit");
    std::string folder = WLSessionBusinessFolder(form_);
    std::string id = LWebJobStart(JobOwner(), [dialog, answers = form_.parameters, folder, pressed](
                                                        LProcessInterface& process, LWebJobAnswer& answer) {
      LProfile jobProfile(folder);
      LWebletForm replay(nullptr);
      replay.parameters = answers;
      LWebAsker jobAsker(replay);
      std::string message;
      if (dialog->CmOk(jobProfile, jobAsker, process, &message)) answer.script = "window.location = 'acclist';\n";
      else if (jobAsker.HasPending()) answer.script = jobAsker.AskScript(pressed);
      else answer.script = ErrorScript(message);
    });
    WriteAnswerScript("document.getElementById('jobprogress').textContent = 'Modifier le numéro de compte…';\n" +
                      LWebJobPollScript("accedit", kJobControl, id, "jobprogress"));
    SetAnswerWritten();
    return false;
  }
  void CommandAJAX(int controlId, const std::string&) override {
    if (controlId != kJobControl) return;
    LWebJobState state;
    std::string id = form_.GetParam("job");
    if (!LWebJobPoll(id, JobOwner(), state)) {
      form_.Write("DisableSubmits(false);\n");
      return;
    }
    if (state.finished) {
      form_.Write("document.getElementById('jobprogress').textContent = '';\n" + state.answer.script);
      return;
    }
    std::string text = "Modifier le numéro de compte";
    if (!state.status.empty()) text += " : " + state.status;
    if (state.progress >= 0) text += LWebFormat(" (%d %%)", static_cast<int>(state.progress * 100));
    form_.Write(LWebFormat("ShowJobProgress('jobprogress', '%s', 'accedit', %d, '%s');\n", LJScriptEscape(text).c_str(),
                           kJobControl, LJScriptEscape(id).c_str()));
  }

 private:
  static std::string ErrorScript(const std::string& message) {
    return LWebFormat("ShowControlError('%d', '%s');window.scroll(0,0);\nDisableSubmits(false);\n",
                      ControlOfMessage(message, kNumberControl), LJScriptEscape(message).c_str());
  }
  bool Answer(LAccountDlg& dialog, LWebAsker& asker, LProfile& profile) {
    LProcessInterfaceVoid silent;
    std::string message;
    if (dialog.CmOk(profile, asker, silent, &message)) return true;
    AskOrRefuse(asker, ControlOfMessage(message, kNumberControl), message);
    return false;
  }
  // Who may follow the renumbering: the session's user in the session's business.
  std::string JobOwner() { return std::string(form_.session.GetString("user", "")) + "|" + WLSessionBusinessFolder(form_); }

  std::string number_;
  LAccount account_;
  bool found_ = false;
};

// ---- "accdelete" -------------------------------------------------------------------------------------

void WLAccountDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  if (!WLMayChangeData(form)) {
    WLRedirect(form, LWebFormat("acclist?msg=%U", kWebViewerRefusal));
    return;
  }
  LProfile profile(WLSessionBusinessFolder(form));
  LWebAsker asker(form);
  std::vector<std::string> messages;
  std::string number = form.GetParam("id");
  if (!LAccountIsLive(profile, number) && !LAccountList(profile).TestRecordExists(number)) {
    WLRedirect(form, LWebFormat("acclist?msg=%U", LAccountNotInChartMessage(number).c_str()));
    return;
  }
  int done = LAccountListWindow(profile, asker).CmRemove({number}, messages);
  if (done == 0 && asker.HasPending()) {
    asker.WriteQuestionPage(form, "acclist");
    return;
  }
  bool wasDeleted = form.GetParam("all") == "1";
  std::string target = messages.empty() ? std::string("acclist") : LWebFormat("acclist?msg=%U", messages.front().c_str());
  if (wasDeleted && messages.empty()) target += "?all=1";
  WLRedirect(form, target);
}

void LAccountsInstallChartPages() {
  static const LWebletRoute kRoutes[] = {
      {"acclist", WLWebPageRun<LWebAccountsPage>},
      {"newacc", WLWebDialogRun<LWebNewAccountDialog>},
      {"accedit", WLWebDialogRun<LWebAccountDialog>},
      {"accdelete", WLAccountDelete},
  };
  LWebletInstallScripts(kRoutes);
}
