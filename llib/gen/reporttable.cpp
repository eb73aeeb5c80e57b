#include "llib/gen/reporttable.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "llib/gen/csv.h"
#include "llib/gen/jsontext.h"

LReportRow& LReportTable::AddHeading(std::string_view label, int indent) {
  return AddRow(LReportRowKind::kHeading, label, {}, indent);
}

LReportRow& LReportTable::AddRow(LReportRowKind kind, std::string_view label,
                                 std::vector<std::optional<long long>> values, int indent) {
  rows.push_back(LReportRow{std::string(label), std::move(values), kind, indent, {}, {}});
  return rows.back();
}

bool LReportTable::HasDetails() const {
  return std::any_of(rows.begin(), rows.end(), [](const LReportRow& row) { return !row.detail.empty(); });
}

std::string_view LReportRowKindName(LReportRowKind kind) {
  switch (kind) {
    case LReportRowKind::kHeading: return "heading";
    case LReportRowKind::kTotal: return "total";
    case LReportRowKind::kResult: return "result";
    case LReportRowKind::kAccount: break;
  }
  return "account";
}

namespace {

// Width in characters of UTF-8 text (continuation bytes do not count).
std::size_t DisplayWidth(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

std::string PadRight(std::string text, std::size_t width) {
  std::size_t shown = DisplayWidth(text);
  if (shown < width) text.append(width - shown, ' ');
  return text;
}

std::string PadLeft(const std::string& text, std::size_t width) {
  std::size_t shown = DisplayWidth(text);
  return shown < width ? std::string(width - shown, ' ') + text : text;
}

// The text cell of a column without an amount; null when the row has none.
const std::string* TextCell(const LReportRow& row, std::size_t column) {
  bool hasAmount = column < row.values.size() && row.values[column];
  return !hasAmount && column < row.texts.size() ? &row.texts[column] : nullptr;
}

std::string IndentedLabel(const LReportRow& row) { return std::string(static_cast<std::size_t>(row.indent) * 2, ' ') + row.label; }

}  // namespace

std::string LReportCellText(const LReportRow& row, std::size_t column, const LReportStyle& style) {
  if (const std::string* text = TextCell(row, column)) return *text;
  if (column >= row.values.size() || !row.values[column]) return {};
  return LFormatMoney(*row.values[column], style.currency, style.parenthesesForNegative);
}

std::string LReportWriteText(const LReportTable& table, const LReportStyle& style) {
  std::size_t labelWidth = 0;
  std::size_t detailWidth = 0;
  std::vector<std::size_t> widths(table.columns.size(), 0);
  for (std::size_t c = 0; c < table.columns.size(); ++c) widths[c] = DisplayWidth(table.columns[c]);
  for (const auto& row : table.rows) {
    labelWidth = std::max(labelWidth, DisplayWidth(IndentedLabel(row)));
    detailWidth = std::max(detailWidth, DisplayWidth(row.detail));
    for (std::size_t c = 0; c < widths.size(); ++c) widths[c] = std::max(widths[c], DisplayWidth(LReportCellText(row, c, style)));
  }
  std::string out = table.title + "\n";
  if (!table.subtitle.empty()) out += table.subtitle + "\n";
  out += "\n";
  if (!table.columns.empty()) {
    std::string line = PadRight("", labelWidth + (detailWidth > 0 ? detailWidth + 2 : 0));
    for (std::size_t c = 0; c < widths.size(); ++c) line += "  " + PadLeft(table.columns[c], widths[c]);
    out += line + "\n";
  }
  for (const auto& row : table.rows) {
    std::string line = PadRight(IndentedLabel(row), labelWidth);
    if (detailWidth > 0) line += "  " + PadRight(row.detail, detailWidth);
    if (row.kind != LReportRowKind::kHeading)
      for (std::size_t c = 0; c < widths.size(); ++c) line += "  " + PadLeft(LReportCellText(row, c, style), widths[c]);
    while (!line.empty() && line.back() == ' ') line.pop_back();
    if (row.kind == LReportRowKind::kTotal || row.kind == LReportRowKind::kResult) {
      std::size_t ruleWidth = labelWidth + (detailWidth > 0 ? detailWidth + 2 : 0);
      for (std::size_t w : widths) ruleWidth += 2 + w;
      out += std::string(ruleWidth, '-') + "\n";
    }
    out += line + "\n";
  }
  return out;
}

std::string LReportWriteCsv(const LReportTable& table, const LReportStyle& style) {
  std::string out;
  bool details = table.HasDetails();
  LCSVWriterRow heading;
  heading.AddCol("");
  if (details) heading.AddCol("");
  for (const auto& column : table.columns) heading.AddCol(column);
  out += heading.GetText() + "\r\n";
  for (const auto& row : table.rows) {
    LCSVWriterRow line;
    line.AddCol(row.label);
    if (details) line.AddCol(row.detail);
    for (std::size_t c = 0; c < table.columns.size(); ++c) {
      bool present = c < row.values.size() && row.values[c].has_value();
      const std::string* text = TextCell(row, c);
      line.AddCol(present ? LFormatAmountPlain(*row.values[c], style.currency.digits) : text ? *text : std::string());
    }
    out += line.GetText() + "\r\n";
  }
  return out;
}

std::string LReportWriteJson(const LReportTable& table) {
  nlohmann::ordered_json document;
  document["title"] = table.title;
  document["columns"] = table.columns;
  nlohmann::ordered_json rows = nlohmann::ordered_json::array();
  for (const auto& row : table.rows) {
    // "values" holds amounts only; text cells (dates, keys, counts) go beside them in "texts".
    nlohmann::ordered_json values = nlohmann::ordered_json::array();
    nlohmann::ordered_json texts = nlohmann::ordered_json::array();
    bool hasTexts = false;
    for (std::size_t c = 0; c < table.columns.size(); ++c) {
      bool amount = c < row.values.size() && row.values[c];
      if (amount) values.push_back(*row.values[c]);
      else values.push_back(nullptr);
      const std::string* text = amount ? nullptr : TextCell(row, c);
      if (text) texts.push_back(*text);
      else texts.push_back(nullptr);
      hasTexts = hasTexts || text != nullptr;
    }
    nlohmann::ordered_json entry = {{"label", row.label}, {"values", values}, {"kind", LReportRowKindName(row.kind)}};
    if (hasTexts) entry["texts"] = texts;
    if (!row.detail.empty()) entry["detail"] = row.detail;
    rows.push_back(entry);
  }
  document["rows"] = rows;
  return LJsonDump(document);
}

std::string LHtmlEscape(std::string_view text) {
  // Names stored in Latin-1 or Windows-1252 by older programs show as they were meant, the way
  // JSON output reads them.
  if (!LIsValidUtf8(text)) return LHtmlEscape(LTextAsUtf8(text));
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&#39;"; break;
      default: out.push_back(c);
    }
  }
  return out;
}

