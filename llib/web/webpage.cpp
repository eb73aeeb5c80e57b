#include "llib/web/webpage.h"

#include <cstdarg>

#include "llib/gen/text.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr std::string_view kHtmlAnswerHead =
    "HTTP/1.1 200 OK\r\nConnection: close\r\nCache-Control: no-cache\r\n"
    "Content-Type: text/html; charset=utf-8\r\n\r\n";
constexpr std::string_view kScriptAnswerHead =
    "HTTP/1.1 200 OK\r\nConnection: close\r\nCache-Control: no-cache\r\nContent-Type: text/plain\r\n\r\n";
constexpr std::string_view kStyleSheets =
    "<link href=s.css type='text/css' rel=stylesheet>"
    "<link href=print.css type='text/css' media=print rel=stylesheet>";
constexpr std::string_view kVersionText = "v&nbsp;8.00";
constexpr std::string_view kMakerNotice = "&nbsp;&nbsp;&middot;&nbsp;&nbsp;Kontavo - Logiciel de comptabilité";

bool IsHelpLink(std::string_view target) { return target.substr(0, 5) == "help/"; }

void WriteStyle(LWebletForm& form, std::string_view css) {
  if (!css.empty()) form.Write("<style type='text/css'>" + std::string(css) + "</style>");
}

}  // namespace

// ---- Skeleton -------------------------------------------------------------------------------------

void WLStandardHeader(LWebletForm& form, const LWebNavLinks& navLinks, std::string_view title,
                      std::string_view userName, std::string_view css) {
  form.WriteHeader(kHtmlAnswerHead);
  std::string head = "<html><head><title>Kontavo";
  if (!title.empty()) head += " - " + LHtmlEscape(title);
  head += "</title>";
  head += kStyleSheets;
  form.Write(head);
  WriteStyle(form, css);
  std::string bar = "</head><body><table class=headertable border=0>";
  bar += LWebFormat(
      "<tr class=headerrow1 style='height: %spx'><td class=headerapp style='font-size: %spt; cursor: "
      "pointer; cursor: hand' onclick=\"document.location='main'\" title='Cliquez pour aller à la page "
      "principale'>%H</td>",
      "44", "16", std::string(kWebProductName).c_str());
  std::string titleText(title);
  bar += LWebFormat("<td class=headertitle>%H</td>", titleText.c_str());
  if (!navLinks.empty()) {
    std::string links;
    for (const auto& [target, text] : navLinks)
      links += LWebFormat("<a href='%s' class=toptext%s>%H</a>&nbsp;&nbsp;", LHtmlEscape(target).c_str(),
                          IsHelpLink(target) ? " target=_blank" : "", text.c_str());
    bar += "<td class=headernavlinks>" + links + "</td>";
  }
  bar += "</tr><tr class=headerrow2><td class=headercopyright colspan=2>";
  bar += kVersionText;
  bar += kMakerNotice;
  bar += "</td>";
  if (!userName.empty()) {
    std::string name(userName);
    bar += LWebFormat("<td class=headeruser colspan=3>Connecté sous %H</td>", name.c_str());
  }
  bar += "</tr></table><br>";
  form.Write(bar);
}

void WLStandardFooter(LWebletForm& form) { form.Write("</body></html>"); }

void WLStandardPageFooter(LWebletForm& form) {
  form.Write("<script type='text/javascript' src='ajax.js'></script>");
  WLStandardFooter(form);
}

void WLWriteScriptAnswerHeader(LWebletForm& form) { form.HoldHeader(kScriptAnswerHead); }

// ---- LPlainWebPage -------------------------------------------------------------------------------

void LPlainWebPage::Redirect(std::string_view target) { WLRedirect(form_, target); }

void LPlainWebPage::PrintHeader() {
  form_.WriteHeader(kHtmlAnswerHead);
  form_.Write("<html><head><title>Kontavo - Logiciel de comptabilité</title>" + std::string(kStyleSheets));
  WriteStyle(form_, styleCss_);
  form_.Write("</head><body>");
}

