// The page framework on a form without socket: what pages, dialogs and lists write.
#include <gtest/gtest.h>

#include <regex>

#include "llib/web/webdialog.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/webletrequest.h"

namespace {

TEST(WebFormat, HtmlAndUrlConversionsBesidePrintf) {
  EXPECT_EQ(LWebFormat("<b>%H</b>", "a<b>&'\""), "<b>a&lt;b&gt;&amp;&#39;&quot;</b>");
  EXPECT_EQ(LWebFormat("?id=%U", "a@b.fr x"), "?id=a%40b.fr%20x");
  EXPECT_EQ(LWebFormat("%d|%5s|%-3d|%lld|%zu|%.2f|%%|%x", -7, "ab", 4, 1LL << 40, static_cast<std::size_t>(9), 1.005, 255),
            "-7|   ab|4  |1099511627776|9|1.00|%|ff");
  EXPECT_EQ(LWebFormat("%10u", 2147483647u + 3u), "2147483650");
  EXPECT_EQ(LWebFormat("%Q%"), "%Q%");
  EXPECT_EQ(LJScriptEscape("l'a\n</script>\\"), "l\\'a\\n\\x3C/script\\x3E\\\\");
}

TEST(WebLists, OrderKeysSortSignedNumbersAsText) {
  EXPECT_EQ(LHtmlListRow::NumberOrderKey(-5), "2147483642");
  EXPECT_EQ(LHtmlListRow::NumberOrderKey(3), "2147483650");
  EXPECT_EQ(LHtmlListRow::NumberOrderKey(-2147483647), "         0");
  LWebletForm form(nullptr);
  LHtmlList list(form, 1, true);
  list.AddColumn("Nom", 50, kListAlignLeft, true);
  list.AddColumn("Solde", 50, kListAlignRight, true);
  for (int value : {3, -5, 12}) {
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellText("n" + std::to_string(value));
    row->AddCellWithOrder(value, std::to_string(value) + ",00");
    list.AddRow(std::move(row));
  }
  list.Write(form, 100);
  const std::string& html = form.Captured();
  EXPECT_LT(html.find(">-5,00<"), html.find(">3,00<"));
  EXPECT_LT(html.find(">3,00<"), html.find(">12,00<"));
  EXPECT_NE(html.find("<table style='width:100%' class='hltbl' data-sortcolumn=1 data-asc=1><thead><tr style='height:25px' "
                      "class=hlhtr>"),
            std::string::npos);
  EXPECT_NE(html.find("<td data-order=\"2147483642\" align=right class=hltd>-5,00</td>"), std::string::npos);
  EXPECT_NE(html.find("<td align=left class=hltd>n3</td>"), std::string::npos);
  EXPECT_EQ(html.substr(html.size() - 16), "</tbody></table>");
}

TEST(WebLists, RequestChoosesColumnAndDirectionAndGroupsComeFirst) {
  LWebletForm form(nullptr);
  form.parameters.SetString("iCol", "0");
  form.parameters.SetString("bAsc", "0");
  LHtmlList list(form, 1, true);
  list.AddColumn("Nom", 100, kListAlignLeft, true);
  auto add = [&](const char* text, int group) {
    auto row = std::make_unique<LHtmlListRow>(group);
    row->AddCellText(text);
    list.AddRow(std::move(row));
  };
  add("alpha", 0);
  add("Charlie", 0);
  add("bravo", 0);
  add("zulu", -1);
  auto bare = std::make_unique<LHtmlListRow>();
  list.AddRow(std::move(bare));
  std::vector<std::string> order;
  for (const LHtmlListRow* row : list.SortedRows()) order.push_back(row->Cells().empty() ? "" : row->Cells()[0].order);
  // Group -1 first; then descending without regard to case; the row without the cell sorts before
  // the others ascending, so after them descending.
  EXPECT_EQ(order, (std::vector<std::string>{"zulu", "Charlie", "bravo", "alpha", ""}));
}

TEST(WebLists, EmptyListSpansAllColumns) {
  LWebletForm form(nullptr);
  LHtmlList list(form, 0, true);
  list.AddColumn("A", 30, kListAlignLeft);
  list.AddColumn("B", 30, kListAlignCenter, false);
  list.AddColumnRawHTML("<img src=x.png>", 40, "Infobulle");
  list.Write(form, 80, 7);
  const std::string& html = form.Captured();
  EXPECT_NE(html.find(" id=7>"), std::string::npos);
  EXPECT_NE(html.find("<th data-sort='true' style='width:30%; text-align:left; cursor:pointer'><span class=hlhtd "
                      "hlsortasc>A</span></th>"),
            std::string::npos);
  EXPECT_NE(html.find("<th style='width:30%; text-align:center;' class=hlhtd>B</th>"), std::string::npos);
  EXPECT_NE(html.find("title='Infobulle'"), std::string::npos);
  EXPECT_NE(html.find("<tr style='height:20px'><td colspan=3 style='text-align:center' class=hltd>Cette liste est "
                      "vide</td></tbody></table>"),
            std::string::npos);
}

class NameDialog : public LWebDialog {
 public:
  explicit NameDialog(LWebletForm& form) : LWebDialog(form, "namedlg") {
    SetTitle("Nom");
    AddSpecialSubmit("Enregistrer et nouveau", "namedlg?new=1");
  }
  void InitDialog() override { SetText(101, "Dupont"); }
  void Generate() override {
    AddInput(101, "Nom :", "", 30);
    AddCheckBox(200, "Actif");
    AddRadioButton(301, "Un");
    AddRadioButton(302, "Deux");
    AddRadioButton(1301, "Autre groupe");
  }
  bool CmOk() override {
    ++okCalls;
    if (GetTextAndTrim(101).empty()) {
      PopupControlDataInvalid(101, "Veuillez entrer un nom.");
      return false;
    }
    return true;
  }
  void CmCancel() override { cancelled = true; }
  int okCalls = 0;
  bool cancelled = false;
};

// One request to the dialog: the form, the dialog run on it, and what it wrote.
struct DialogRequest {
  explicit DialogRequest(std::initializer_list<std::pair<std::string, std::string>> parameters) {
    form.kind = kWebletPost;
    for (const auto& [name, value] : parameters) form.parameters.SetString(name, value);
    dialog.Run();
  }
  const std::string& Answer() const { return form.Captured(); }
  std::string Script() const { return Answer().substr(Answer().find("\r\n\r\n") + 4); }
  LWebletForm form{nullptr};
  NameDialog dialog{form};
};

TEST(WebDialogs, FirstShowingWritesTheFormWithItsControls) {
  DialogRequest request({{"rbg3", "302"}, {"200", "on"}});
  const std::string& html = request.Answer();
  EXPECT_EQ(html.rfind("HTTP/1.1 200 OK\r\nConnection: close\r\nCache-Control: no-cache\r\nContent-Type: text/html; "
                       "charset=utf-8\r\n\r\n<html><head><title>Kontavo - Nom</title>",
                       0),
            0u);
  EXPECT_NE(html.find("<form id=dialogform action='namedlg' method=post style='width:100%' onsubmit='return "
                      "(CmSubmit())'><input type=hidden name=onok value='main'>"),
            std::string::npos);
  EXPECT_NE(html.find("<label for=101>Nom :</label></td><td><input id=101 name=101 type=text value='Dupont' size=30 "
                      "title='' >"),
            std::string::npos);
  EXPECT_NE(html.find("<label><input type=checkbox title='' id=200 name=200 checked>Actif</label>"), std::string::npos);
  EXPECT_NE(html.find("<label><input type=radio title='' name=rbg3 id=302 value=302 checked>Deux</label>"),
            std::string::npos);
  EXPECT_NE(html.find("<label><input type=radio title='' name=rbg3 id=301 value=301>Un</label>"), std::string::npos);
  EXPECT_NE(html.find("name=rbg13 id=1301 value=1301>"), std::string::npos);
  EXPECT_NE(html.find("<input type=hidden name=submitdef value='  OK  '>"), std::string::npos);
  EXPECT_NE(html.find("SimpleAjaxCall('namedlg', GetParams('dialogform') + 'submit=' + document.pressed, "
                      "HandleAjaxJSReturn, function() { DisableSubmits(false); }, function() { DisableSubmits(false); }, "
                      "1200000);return false;}"),
            std::string::npos);
  EXPECT_NE(html.find("setTimeout('document.getElementById(101).focus();', 1)"), std::string::npos);
  EXPECT_EQ(html.substr(html.size() - 14), "</body></html>");
}

TEST(WebDialogs, ButtonPressesAnswerScript) {
  DialogRequest refused({{"101", "  "}, {"submit", "  OK  "}});
  EXPECT_EQ(refused.Answer().rfind(
                "HTTP/1.1 200 OK\r\nConnection: close\r\nCache-Control: no-cache\r\nContent-Type: text/plain\r\n\r\n", 0),
            0u);
  EXPECT_EQ(refused.Script(),
            "ShowControlError('101', 'Veuillez entrer un nom.');\nwindow.scroll(0,0);\nDisableSubmits(false);\n"
            "DisableSubmits(false)");

  EXPECT_EQ(DialogRequest({{"101", "Martin"}, {"submitdef", "  OK  "}, {"onok", "userlist"}}).Script(),
            "window.location = 'userlist';\n");
  // A target outside the server is not followed.
  EXPECT_EQ(DialogRequest({{"101", "Martin"}, {"submit", "  OK  "}, {"onok", "http://evil.example/"}}).Script(),
            "window.location = 'main';\n");

  DialogRequest cancelled({{"submit", "Annuler"}, {"oncancel", "userlist"}});
  EXPECT_TRUE(cancelled.dialog.cancelled);
  EXPECT_EQ(cancelled.dialog.okCalls, 0);
  EXPECT_EQ(cancelled.Script(), "window.location = 'userlist';\n");

  DialogRequest special({{"101", "Martin"}, {"submit", "ENREGISTRER ET NOUVEAU"}});
  EXPECT_EQ(special.dialog.okCalls, 1);
  EXPECT_EQ(special.Script(), "window.location = 'namedlg?new=1';\n");

  DialogRequest unknown({{"submit", "Inconnu"}});
  EXPECT_EQ(unknown.dialog.okCalls, 0);
  EXPECT_EQ(unknown.Script(), "");
}

class PaneDialog : public LWebPage {
 public:
  explicit PaneDialog(LWebletForm& form) : LWebPage(form) { SetInfoPaneWidth(25); }
  void Generate() override { form_.Write("MAIN"); }
  void GenerateInfoPane() override { form_.Write("PANE"); }
  void CommandAJAX(int id, const std::string& text) override { form_.wfprintf("answer(%d);", id); }
};

TEST(WebPages, SidePaneFullWidthForMsieAndAjaxCommands) {
  LWebletForm form(nullptr);
  form.headers.SetParm("User-Agent", "Mozilla/4.0 (compatible; MSIE 8.0)");
  PaneDialog(form).Open();
  EXPECT_NE(form.Captured().find("<div class=contenttable style='width:100%;'><table border=0 "
                                 "style='border-spacing:0px'><tr><td valign=top>MAIN</td><td width=10></td><td "
                                 "width='25%' valign=top>PANE</td></tr></table></div>"),
            std::string::npos);
  LWebletForm ajax(nullptr);
  ajax.parameters.SetString("isComAJAX", "1");
  ajax.parameters.SetString("MainControlId", "405");
  PaneDialog(ajax).Open();
  EXPECT_EQ(ajax.Captured(),
            "HTTP/1.1 200 OK\r\nConnection: close\r\nCache-Control: no-cache\r\nContent-Type: text/plain\r\n\r\nanswer(405);");
}

// A redirect takes no line ends from its target, and tells the client the connection ends with
// it: a client that reused the connection would see its next request reset.
TEST(WebPages, RedirectTakesNoLineEndsAndClosesTheConnection) {
  LWebletForm form(nullptr);
  WLRedirect(form, "main\r\nSet-Cookie: x=1");
  EXPECT_EQ(form.Captured(),
            "HTTP/1.1 302 Found\r\nConnection: close\r\nLocation: mainSet-Cookie: x=1\r\nContent-Length: 0\r\n\r\n");
  EXPECT_TRUE(form.responseSent);

  LWebletForm stays(nullptr);
  stays.keepAlive = true;
  stays.WriteHeader("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
  EXPECT_EQ(stays.Captured().find("Connection"), std::string::npos);
  LWebletForm said(nullptr);
  said.WriteHeader("HTTP/1.1 200 OK\r\nconnection: close\r\n\r\n");
  EXPECT_EQ(said.Captured(), "HTTP/1.1 200 OK\r\nconnection: close\r\n\r\n");
}

}  // namespace
