#include "llib/web/webdialog.h"

#include "llib/gen/textcase.h"
#include "llib/gen/textnum.h"
#include "llib/gen/trim.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

std::string IdText(int id) { return std::to_string(id); }

constexpr std::string_view kButtonStyle = "style='font-family: Arial,sans-serif; font-size: 10pt;'";

}  // namespace

LWebDialog::LWebDialog(LWebletForm& form, std::string_view routeName) : LWebPage(form), routeName_(routeName) {}

// ---- Round trip -----------------------------------------------------------------------------------

void LWebDialog::Run() {
  if (Authenticate()) Answer();
}

void LWebDialog::RunUpload() {
  if (!Authenticate()) return;
  LWebletUploadResult result = LWebletReadUpload(form_, uploadedFiles_, uploadLimit_);
  if (result == LWebletUploadResult::kOk) {
    Answer();
    return;
  }
  WLWriteScriptAnswerHeader(form_);
  inSubmit_ = true;
  PopupBoxError(result == LWebletUploadResult::kTooLong
                    ? LWebFormat("Le fichier est trop volumineux : %zu octets au plus.", uploadLimit_)
                    : std::string("Le fichier n'a pas pu être reçu."));
  inSubmit_ = false;
}

void LWebDialog::Answer() {
  if (SendAJAXCommands()) return;
  std::string pressed = form_.GetParam("submit");
  if (pressed.empty()) pressed = form_.GetParam("submitdef");
  if (pressed.empty()) {
    InitDialog();
    _PrintDialog();
    return;
  }
  WLWriteScriptAnswerHeader(form_);
  AnswerPress(pressed);
  form_.SendHeldHead();  // an answer without script still gets its head at once
}

void LWebDialog::AnswerPress(const std::string& pressed) {
  if (pressed == okText_) {
    RunOkThenGo(TargetParam("onok", okPage_));
    return;
  }
  if (!cancelText_.empty() && pressed == cancelText_) {
    inSubmit_ = true;
    CmCancel();
    inSubmit_ = false;
    if (!answerWritten_) Redirect(TargetParam("oncancel", cancelPage_));
    return;
  }
  for (const LSpecialSubmit& special : specials_) {
    if (LSameText(pressed, special.text)) {
      RunOkThenGo(special.target.empty() ? RefererTarget() : special.target);
      return;
    }
  }
}

void LWebDialog::RunOkThenGo(std::string_view target) {
  inSubmit_ = true;
  bool done = CmOk();
  inSubmit_ = false;
  if (answerWritten_) return;
  if (done) Redirect(target);
  else form_.Write("DisableSubmits(false)");
}

std::string LWebDialog::TargetParam(std::string_view name, std::string_view configured) const {
  std::string fallback = configured.empty() ? "main" : std::string(configured);
  return LWebSafeTarget(form_.GetParam(name, fallback), fallback);
}

// The referring page as a target of this server: "http://<host>/userlist" gives "userlist".
std::string LWebDialog::RefererTarget() const {
  const char* referer = form_.GetHeader("Referer");
  const char* host = form_.GetHeader("Host");
  if (referer == nullptr || host == nullptr) return "main";
  std::string_view text = referer;
  for (std::string_view scheme : {"http://", "https://"}) {
    std::string prefix = std::string(scheme) + host + "/";
    if (text.substr(0, prefix.size()) == prefix) return LWebSafeTarget(text.substr(prefix.size()), "main");
  }
  return "main";
}

void LWebDialog::Redirect(std::string_view target) {
  form_.Write("window.location = '" + LJScriptEscape(LWebSafeTarget(target, "main")) + "';\n");
}

// ---- The page -----------------------------------------------------------------------------------

void LWebDialog::_PrintDialog() {
  PrintHeader();
  std::string confirmPrefix;
  for (const LSpecialSubmit& special : specials_)
    if (!special.question.empty()) confirmPrefix = "ConfirmSpecialSubmit() && ";
  std::string route = LHtmlEscape(routeName_);
  std::string head = LWebFormat("<form id=dialogform action='%s' method=post style='width:100%%'", route.c_str());
  if (upload_) {
    head += LWebFormat(" enctype='multipart/form-data' target=uploadIFrame onsubmit='return (%sstartUpload());'>",
                       confirmPrefix.c_str());
    // The empty frame loads before the page script that defines uploadDone has been read.
    head += "<iframe id=uploadIFrame name=uploadIFrame onload='if (window.uploadDone) uploadDone();'  height=1 width=1 "
            "style='visibility:hidden;'></iframe>";
  } else {
    head += LWebFormat(" onsubmit='return (%sCmSubmit())'>", confirmPrefix.c_str());
  }
  std::string onOk = TargetParam("onok", okPage_);
  std::string onCancel = TargetParam("oncancel", cancelPage_);
  head += LWebFormat("<input type=hidden name=onok value='%H'>", onOk.c_str());
  head += LWebFormat("<input type=hidden name=oncancel value='%H'>", onCancel.c_str());
  head += "<table id=dialogcontainer border=0><tr><td>";
  if (!message_.empty())
    head += LWebFormat("<div%s style='color:#a00000; font-weight:bold; padding:0px 12px;'>%H</div><br>",
                       " id=dialogmessage", message_.c_str());
  head += LWebFormat("<table id=controltable style='border:#bbbbbb 1px solid; width:%s'>", controlTableWidth_.c_str());
  form_.Write(head);
  Generate();
  form_.Write("</table>");
  PrintSubmitButtons();
  form_.Write("</td></tr></table></form>");

  int focus = focusControl_ != 0 ? focusControl_ : firstControl_;
  if (focus != 0)
    AddJScriptFunctionPrintf(
        "LAddEventListener(window, 'onload', function() {setTimeout('document.getElementById(%d).focus();', 1)});\n",
        focus);
  AddJScript(
      "function DisableSubmits(bDisable) {submits = document.getElementsByName('submit');for (i = 0; i < "
      "submits.length; i++) {submits[i].disabled = bDisable;}}\n");
  AddJScriptFunctionPrintf(
      "function CmSubmit() {window.onbeforeunload = null;DisableSubmits(true);SimpleAjaxCall('%s', "
      "GetParams('dialogform') + 'submit=' + document.pressed, HandleAjaxJSReturn, function() { "
      "DisableSubmits(false); }, function() { DisableSubmits(false); }, %u);return false;}\n",
      LJScriptEscape(routeName_).c_str(), kWebDialogAjaxTimeoutMs);
  if (!confirmPrefix.empty()) {
    std::string checks;
    for (const LSpecialSubmit& special : specials_)
      if (!special.question.empty())
        checks += "if (document.pressed == '" + LJScriptEscape(special.text) + "') return confirm('" +
                  LJScriptEscape(special.question) + "');";
    AddJScript("function ConfirmSpecialSubmit() {" + checks + "return true;}\n");
  }
  EnableControls();
  if (!enableScript_.empty()) {
    AddJScript("function enablectls() {" + enableScript_ + "}\n");
    AddJScript("LAddEventListener(window, 'onload', enablectls);\n");
  }
  IncludeAJAXJScript();
  WriteCollectedScript();
  WLStandardFooter(form_);
}

