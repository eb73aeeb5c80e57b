// The report table: what every report (financial statements, sales reports, VAT obligations)
// fills, and what the writers render for a terminal, a CSV file, a JSON document or a web page.
// A row is a label and one amount per column (minor units; an empty cell has no value), of one
// kind: a heading, an account (or any detail line), a total, or a result. A column may hold
// text instead (dates, statuses): a row's text cell is shown where it has no amount.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/money.h"

enum class LReportRowKind { kHeading, kAccount, kTotal, kResult };

struct LReportRow {
  std::string label;
  std::vector<std::optional<long long>> values;  // minor units, one per column; nullopt: empty
  LReportRowKind kind = LReportRowKind::kAccount;
  int indent = 0;                                // nesting level of the label
  std::string detail;                            // short text after the label ("Débit"); usually empty
  std::vector<std::string> texts;                // text cells, one per column; shown where no amount is
};

class LReportTable {
 public:
  std::string title;
  std::string subtitle;              // period or date line under the title
  std::vector<std::string> columns;  // headings of the amount columns
  std::vector<LReportRow> rows;

  // Whether some row carries a detail text: the writers then give it a column after the label.
  bool HasDetails() const;

  LReportRow& AddHeading(std::string_view label, int indent = 0);
  LReportRow& AddRow(LReportRowKind kind, std::string_view label, std::vector<std::optional<long long>> values,
                     int indent = 0);
};

// How amounts are written: the business's currency format and its negative style.
struct LReportStyle {
  LCurrencyFormat currency;
  bool parenthesesForNegative = false;  // "(1 234,00 €)" rather than "-1 234,00 €"
};

std::string_view LReportRowKindName(LReportRowKind kind);  // "heading", "account", "total", "result"

// What one cell of an amount column shows: the row's text cell where it has no amount, else the
// amount in the style's format; empty when neither.
std::string LReportCellText(const LReportRow& row, std::size_t column, const LReportStyle& style);

// Aligned text for a terminal: title, subtitle, column headings, one line a row.
std::string LReportWriteText(const LReportTable& table, const LReportStyle& style);
// CSV: a heading row ("", columns...), then label and plain amounts ("1234.56") per row; with
// details, a second column holds them.
std::string LReportWriteCsv(const LReportTable& table, const LReportStyle& style);
// {"title":..., "columns":[...], "rows":[{"label":..., "values":[cents or null...], "kind":...}]};
// a row with text cells also has "texts":[text or null...] (one per column), a row with a
// detail "detail":...
std::string LReportWriteJson(const LReportTable& table);
// An HTML fragment: a <table class="report"> with a caption; rows carry their kind as class, and
// each amount cell its value in cents as data-cents.
std::string LReportWriteHtml(const LReportTable& table, const LReportStyle& style);
// Escapes &, <, >, " and ' for HTML text and attributes.
std::string LHtmlEscape(std::string_view text);
