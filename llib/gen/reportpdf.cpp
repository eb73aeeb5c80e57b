#include "llib/gen/reportpdf.h"

#include <algorithm>
#include <vector>

#include "llib/gen/pdftable.h"

namespace {

constexpr double kCellPaddingPt = 8;    // room around a cell's text (both sides of the table's padding)
constexpr double kMinLabelShare = 0.3;  // the labels keep at least this share of the width

// The width of the longest word of a heading: headings may wrap between words, amounts may not.
double WidestWord(LPdfCanvas& canvas, const std::string& text, const LTextStyle& style) {
  double widest = 0;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find(' ', start);
    if (end == std::string::npos) end = text.size();
    widest = std::max(widest, canvas.TextWidth(std::string_view(text).substr(start, end - start), style));
    start = end + 1;
  }
  return widest;
}

std::string LabelText(const LReportRow& row) {
  std::string label;
  for (int i = 0; i < row.indent; ++i) label += "\u00a0\u00a0\u00a0";
  label += row.label;
  return label;
}

}  // namespace

bool LReportWritePdf(const LReportTable& table, const LReportStyle& style, LPaperSize paper, std::string_view footNote,
                     std::string& pdf, std::string* error) {
  LPdfCanvas canvas(paper);
  canvas.SetTitle(table.title);
  if (!footNote.empty()) canvas.SetFootNote(footNote);
  const double width = canvas.Right() - canvas.Left();
  bool details = table.HasDetails();

  LTextStyle titleStyle;
  titleStyle.sizePt = 15;
  titleStyle.bold = true;
  double y = canvas.Top();
  y += canvas.Text(canvas.Left(), y, width, table.title, titleStyle);
  if (!table.subtitle.empty()) {
    LTextStyle subtitle;
    subtitle.sizePt = 9.5;
    subtitle.gray = 0.3;
    y += canvas.Text(canvas.Left(), y + 2, width, table.subtitle, subtitle) + 2;
  }
  y += 12;

  // Amount columns as wide as their widest cell or heading word (in bold): amounts never wrap.
  // Room left over first unwraps the headings, then goes to the labels.
  LTextStyle cell;
  LTextStyle bold;
  bold.bold = true;
  std::vector<double> widths(table.columns.size(), 0), unwrapped(table.columns.size(), 0);
  double detailWidth = 0, labelWidth = 0;
  for (std::size_t c = 0; c < widths.size(); ++c) {
    widths[c] = WidestWord(canvas, table.columns[c], bold) + kCellPaddingPt;
    unwrapped[c] = canvas.TextWidth(table.columns[c], bold) + kCellPaddingPt;
  }
  for (const LReportRow& row : table.rows) {
    labelWidth = std::max(labelWidth, canvas.TextWidth(LabelText(row), bold) + kCellPaddingPt);
    if (details) detailWidth = std::max(detailWidth, canvas.TextWidth(row.detail, cell) + kCellPaddingPt);
    for (std::size_t c = 0; c < widths.size(); ++c)
      widths[c] = std::max(widths[c], canvas.TextWidth(LReportCellText(row, c, style), bold) + kCellPaddingPt);
  }
  labelWidth = std::min(labelWidth, width * 0.5);
  double amounts = 0, growth = 0;
  for (std::size_t c = 0; c < widths.size(); ++c) {
    amounts += widths[c];
    growth += std::max(0.0, unwrapped[c] - widths[c]);
  }
  double spare = width - labelWidth - detailWidth - amounts;
  if (spare > 0 && growth > 0) {
    double share = std::min(1.0, spare / growth);
    for (std::size_t c = 0; c < widths.size(); ++c) widths[c] += std::max(0.0, unwrapped[c] - widths[c]) * share;
  } else if (spare < 0) {
    // Too many wide columns: they shrink together (their cells then wrap) to leave the labels room.
    double available = std::max(width * (1 - kMinLabelShare) - detailWidth, width * 0.2);
    for (double& w : widths) w *= available / amounts;
  }
  std::vector<LPdfColumn> columns = {{"", 0, LTextAlign::kLeft}};
  if (details) columns.push_back({"", detailWidth, LTextAlign::kLeft});
  for (std::size_t c = 0; c < widths.size(); ++c) columns.push_back({table.columns[c], widths[c], LTextAlign::kRight});
  double used = 0;
  for (const LPdfColumn& column : columns) used += column.widthPt;
  columns[0].widthPt = width - used;

  std::string continued = table.title + " (suite)";
  LPdfTable pdfTable(canvas, columns, canvas.Left(), [&continued](LPdfCanvas& c) {
    LTextStyle top;
    top.sizePt = 9;
    top.bold = true;
    return c.Top() + c.Text(c.Left(), c.Top(), c.Right() - c.Left(), continued, top) + 8;
  });
  pdfTable.Heading(y);
  for (const LReportRow& row : table.rows) {
    std::vector<std::string> cells = {LabelText(row)};
    if (details) cells.push_back(row.detail);
    for (std::size_t c = 0; c < table.columns.size(); ++c)
      cells.push_back(row.kind == LReportRowKind::kHeading ? std::string() : LReportCellText(row, c, style));
    pdfTable.Row(cells, y, row.kind != LReportRowKind::kAccount);
  }
  return canvas.Finish(pdf, error);
}
