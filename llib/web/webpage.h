// Web pages: every page of the web access is an object built on one request (LWebletForm),
// run, and discarded. Three layers:
//   LPlainWebPage  a bare HTML page (head with the style sheets, Generate(), collected script);
//   LWebPage       the standard page: header bar with the product name, title, navigation links
//                  and the user's name, the content (with an optional side pane), AJAX commands;
//   LWebDialog     a page with one form of numbered controls (llib/web/webdialog.h).
//
// Output goes straight to the client while the page is generated: the status line and headers
// first, then the page piece by piece. Nothing is kept back, so a page that fails half-way
// leaves a half page, never a wrong header.
//
// AJAX commands: a call to a page's own route with "isComAJAX" true and "MainControlId" set is
// answered in plain text by CommandAJAX, with JavaScript that the browser runs.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

class LWebletForm;

inline constexpr std::string_view kWebProductName = "Kontavo";

// One navigation link of the header (target page, text).
struct LWebNavLink {
  const char* target;  // a table of links ends with a null or empty target
  const char* text;
};
using LWebNavLinks = std::vector<std::pair<std::string, std::string>>;

// The standard page head and header bar: status line, head with title and style sheets, the
// bar with the product name (a link to "main"), the title, the navigation links (help links,
// whose target starts with "help/", open in a new window) and, when userName is not empty,
// "Connecté sous" and the name.
void WLStandardHeader(LWebletForm& form, const LWebNavLinks& navLinks, std::string_view title,
                      std::string_view userName, std::string_view css);
// "</body></html>".
void WLStandardFooter(LWebletForm& form);
// The page script include ("ajax.js") and the footer: for pages written without a page object.
void WLStandardPageFooter(LWebletForm& form);
// The text/plain head of an answer that the browser runs as script, held until the first piece
// of the answer (LWebletForm::HoldHeader) so that a logon can still add its cookie.
void WLWriteScriptAnswerHeader(LWebletForm& form);

class LPlainWebPage {
 public:
  explicit LPlainWebPage(LWebletForm& form) : form_(form) {}
  virtual ~LPlainWebPage() = default;
  LPlainWebPage(const LPlainWebPage&) = delete;
  LPlainWebPage& operator=(const LPlainWebPage&) = delete;

  // ---- Virtual operations --------------------------------------------------------------------
  // false: the page must not be shown; it has answered already (a redirect).
  virtual bool Authenticate() { return true; }
  // Writes the page content.
  virtual void Generate() {}
  // Answers an AJAX call with script.
  virtual void CommandAJAX(int controlId, const std::string& controlIdText) {}
  // Writes the side pane.
  virtual void GenerateInfoPane() {}
  // Sends the browser to target.
  virtual void Redirect(std::string_view target);
  // Writes the head and header bar.
  virtual void PrintHeader();

  // Authenticates, then writes the whole page.
  virtual void Open();

  // Adds script text (formatted as the writer formats) to the page's script, written once at
  // the end of the page.
  void AddJScriptFunctionPrintf(const char* format, ...);
  void AddJScript(std::string_view text);
  // Style text of this page, written in a style element of the head when not empty.
  void SetStyleCSS(std::string_view css) { styleCss_.assign(css); }
  const std::string& GetStyleCSS() const { return styleCss_; }
  LWebletForm& Form() { return form_; }

 protected:
  // The collected script in a script element (nothing when there is none).
  void WriteCollectedScript();

  LWebletForm& form_;     // the request being answered
  std::string script_;    // collected script text
  bool hasScript_ = false;
  std::string styleCss_;  // this page's own style text
};

class LWebPage : public LPlainWebPage {
 public:
  explicit LWebPage(LWebletForm& form) : LPlainWebPage(form) {}

  // Authenticate, AJAX command or header, body and footer.
  void Open() override;
  // The 302 answer.
  void Redirect(std::string_view target) override;
  // WLStandardHeader with the title, links and style text, without user name.
  void PrintHeader() override;

  // The first title set is kept (a dialog's caption and a page title are one text).
  void SetTitle(std::string_view title);
  const std::string& GetTitle() const { return title_; }
  // Replaces the links by a table ended by an empty row.
  void SetNavLinks(const LWebNavLink* links);
  void AddNavLink(std::string_view target, std::string_view text);
  const LWebNavLinks& GetNavLinks() const { return navLinks_; }
  // Width of the side pane in percent; 0: none.
  void SetInfoPaneWidth(int percent) { infoPaneWidth_ = percent; }

  // When the request is an AJAX command, answers it and returns true.
  bool SendAJAXCommands();
  // Appends script that replaces the content of element id by html.
  static void CommandJScript(std::string& out, int id, std::string_view html);
  // The value of the control (its element id) goes with every AJAX command of the page.
  void AddAJAXArgControl(std::string_view idText) { ajaxArgControls_.emplace_back(idText); }
  // Writes the script include of "ajax.js" (once) and the function that collects the values
  // that go with each AJAX call.
  void IncludeAJAXJScript();
  // The page uses the date picker or the sortable-list script; their files are included once.
  void UseDatePicker() { datePickerUsed_ = true; }
  void UseListScript() { listScriptUsed_ = true; }

 protected:
  // The content block: side pane or not, then the scripts.
  void PrintBody();

  std::string title_;                       // page title and dialog caption, <= 259 bytes
  LWebNavLinks navLinks_;                   // (target, text) of the header
  int infoPaneWidth_ = 0;                   // side pane width in percent; 0: no side pane
  bool datePickerUsed_ = false;             // "calendar.js" is needed
  bool datePickerIncluded_ = false;         // and already written
  bool listScriptUsed_ = false;             // "table.js" is needed
  bool ajaxIncluded_ = false;               // "ajax.js" already written
  std::vector<std::string> ajaxArgControls_;  // element ids whose values go with AJAX calls
};

// Route adaptor of a page class: builds the page on the request, opens it, destroys it.
//     LWebletInstallScript("main", WLWebPageRun<LWebPageMain>);
template <class Page>
void WLWebPageRun(LWebletForm& form) {
  Page page(form);
  page.Open();
}
