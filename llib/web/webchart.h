// Charts drawn on the server as inline SVG, for pages that must work without any script library:
// a bar chart (series side by side per label) and a line chart, on a value axis with round
// steps and zero always shown. Values are integers (cents for money); the caller's format turns
// a value into the text of the axis and of the figures table. Each chart goes with its figures
// as an HTML table (LWebChartTable), which screen readers read in place of the drawing.
//
//     LWebChart chart{"Recettes et dépenses", {"janv.", "févr."}, {{"Recettes", "income", {{1200}, {800}}}}};
//     html += LWebBarChartSvg(chart, format) + LWebChartTable(chart, format);
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

struct LWebChartSeries {
  std::string name;                          // legend text
  std::string cssClass;                      // class of its bars or line ("income", "cash")
  std::vector<std::optional<long long>> values;  // one per label; nullopt: no point
};

struct LWebChart {
  std::string title;                 // the caption of the drawing and of the table
  std::vector<std::string> labels;   // the categories along the bottom (months)
  std::vector<LWebChartSeries> series;
};

using LWebChartFormat = std::function<std::string(long long value)>;

// "<svg ... role=img>" with a title, the axis, the bars (one group per label) and a legend.
std::string LWebBarChartSvg(const LWebChart& chart, const LWebChartFormat& format);
// The same with one line (and a dot per point) per series; a missing value breaks the line.
std::string LWebLineChartSvg(const LWebChart& chart, const LWebChartFormat& format);
// "<table class=charttable>" with the caption, a row per label and a column per series; the
// style sheet keeps it for screen readers only.
std::string LWebChartTable(const LWebChart& chart, const LWebChartFormat& format);
