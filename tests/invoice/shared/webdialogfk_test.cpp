// The item-line grid of the sales documents' dialogs, on a business with taxes and items: the
// lines of a document into the grid, the grid's rows back into lines, and the refusal of a row.
#include <gtest/gtest.h>

#include "invoice/shared/webdialogfk.h"
#include "invoice/shared/item.h"
#include "invoice/shared/itemcollection.h"
#include "llib/gen/filestore.h"
#include "llib/web/webletform.h"
#include "llib/web/webletrequest.h"
#include "tests/support/salestestbusiness.h"

namespace {

// A document dialog reduced to its grid; the access check is the server's business.
class GridDialog : public LWebDialogFK {
 public:
  GridDialog(LWebletForm& form, LSalesDocument& document) : LWebDialogFK(form, "quoteprop"), document_(document) {}
  bool Authenticate() override { return true; }
  void InitDialog() override { SetItemLines(document_); }
  void Generate() override { AddItemGrid(); }
  bool CmOk() override { return GetItemLines(document_); }

 private:
  LSalesDocument& document_;
};

class WebItemGridTest : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    LItem item;
    Profile().MainList(kItemsList).OpenAlways(item, "PAIN");
    item.SetString("Description", "Pain <de> campagne");
    item.SetInt64("Price", 250);
    ASSERT_TRUE(item.Flush());
  }
  std::string Run(std::initializer_list<std::pair<const char*, const char*>> parameters) {
    LWebletForm form(nullptr);
    form.kind = kWebletPost;
    for (const auto& [name, value] : parameters) form.parameters.SetString(name, value);
    GridDialog(form, document).Run();
    return form.Captured();
  }
  LSalesDocument document;
};

TEST_F(WebItemGridTest, DocumentLinesFillTheGridWithAnEmptyRowAfterThem) {
  AddLine(document, 250, -1, 2, 10, "3", "B");
  AddLine(document, 1999, 3, 1.5, 0, "", "");
  // While line discounts do not count, the grid has no discount column.
  EXPECT_EQ(Run({}).find("data-col=5"), std::string::npos);
  SetDiscountsShown(true);
  std::string html = Run({});
  EXPECT_NE(html.find("<table id=itemgrid class=itemgrid data-first=10000 data-stride=10 data-digits=2>"),
            std::string::npos);
  EXPECT_NE(html.find("<td><input id=10000 name=10000 data-col=0 type=text value='' size=10 list=fkitems "
                      "class=fkcode></td>"),
            std::string::npos);
  EXPECT_NE(html.find("<input id=10002 name=10002 data-col=2 type=text value='2' size=6 class=fknumber>"),
            std::string::npos);
  EXPECT_NE(html.find("<input id=10003 name=10003 data-col=3 type=text value='2.50' size=10 class=fknumber>"),
            std::string::npos);
  EXPECT_NE(html.find("<input id=10005 name=10005 data-col=5 type=text value='10' size=5 class=fknumber>"),
            std::string::npos);
  EXPECT_NE(html.find("<select id=10004 name=10004 title=''><option value='Valeur/défaut'>Valeur/défaut</option>"
                      "<option value='Aucun'>Aucun</option><option value='A'>A</option><option value='B' selected>B"),
            std::string::npos);
  // The finer price keeps its own decimals; a line without tax shows the default tax.
  EXPECT_NE(html.find("id=10013 name=10013 data-col=3 type=text value='1.999'"), std::string::npos);
  EXPECT_NE(html.find("<option value='Valeur/défaut' selected>"), std::string::npos);
  // Two lines and the empty row to type a third in.
  EXPECT_NE(html.find("id=10020 name=10020 data-col=0 type=text value=''"), std::string::npos);
  EXPECT_EQ(html.find("id=10030 "), std::string::npos);
  EXPECT_NE(html.find("<input type=hidden id=fklines name=fklines value=3>"), std::string::npos);
  EXPECT_NE(html.find("<option value='PAIN'>Pain &lt;de&gt; campagne</option>"), std::string::npos);
  EXPECT_NE(html.find("<script type='text/javascript' src='itemgrid.js'></script></td></tr>"), std::string::npos);
}

TEST_F(WebItemGridTest, FilledRowsBecomeTheDocumentsLines) {
  AddLine(document, 100, -1, 1, 0, "", "");
  AddLine(document, 100, -1, 1, 0, "", "");
  AddLine(document, 100, -1, 1, 0, "", "");
  std::string answer = Run({{"fklines", "3"},
                            {"10000", "PAIN"},  // the item gives its description and price
                            {"10002", "3"},
                            {"10004", "B"},
                            {"10011", " "},  // an empty row is skipped
                            {"10021", "Livraison"},
                            {"10023", "12.5"},
                            {"10025", "5"},
                            {"submit", "  OK  "}});
  EXPECT_EQ(answer.substr(answer.find("\r\n\r\n") + 4), "window.location = 'main';\n");
  LFKItemCollectionRecord items = document.Items();
  ASSERT_EQ(items.GetItemCount(), 2);
  EXPECT_EQ(items.GetItemCode(0), "PAIN");
  EXPECT_EQ(items.GetItemDescription(0), "Pain <de> campagne");
  EXPECT_EQ(items.GetItemUnitValue(0), 250);
  EXPECT_DOUBLE_EQ(items.GetItemQty(0), 3);
  EXPECT_EQ(items.GetItemTaxName(0), "B");
  EXPECT_EQ(items.GetItemTaxRate(0), "5/0/0");
  EXPECT_EQ(items.GetItemDescription(1), "Livraison");
  EXPECT_EQ(items.GetItemUnitValue(1), 1250);
  EXPECT_DOUBLE_EQ(items.GetItemQty(1), 1);
  EXPECT_DOUBLE_EQ(items.GetItemDiscount(1), 5);
  EXPECT_EQ(items.GetItemTaxRate(1), "0");  // the document's default tax
  EXPECT_FALSE(document.TestFieldExists("Item3Code"));
}

TEST_F(WebItemGridTest, RefusedRowPointsAtItsFaultyControl) {
  AddLine(document, 100, -1, 1, 0, "", "Old");
  std::string answer = Run({{"fklines", "2"}, {"10001", "Pain"}, {"10011", "Sel"}, {"10012", "deux"},
                            {"submit", "  OK  "}});
  EXPECT_NE(answer.find("ShowControlError('10012', 'Quantité invalide : deux.');"), std::string::npos) << answer;
  EXPECT_NE(Run({{"fklines", "1"}, {"10001", "Pain"}, {"10004", "Q"}, {"submit", "  OK  "}})
                .find("ShowControlError('10004', 'Taxe inconnue : Q.');"),
            std::string::npos);
}

}  // namespace
