#include "llib/gen/pdftable.h"

#include <algorithm>

LPdfTable::LPdfTable(LPdfCanvas& canvas, std::vector<LPdfColumn> columns, double x,
                     std::function<double(LPdfCanvas&)> onNewPage)
    : canvas_(canvas), columns_(std::move(columns)), x_(x), onNewPage_(std::move(onNewPage)) {
  cellStyle_.sizePt = 8.5;
  headingStyle_ = cellStyle_;
  headingStyle_.bold = true;
}

double LPdfTable::Width() const {
  double width = 0;
  for (const LPdfColumn& column : columns_) width += column.widthPt;
  return width;
}

double LPdfTable::RowHeight(const std::vector<std::string>& cells, const LTextStyle& style) {
  double height = 0;
  for (std::size_t i = 0; i < columns_.size() && i < cells.size(); ++i) {
    if (cells[i].empty()) continue;
    height = std::max(height, canvas_.TextHeight(cells[i], columns_[i].widthPt - 2 * kPaddingPt, style));
  }
  return std::max(height, canvas_.TextHeight("X", 0, style)) + 2 * kPaddingPt;
}

void LPdfTable::DrawCells(const std::vector<std::string>& cells, double y, const LTextStyle& style) {
  double x = x_;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    if (i < cells.size() && !cells[i].empty()) {
      LTextStyle cell = style;
      cell.align = columns_[i].align;
      canvas_.Text(x + kPaddingPt, y + kPaddingPt, columns_[i].widthPt - 2 * kPaddingPt, cells[i], cell);
    }
    x += columns_[i].widthPt;
  }
}

void LPdfTable::BreakPage(double& y) {
  canvas_.NewPage();
  y = onNewPage_ ? onNewPage_(canvas_) : canvas_.Top();
}

void LPdfTable::Heading(double& y) {
  std::vector<std::string> titles;
  for (const LPdfColumn& column : columns_) titles.push_back(column.title);
  double height = RowHeight(titles, headingStyle_);
  if (y + height + RowHeight({"X"}, cellStyle_) > canvas_.Bottom()) BreakPage(y);
  canvas_.FillRect(x_, y, Width(), height, 0.88);
  DrawCells(titles, y, headingStyle_);
  y += height;
}

void LPdfTable::Reserve(double height, double& y, bool withHeading) {
  if (y + height <= canvas_.Bottom()) return;
  BreakPage(y);
  if (withHeading) Heading(y);
}

void LPdfTable::Row(const std::vector<std::string>& cells, double& y, bool bold) {
  LTextStyle style = cellStyle_;
  style.bold = bold;
  double height = RowHeight(cells, style);
  Reserve(height, y, true);
  DrawCells(cells, y, style);
  y += height;
  canvas_.Line(x_, y, x_ + Width(), y, 0.3, 0.75);
}
