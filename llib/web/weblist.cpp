#include "llib/web/weblist.h"

#include <strings.h>

#include <algorithm>
#include <cstdarg>

#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

const char* AlignName(int alignment) {
  switch (alignment) {
    case kListAlignCenter:
    case kListAlignRawHtml: return "center";
    case kListAlignRight: return "right";
    default: return "left";
  }
}

}  // namespace

// ---- Rows ---------------------------------------------------------------------------------------

std::string LHtmlListRow::NumberOrderKey(int number) {
  return LWebFormat("%10u", static_cast<unsigned>(static_cast<long long>(number) + 2147483647LL));
}

std::string LHtmlListRow::Int64OrderKey(long long number) {
  return LWebFormat("%020llu", static_cast<unsigned long long>(number) ^ (1ULL << 63));
}

std::string LHtmlListRow::RecordKeyOrderKey(std::string_view key) {
  bool number = !key.empty() && key.size() < 19 && key.find_first_not_of("0123456789") == std::string_view::npos;
  return number ? "0" + std::string(19 - key.size(), '0') + std::string(key) : "1" + std::string(key);
}

void LHtmlListRow::AddCellPrintF(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = LWebFormatV(format, args);
  va_end(args);
  cells_.push_back({text, text});
}

void LHtmlListRow::AddCellText(std::string_view text) { cells_.push_back({std::string(text), LHtmlEscape(text)}); }

void LHtmlListRow::AddCellTextLink(std::string_view target, std::string_view text) {
  cells_.push_back({std::string(text), "<a href='" + LHtmlEscape(target) + "'>" + LHtmlEscape(text) + "</a>"});
}

void LHtmlListRow::AddCellImageLink(std::string_view target, std::string_view image, std::string_view text) {
  cells_.push_back({std::string(text), "<a href='" + LHtmlEscape(target) + "'><img src='" + LHtmlEscape(image) +
                                           "' alt='" + LHtmlEscape(text) + "' title='" + LHtmlEscape(text) +
                                           "' border=0></a>"});
}

void LHtmlListRow::AddCellWithOrder(int number, std::string_view html) {
  cells_.push_back({NumberOrderKey(number), std::string(html)});
}

void LHtmlListRow::AddCellPrintFWithOrder(std::string_view order, const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = LWebFormatV(format, args);
  va_end(args);
  cells_.push_back({std::string(order), text});
}

void LHtmlListRow::AddCell(std::string_view order, std::string_view html) {
  cells_.push_back({std::string(order), std::string(html)});
}

// ---- List ---------------------------------------------------------------------------------------

LHtmlList::LHtmlList(const LWebletForm& form, int defaultSortColumn, bool defaultAscending)
    : LHtmlList(form, {}, defaultSortColumn, defaultAscending) {}

LHtmlList::LHtmlList(const LWebletForm& form, std::string_view name, int defaultSortColumn, bool defaultAscending) {
  std::string prefix(name);
  std::string column = form.GetParam(prefix + "iCol");
  std::string ascending = form.GetParam(prefix + "bAsc");
  sortColumn_ = column.empty() ? defaultSortColumn : LTextToInt(column);
  ascending_ = ascending.empty() ? defaultAscending : ascending == "1";
}

void LHtmlList::AddColumn(std::string_view title, int widthPercent, int alignment, bool sortable,
                          std::string_view tooltip) {
  columns_.push_back({std::string(title), widthPercent, alignment, sortable, std::string(tooltip)});
}

void LHtmlList::AddColumnPrintF(int widthPercent, int alignment, bool sortable, const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string title = LWebFormatV(format, args);
  va_end(args);
  columns_.push_back({title, widthPercent, alignment, sortable, {}});
}

void LHtmlList::AddColumnRawHTML(std::string_view html, int widthPercent, std::string_view tooltip) {
  columns_.push_back({std::string(html), widthPercent, kListAlignRawHtml, false, std::string(tooltip)});
}

void LHtmlList::AddRow(std::unique_ptr<LHtmlListRow> row) {
  row->sortColumn_ = sortColumn_;
  row->ascending_ = ascending_;
  rows_.push_back(std::move(row));
}