std::string LReportWriteHtml(const LReportTable& table, const LReportStyle& style) {
  bool details = table.HasDetails();
  std::string out = "<table class=\"report\">\n<caption>" + LHtmlEscape(table.title);
  if (!table.subtitle.empty()) out += "<br><span class=\"subtitle\">" + LHtmlEscape(table.subtitle) + "</span>";
  out += "</caption>\n";
  if (!table.columns.empty()) {
    out += details ? "<thead><tr><th></th><th></th>" : "<thead><tr><th></th>";
    for (const auto& column : table.columns) out += "<th class=\"amount\">" + LHtmlEscape(column) + "</th>";
    out += "</tr></thead>\n";
  }
  out += "<tbody>\n";
  for (const auto& row : table.rows) {
    out += "<tr class=\"" + std::string(LReportRowKindName(row.kind)) + "\"><td class=\"label indent" +
           std::to_string(row.indent) + "\">" + LHtmlEscape(row.label) + "</td>";
    if (details) out += "<td class=\"detail\">" + LHtmlEscape(row.detail) + "</td>";
    for (std::size_t c = 0; c < table.columns.size(); ++c) {
      std::string cell = row.kind == LReportRowKind::kHeading ? std::string() : LReportCellText(row, c, style);
      // The amount in cents rides along, so that a page's script (and a reader of the page)
      // need not parse the formatted text back.
      bool amount = row.kind != LReportRowKind::kHeading && c < row.values.size() && row.values[c];
      bool negative = amount && *row.values[c] < 0;
      out += std::string("<td class=\"amount") + (negative ? " negative" : "") + "\"" +
             (amount ? " data-cents=\"" + std::to_string(*row.values[c]) + "\"" : std::string()) + ">" +
             LHtmlEscape(cell) + "</td>";
    }
    out += "</tr>\n";
  }
  out += "</tbody>\n</table>\n";
  return out;
}
