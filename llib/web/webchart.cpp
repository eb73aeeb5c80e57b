#include "llib/web/webchart.h"

#include <algorithm>
#include <cmath>

#include "llib/web/webformat.h"

namespace {

// The drawing's size in SVG units; it scales to the page's width.
constexpr int kWidth = 640;
constexpr int kHeight = 260;
constexpr int kLeft = 96;     // room for the axis's values
constexpr int kRight = 8;
constexpr int kTop = 28;      // room for the legend
constexpr int kBottom = 24;   // room for the labels
constexpr int kSteps = 4;     // about that many steps on the value axis

// The value axis: from low to high (both multiples of step, zero between them or at an end).
struct Axis {
  long long low = 0, high = 0, step = 1;
  double Y(long long value) const {
    return kTop + (kHeight - kTop - kBottom) * double(high - value) / double(high - low);
  }
};

// A round step (1, 2 or 5 times a power of ten) that cuts the range in about kSteps.
long long RoundStep(long long range) {
  double raw = std::max(1.0, double(range) / kSteps);
  double power = std::pow(10.0, std::floor(std::log10(raw)));
  for (double factor : {1.0, 2.0, 5.0, 10.0})
    if (factor * power >= raw) return static_cast<long long>(factor * power);
  return static_cast<long long>(10 * power);
}

Axis AxisOf(const LWebChart& chart) {
  long long low = 0, high = 0;
  for (const LWebChartSeries& series : chart.series)
    for (const auto& value : series.values)
      if (value) {
        low = std::min(low, *value);
        high = std::max(high, *value);
      }
  Axis axis;
  axis.step = RoundStep(high - low);
  axis.low = low < 0 ? -((-low + axis.step - 1) / axis.step) * axis.step : 0;
  axis.high = high > 0 ? ((high + axis.step - 1) / axis.step) * axis.step : 0;
  if (axis.high == axis.low) axis.high = axis.low + axis.step;
  return axis;
}

double SlotWidth(const LWebChart& chart) {
  return double(kWidth - kLeft - kRight) / double(std::max<std::size_t>(1, chart.labels.size()));
}

// The frame: the svg element, its title, the grid with the axis's values, the labels and the legend.
std::string Start(const LWebChart& chart, const Axis& axis, const LWebChartFormat& format, const char* kind) {
  std::string svg = LWebFormat(
      "<svg class='chart %s' viewBox='0 0 %d %d' width='100%%' role=img aria-label='%H' "
      "xmlns='http://www.w3.org/2000/svg'><title>%H</title>",
      kind, kWidth, kHeight, chart.title.c_str(), chart.title.c_str());
  for (long long value = axis.low; value <= axis.high; value += axis.step) {
    double y = axis.Y(value);
    std::string text = format(value);
    svg += LWebFormat("<line class='%s' x1='%d' x2='%d' y1='%.1f' y2='%.1f'/>"
                      "<text class=axis x='%d' y='%.1f' text-anchor=end>%H</text>",
                      value == 0 ? "zero" : "grid", kLeft, kWidth - kRight, y, y, kLeft - 6, y + 4, text.c_str());
  }
  double slot = SlotWidth(chart);
  for (std::size_t i = 0; i < chart.labels.size(); ++i)
    svg += LWebFormat("<text class=label x='%.1f' y='%d' text-anchor=middle>%H</text>", kLeft + slot * (i + 0.5),
                      kHeight - 6, chart.labels[i].c_str());
  int x = kLeft;
  for (const LWebChartSeries& series : chart.series) {
    svg += LWebFormat("<rect class='%H' x='%d' y='8' width='12' height='12'/><text class=legend x='%d' y='18'>%H</text>",
                      series.cssClass.c_str(), x, x + 16, series.name.c_str());
    x += 28 + 8 * static_cast<int>(series.name.size());
  }
  return svg;
}

}  // namespace

std::string LWebBarChartSvg(const LWebChart& chart, const LWebChartFormat& format) {
  Axis axis = AxisOf(chart);
  std::string svg = Start(chart, axis, format, "barchart");
  double slot = SlotWidth(chart);
  double bar = slot * 0.8 / double(std::max<std::size_t>(1, chart.series.size()));
  for (std::size_t s = 0; s < chart.series.size(); ++s) {
    const LWebChartSeries& series = chart.series[s];
    for (std::size_t i = 0; i < chart.labels.size() && i < series.values.size(); ++i) {
      if (!series.values[i]) continue;
      double top = axis.Y(std::max(0LL, *series.values[i])), bottom = axis.Y(std::min(0LL, *series.values[i]));
      std::string text = series.name + " " + chart.labels[i] + " : " + format(*series.values[i]);
      svg += LWebFormat("<rect class='%H' x='%.1f' y='%.1f' width='%.1f' height='%.1f'><title>%H</title></rect>",
                        series.cssClass.c_str(), kLeft + slot * i + slot * 0.1 + bar * s, top, bar,
                        std::max(0.5, bottom - top), text.c_str());
    }
  }
  return svg + "</svg>";
}

std::string LWebLineChartSvg(const LWebChart& chart, const LWebChartFormat& format) {
  Axis axis = AxisOf(chart);
  std::string svg = Start(chart, axis, format, "linechart");
  double slot = SlotWidth(chart);
  for (const LWebChartSeries& series : chart.series) {
    std::string points, dots;
    auto flush = [&] {
      if (!points.empty()) svg += LWebFormat("<polyline class='%H' points='%s'/>", series.cssClass.c_str(), points.c_str());
      points.clear();
    };
    for (std::size_t i = 0; i < chart.labels.size() && i < series.values.size(); ++i) {
      if (!series.values[i]) {
        flush();
        continue;
      }
      double x = kLeft + slot * (i + 0.5), y = axis.Y(*series.values[i]);
      points += LWebFormat("%s%.1f,%.1f", points.empty() ? "" : " ", x, y);
      std::string text = series.name + " " + chart.labels[i] + " : " + format(*series.values[i]);
      dots += LWebFormat("<circle class='%H' cx='%.1f' cy='%.1f' r='3.5'><title>%H</title></circle>",
                         series.cssClass.c_str(), x, y, text.c_str());
    }
    flush();
    svg += dots;
  }
  return svg + "</svg>";
}

std::string LWebChartTable(const LWebChart& chart, const LWebChartFormat& format) {
  std::string html = LWebFormat("<table class=charttable><caption>%H</caption><thead><tr><th scope=col>Mois</th>",
                                chart.title.c_str());
  for (const LWebChartSeries& series : chart.series)
    html += LWebFormat("<th scope=col>%H</th>", series.name.c_str());
  html += "</tr></thead><tbody>";
  for (std::size_t i = 0; i < chart.labels.size(); ++i) {
    html += LWebFormat("<tr><th scope=row>%H</th>", chart.labels[i].c_str());
    for (const LWebChartSeries& series : chart.series) {
      std::string text = i < series.values.size() && series.values[i] ? format(*series.values[i]) : "";
      html += LWebFormat("<td>%H</td>", text.c_str());
    }
    html += "</tr>";
  }
  return html + "</tbody></table>";
}