std::vector<const LHtmlListRow*> LHtmlList::SortedRows() const {
  std::vector<const LHtmlListRow*> sorted;
  for (const auto& row : rows_) sorted.push_back(row.get());
  if (insertInOrder_) return sorted;
  std::size_t column = sortColumn_ < 0 ? columns_.size() : static_cast<std::size_t>(sortColumn_);
  // -1, 0, 1 for the key order of a and b: a row without the column comes first.
  auto compareKeys = [column](const LHtmlListRow* a, const LHtmlListRow* b) {
    bool aHas = column < a->cells_.size();
    bool bHas = column < b->cells_.size();
    if (!aHas || !bHas) return aHas == bHas ? 0 : (aHas ? 1 : -1);
    int c = ::strcasecmp(a->cells_[column].order.c_str(), b->cells_[column].order.c_str());
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
  };
  bool ascending = ascending_;
  std::stable_sort(sorted.begin(), sorted.end(), [&](const LHtmlListRow* a, const LHtmlListRow* b) {
    if (a->sortGroup_ != b->sortGroup_) return a->sortGroup_ < b->sortGroup_;
    int c = compareKeys(a, b);
    return ascending ? c < 0 : c > 0;
  });
  return sorted;
}

void LHtmlList::WriteHeader(LWebletForm& form, int widthPercent, int id) {
  std::string head = LWebFormat("<table style='width:%d%%' class='hltbl'", widthPercent);
  if (sortable_ && !insertInOrder_) head += LWebFormat(" data-sortcolumn=%d data-asc=%d", sortColumn_, ascending_ ? 1 : 0);
  if (sortable_ && !insertInOrder_ && !refilterRoute_.empty())
    head += LWebFormat(" data-refilter='%H'", refilterRoute_.c_str());
  if (id != 0) head += LWebFormat(" id=%d", id);
  head += "><thead><tr style='height:25px' class=hlhtr>";
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const Column& column = columns_[i];
    if (column.widthPercent == 0) continue;
    std::string sortClass;
    if (sortable_ && !insertInOrder_ && static_cast<int>(i) == sortColumn_)
      sortClass = ascending_ ? " hlsortasc" : " hlsortdesc";
    std::string title = column.tooltip.empty() ? "" : " title='" + LHtmlEscape(column.tooltip) + "'";
    if (column.alignment == kListAlignRawHtml)
      head += LWebFormat("<th style='text-align:center; width:%d%%;' class=hlhtd%s%s>%s</th>", column.widthPercent,
                         sortClass.c_str(), title.c_str(), column.title.c_str());
    else if (sortable_ && column.sortable)
      head += LWebFormat("<th data-sort='true' style='width:%d%%; text-align:%s; cursor:pointer'%s><span class=hlhtd%s>%s</span></th>",
                         column.widthPercent, AlignName(column.alignment), title.c_str(), sortClass.c_str(),
                         column.title.c_str());
    else
      head += LWebFormat("<th style='width:%d%%; text-align:%s;' class=hlhtd%s%s>%s</th>", column.widthPercent,
                         AlignName(column.alignment), sortClass.c_str(), title.c_str(), column.title.c_str());
  }
  head += "</tr></thead><tbody>";
  directRows_ = 0;
  form.Write(head);
}

std::string LHtmlList::RowHtml(const LHtmlListRow& row) const {
  std::string html = "<tr>";
  for (std::size_t i = 0; i < row.cells_.size() && i < columns_.size(); ++i) {
    const Column& column = columns_[i];
    if (column.widthPercent == 0) continue;
    const LHtmlListCell& cell = row.cells_[i];
    std::string order = cell.order != cell.text ? "data-order=\"" + LHtmlEscape(cell.order) + "\" " : "";
    std::string style = hideRows_ ? " style='display:none'" : "";
    html += LWebFormat("<td %salign=%s class=hltd%s%s%s>%s</td>", order.c_str(), AlignName(column.alignment), "", "",
                       style.c_str(), cell.text.c_str());
  }
  return html + "</tr>";
}

void LHtmlList::WriteDirectRow(LWebletForm& form, const LHtmlListRow& row) {
  ++directRows_;
  form.Write(RowHtml(row));
}

void LHtmlList::WriteDirectEnd(LWebletForm& form) {
  std::string end;
  if (directRows_ == 0)
    end += LWebFormat("<tr style='height:20px'><td colspan=%d style='text-align:center' class=hltd>Cette liste est vide</td>",
                      static_cast<int>(columns_.size()));
  end += "</tbody></table>";
  form.Write(end);
}

void LHtmlList::Write(LWebletForm& form, int widthPercent, int id, bool hidden) {
  bool hideBefore = hideRows_;
  if (hidden) hideRows_ = true;
  WriteHeader(form, widthPercent, id);
  std::string body;
  for (const LHtmlListRow* row : SortedRows()) {
    body += RowHtml(*row);
    ++directRows_;
  }
  form.Write(body);
  WriteDirectEnd(form);
  hideRows_ = hideBefore;
}
