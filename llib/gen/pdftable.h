// A table printed over as many pages as its rows need: a shaded heading row, then rows whose
// cells wrap inside their column. When a row does not fit above the bottom of the page, a new
// page starts, the caller's page-top callback draws what continued pages carry (the document's
// name and number), and the heading row is drawn again before the row.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "llib/gen/pdfcanvas.h"

struct LPdfColumn {
  std::string title;
  double widthPt;                         // the column's share of the table's width
  LTextAlign align = LTextAlign::kLeft;
};

class LPdfTable {
 public:
  // onNewPage draws the top of a continued page and returns the y below it (may be empty: the
  // table then starts at the top margin).
  LPdfTable(LPdfCanvas& canvas, std::vector<LPdfColumn> columns, double x,
            std::function<double(LPdfCanvas&)> onNewPage = {});

  // Draws the heading row at y (on a new page first when even the heading and one line do not
  // fit); y moves below it.
  void Heading(double& y);
  // Draws one row at y, one text a column (missing ones are empty); y moves below it.
  void Row(const std::vector<std::string>& cells, double& y, bool bold = false);
  // Makes sure height points fit below y, starting a new page (with the heading again when
  // withHeading) when they do not.
  void Reserve(double height, double& y, bool withHeading);
  double Width() const;

 private:
  static constexpr double kPaddingPt = 3;
  LPdfCanvas& canvas_;
  std::vector<LPdfColumn> columns_;
  double x_;                                        // left edge of the table
  std::function<double(LPdfCanvas&)> onNewPage_;
  LTextStyle cellStyle_;
  LTextStyle headingStyle_;
  double RowHeight(const std::vector<std::string>& cells, const LTextStyle& style);
  void DrawCells(const std::vector<std::string>& cells, double y, const LTextStyle& style);
  void BreakPage(double& y);
};