void LPlainWebPage::Open() {
  if (!Authenticate()) return;
  PrintHeader();
  Generate();
  WriteCollectedScript();
  form_.Write("</body></html>");
}

void LPlainWebPage::AddJScriptFunctionPrintf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  script_ += LWebFormatV(format, args);
  va_end(args);
  hasScript_ = true;
}

void LPlainWebPage::AddJScript(std::string_view text) {
  script_.append(text);
  hasScript_ = true;
}

void LPlainWebPage::WriteCollectedScript() {
  if (!hasScript_) return;
  form_.Write("<script type='text/javascript'><!--\n" + script_ + "\n//-->\n</script>");
}

// ---- LWebPage ------------------------------------------------------------------------------------

void LWebPage::SetTitle(std::string_view title) {
  if (title_.empty()) title_.assign(LTruncated(title, kMaxTextBytes));
}

void LWebPage::SetNavLinks(const LWebNavLink* links) {
  navLinks_.clear();
  for (; links != nullptr && links->target != nullptr && links->target[0] != '\0'; ++links)
    navLinks_.emplace_back(links->target, links->text);
}

void LWebPage::AddNavLink(std::string_view target, std::string_view text) {
  navLinks_.emplace_back(std::string(target), std::string(text));
}

void LWebPage::Redirect(std::string_view target) { WLRedirect(form_, target); }

void LWebPage::PrintHeader() { WLStandardHeader(form_, navLinks_, title_, "", styleCss_); }

bool LWebPage::SendAJAXCommands() {
  std::string mainControl = form_.GetParam("MainControlId");
  if (!form_.parameters.GetBool("isComAJAX", false) || mainControl.empty()) return false;
  WLWriteScriptAnswerHeader(form_);
  CommandAJAX(LTextToInt(mainControl), mainControl);
  return true;
}

void LWebPage::CommandJScript(std::string& out, int id, std::string_view html) {
  out += LWebFormat("var e = document.getElementById('%d'); if (e) e.innerHTML = '%s';\n", id,
                    LJScriptEscape(html).c_str());
}

void LWebPage::IncludeAJAXJScript() {
  std::string text;
  if (!ajaxIncluded_) {
    text += "<script type='text/javascript' src='ajax.js'></script>";
    ajaxIncluded_ = true;
  }
  if (listScriptUsed_) {
    text += "<script type='text/javascript' src='table.js'></script>";
    listScriptUsed_ = false;
  }
  if (datePickerUsed_ && !datePickerIncluded_) {
    text += "<script type='text/javascript' src='calendar.js'></script>";
    datePickerIncluded_ = true;
  }
  if (!ajaxArgControls_.empty()) {
    text += "<script type='text/javascript'><!--\nfunction GetAJAXArgs() {var ajaxArgs = '';var nextArg = '';\n";
    for (const std::string& id : ajaxArgControls_)
      text += LWebFormat(
          "nextArg = GetArg(document.getElementById('%s'));if (nextArg.length != 0) {ajaxArgs += '&' + "
          "nextArg;nextArg = '';}\n",
          LJScriptEscape(id).c_str());
    text += "return ajaxArgs;}\n//-->\n</script>";
  }
  form_.Write(text);
}

void LWebPage::PrintBody() {
  const char* agent = form_.GetHeader("User-Agent");
  bool fullWidth = agent != nullptr && std::string_view(agent).find("MSIE") != std::string_view::npos;
  form_.Write(fullWidth ? "<div class=contenttable style='width:100%;'>" : "<div class=contenttable>");
  if (infoPaneWidth_ > 0) {
    form_.Write("<table border=0 style='border-spacing:0px'><tr><td valign=top>");
    Generate();
    form_.wfprintf("</td><td width=10></td><td width='%d%%' valign=top>", infoPaneWidth_);
    GenerateInfoPane();
    form_.Write("</td></tr></table>");
  } else {
    Generate();
  }
  form_.Write("</div>");
  IncludeAJAXJScript();
  WriteCollectedScript();
}

void LWebPage::Open() {
  if (!Authenticate()) return;
  if (SendAJAXCommands()) return;
  PrintHeader();
  PrintBody();
  WLStandardFooter(form_);
}
