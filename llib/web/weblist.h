// Sortable HTML lists of the list pages (customers, invoices, users, ...). A list has columns
// and rows of cells; each cell has a display text (HTML) and an order key. The server writes
// the rows sorted by the column and direction of the request ("iCol", "bAsc"), and the header
// and cells carry the sort state and the keys (data-sortcolumn, data-asc, data-order) so that
// the browser's "table.js" can sort again when a header is clicked.
//
// Sort groups come first: rows of a lower group precede those of a higher one whatever the sort.
// Numbers sort through order keys written "%10u" of the number plus 2147483647, so that -5
// sorts before 3 when keys are compared as text.
//
//     LHtmlList list(form, 0, true);
//     list.AddColumn("Nom", 60, kListAlignLeft, true);
//     list.AddColumn("Solde", 40, kListAlignRight, true);
//     auto row = std::make_unique<LHtmlListRow>();
//     row->AddCellTextLink("customerprop?id=7", "Dupont");
//     row->AddCellWithOrder(-500, "-5,00");
//     list.AddRow(std::move(row));
//     list.Write(form, 100);
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class LWebletForm;

enum LHtmlListAlign : int {
  kListAlignLeft = 0,
  kListAlignCenter = 1,
  kListAlignRight = 2,
  kListAlignRawHtml = 3,  // raw HTML title, centred
};

struct LHtmlListCell {
  std::string order;  // order key (compared without regard to case)
  std::string text;   // display text, HTML
};

class LHtmlListRow {
 public:
  explicit LHtmlListRow(int sortGroup = 0) : sortGroup_(sortGroup) {}

  // Display text formatted as the page writer formats (%H, %U); the order key is the same text.
  void AddCellPrintF(const char* format, ...);
  // Plain text, HTML-escaped for display; the key is the text.
  void AddCellText(std::string_view text);
  // A link; the key is the link's text.
  void AddCellTextLink(std::string_view target, std::string_view text);
  void AddCellImageLink(std::string_view target, std::string_view image, std::string_view text);
  // Display text with a numeric order key ("%10u" of number + 2147483647).
  void AddCellWithOrder(int number, std::string_view html);
  // Display text formatted, with its own order key.
  void AddCellPrintFWithOrder(std::string_view order, const char* format, ...);
  // Display HTML with its own order key.
  void AddCell(std::string_view order, std::string_view html);

  int GetSortGroup() const { return sortGroup_; }
  void SetSortGroup(int group) { sortGroup_ = group; }
  const std::vector<LHtmlListCell>& Cells() const { return cells_; }

  // The order key of a number.
  static std::string NumberOrderKey(int number);
  // The order key of a 64-bit number (amounts in cents), sorting as the numbers do.
  static std::string Int64OrderKey(long long number);
  // The order key of a record key: numbers in number order first, then other keys (drafts
  // "DFT<n>") by their text.
  static std::string RecordKeyOrderKey(std::string_view key);

 private:
  friend class LHtmlList;
  int sortGroup_;                      // lower groups first
  int sortColumn_ = 0;                 // the list's sort column, copied when the row is added
  bool ascending_ = true;              // and its direction
  std::vector<LHtmlListCell> cells_;   // in column order
};

class LHtmlList {
 public:
  // The sort column and direction come from the request ("iCol", "bAsc" equal to 1), else the
  // defaults. A named list reads "<name>iCol" and "<name>bAsc".
  LHtmlList(const LWebletForm& form, int defaultSortColumn, bool defaultAscending);
  LHtmlList(const LWebletForm& form, std::string_view name, int defaultSortColumn, bool defaultAscending);

  // Columns: a column of width 0 is not written (nor its cells).
  void AddColumn(std::string_view title, int widthPercent, int alignment, bool sortable = true,
                 std::string_view tooltip = {});
  void AddColumnPrintF(int widthPercent, int alignment, bool sortable, const char* format, ...);
  void AddColumnRawHTML(std::string_view html, int widthPercent, std::string_view tooltip = {});
  std::size_t GetColumnCount() const { return columns_.size(); }

  void SetSortable(bool sortable) { sortable_ = sortable; }
  // Rows stay in the order they are added (the caller adds them in order).
  void SetInsertInOrder(bool inOrder) { insertInOrder_ = inOrder; }
  // Rows are written hidden ("display:none").
  void SetHideRows(bool hide) { hideRows_ = hide; }
  // The list is one page of a longer one: a header click asks route to sort the whole list
  // (data-refilter) instead of sorting the page in the browser.
  void SetRefilterRoute(std::string_view route) { refilterRoute_.assign(route); }
  int GetSortColumn() const { return sortColumn_; }
  bool IsAscending() const { return ascending_; }

  void AddRow(std::unique_ptr<LHtmlListRow> row);
  std::size_t GetRowCount() const { return rows_.size(); }

  // The whole list: header, rows in order (or the empty-list row), end.
  void Write(LWebletForm& form, int widthPercent, int id = 0, bool hidden = false);
  // The table head alone, for lists written row by row.
  void WriteHeader(LWebletForm& form, int widthPercent, int id = 0);
  // One row at once, after WriteHeader.
  void WriteDirectRow(LWebletForm& form, const LHtmlListRow& row);
  // Ends a list written row by row (the empty-list row when none was written).
  void WriteDirectEnd(LWebletForm& form);

  // The rows in the order they are written.
  std::vector<const LHtmlListRow*> SortedRows() const;

 private:
  struct Column {
    std::string title;     // HTML
    int widthPercent;      // 0: not written
    int alignment;         // LHtmlListAlign
    bool sortable;
    std::string tooltip;
  };
  std::string RowHtml(const LHtmlListRow& row) const;

  std::vector<Column> columns_;
  std::vector<std::unique_ptr<LHtmlListRow>> rows_;
  int sortColumn_ = 0;         // "iCol" or the default
  bool ascending_ = true;      // "bAsc" == 1 or the default
  bool sortable_ = true;
  bool insertInOrder_ = false;
  bool hideRows_ = false;
  std::size_t directRows_ = 0;  // rows written by WriteDirectRow
  std::string refilterRoute_;   // sorts on the server through this route; empty: in the browser
};