void LWebDialog::PrintSubmitButtons() {
  std::string row = "<table class=buttontable style='width:100%'><tr>";
  if (buttonCheckId_ != 0) {
    std::string tip = GetToolTipText(buttonCheckId_);
    row += LWebFormat(
        "<td style='font-size:x-small;'><label style='vertical-align: middle;'><input type=checkbox "
        "title='%H' id=%d%s name=%d%s%s style='vertical-align: middle;'/>%H</label></td><td "
        "style='text-align:right;'>",
        tip.c_str(), buttonCheckId_, "", buttonCheckId_, IsChecked(buttonCheckId_) ? " checked" : "", "",
        buttonCheckText_.c_str());
  } else {
    row += "<td style='text-align:right;'>";
  }
  // Where the page script shows how much of an upload has arrived.
  if (upload_) row += "<span id=uploadStatus class=uploadstatus></span>";
  auto button = [&](const std::string& text, const char* cls) {
    row += LWebFormat("<input type=submit name=submit value='%H' %s onclick='document.pressed=this.value' %s>",
                      text.c_str(), cls, std::string(kButtonStyle).c_str());
  };
  button(okText_, "class='button okbutton'");
  for (const LSpecialSubmit& special : specials_) button(special.text, "class='button specialbutton'");
  if (!cancelText_.empty()) button(cancelText_, "class='button cancelbutton'");
  row += LWebFormat("<input type=hidden name=submitdef value='%H'>", okText_.c_str());
  row += "</td></tr></table>";
  form_.Write(row);
}

void LWebDialog::AddSpecialSubmit(std::string_view text, std::string_view target, std::string_view question) {
  specials_.push_back({std::string(text), std::string(target), std::string(question)});
}

void LWebDialog::SetToolTip(int id, std::string_view text) { toolTips_.SetString(IdText(id), text); }

std::string LWebDialog::GetToolTipText(int id) const {
  std::string text;
  toolTips_.GetString(IdText(id), "", text);
  return text;
}

// ---- Values -------------------------------------------------------------------------------------

std::string LWebDialog::GetText(int id) const { return form_.GetParam(IdText(id)); }
std::string LWebDialog::GetTextAndTrim(int id) const { return std::string(LTrimControls(GetText(id))); }
void LWebDialog::SetText(int id, std::string_view text) { form_.parameters.SetString(IdText(id), text); }
void LWebDialog::SetInt(int id, int value) { SetText(id, std::to_string(value)); }
std::string LWebDialog::GetControlValue(std::string_view name) const { return form_.GetParam(name); }
int LWebDialog::GetControlValueInt(int id) const { return LTextToInt(GetText(id)); }
bool LWebDialog::IsChecked(int id) const { return !GetText(id).empty(); }

void LWebDialog::SetCheck(int id, bool checked) {
  if (checked) SetText(id, "1");
  else form_.parameters.DeleteField(IdText(id));
}

int LWebDialog::GetRadioChoice(int id) const {
  return LTextToInt(form_.GetParam("rbg" + IdText(id / 100)));
}

bool LWebDialog::GetRadioCheck(int id) const { return GetRadioChoice(id) == id; }

void LWebDialog::SetRadioCheck(int id) { form_.parameters.SetString("rbg" + IdText(id / 100), IdText(id)); }

// ---- Answers of a button press ------------------------------------------------------------------

void LWebDialog::WriteAnswerScript(std::string_view script) { form_.Write(script); }

void LWebDialog::PopupControlDataInvalid(int id, std::string_view message) {
  PopupControlDataInvalid(IdText(id), message);
}

void LWebDialog::PopupControlDataInvalid(std::string_view idText, std::string_view message) {
  if (!inSubmit_) {
    SetMessage(message);
    return;
  }
  form_.Write(LWebFormat("ShowControlError('%s', '%s');\nwindow.scroll(0,0);\nDisableSubmits(false);\n",
                         LJScriptEscape(idText).c_str(), LJScriptEscape(message).c_str()));
}

void LWebDialog::PopupBoxError(std::string_view message) {
  if (!inSubmit_) {
    SetMessage(message);
    return;
  }
  form_.Write("alert('" + LJScriptEscape(message) + "');\nDisableSubmits(false);\n");
}
