#include "invoice/sales/webvatca3.h"

#include <string>
#include <vector>

#include "accounts/ca3.h"
#include "accounts/reportperiods.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/webaccess.h"
#include "llib/gen/money.h"
#include "llib/gen/reporttable.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kMonthsOffered = 12;
constexpr int kQuartersOffered = 8;

// A period of the list: its code ("m2026-10", "q2026-4"), its text and its days.
struct LVatPeriod {
  std::string code;
  std::string text;
  LDate from;
  LDate to;
};

LVatPeriod Month(int year, int month) {
  return {LWebFormat("m%04d-%02d", year, month), std::string(LMonthName(month)) + " " + std::to_string(year),
          LDate(year, month, 1), LDate(year, month, LDaysInMonth(year, month))};
}

LVatPeriod Quarter(int year, int quarter) {
  int last = quarter * 3;
  return {LWebFormat("q%04d-%d", year, quarter),
          LWebFormat("%d%s trimestre %d", quarter, quarter == 1 ? "er" : "e", year), LDate(year, last - 2, 1),
          LDate(year, last, LDaysInMonth(year, last))};
}

// The months up to this one, then the quarters up to this one, newest first.
std::vector<LVatPeriod> PeriodsOffered(const LDate& today) {
  std::vector<LVatPeriod> periods;
  for (int i = 0, year = today.year, month = today.month; i < kMonthsOffered; ++i) {
    periods.push_back(Month(year, month));
    if (--month == 0) month = 12, --year;
  }
  for (int i = 0, year = today.year, quarter = (today.month + 2) / 3; i < kQuartersOffered; ++i) {
    periods.push_back(Quarter(year, quarter));
    if (--quarter == 0) quarter = 4, --year;
  }
  return periods;
}

}  // namespace

void LWebVatCa3Page::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::vector<LVatPeriod> periods = PeriodsOffered(LDate::Today());
  // Last month unless chosen otherwise; two dates typed win over the list.
  std::string code = form_.GetParam("period");
  if (code.empty()) code = periods[1].code;
  LDate from, to;
  for (const LVatPeriod& period : periods)
    if (period.code == code) from = period.from, to = period.to;
  std::string fromText = form_.GetParam("from"), toText = form_.GetParam("to");
  if (!fromText.empty() || !toText.empty()) {
    LDate typedFrom, typedTo;
    if (LDate::Parse(fromText, typedFrom) && LDate::Parse(toText, typedTo) && typedFrom <= typedTo) {
      from = typedFrom;
      to = typedTo;
      code = "custom";
    } else {
      SetOutcome({"Choisissez deux dates, la première avant la seconde (AAAA-MM-JJ).", ""}, false);
    }
  }
  if (!from.IsValid()) SetOutcome({"Période inconnue : " + code, ""}, false);
  WriteOutcome();

  std::string options;
  for (const LVatPeriod& period : periods)
    options += LWebFormat("<option value='%s'%s>%H</option>", period.code.c_str(), period.code == code ? " selected" : "",
                          period.text.c_str());
  std::string shownFrom = code == "custom" ? from.ToText() : "", shownTo = code == "custom" ? to.ToText() : "";
  form_.wfprintf("<form method=get action='vatreturn' class=vatform><p><label for=period>Période :</label> "
                 "<select id=period name=period>%s</select> ou du <input type=date name=from id=from value='%H'> au "
                 "<input type=date name=to id=to value='%H'> <input type=submit value='Afficher' class='button okbutton'></p></form>",
                 options.c_str(), shownFrom.c_str(), shownTo.c_str());
  if (!from.IsValid()) return;

  LCa3Figures figures = LCa3Compute(profile, from, to);
  LReportTable table;
  LCa3Report(figures, from, to, table);
  LOptions settings;
  settings.OpenFrom(profile);
  LReportStyle style{profile.GetCurrencyFormat(), settings.GetBool("UseParenthesesForNegative", false)};
  std::string query = LWebFormat("report=tva-ca3&from=%s&to=%s", from.ToText().c_str(), to.ToText().c_str());
  form_.wfprintf("<p class=reportlinks><a href='generatereport?%s&format=csv' class=actionlink download>Télécharger "
                 "en CSV</a> <a href='generatereport?%s&format=pdf' class=actionlink download>Télécharger en PDF</a></p>",
                 query.c_str(), query.c_str());
  std::string net = LFormatMoney(figures.credit > 0 ? figures.credit : figures.netDue, profile.GetCurrencyFormat());
  form_.wfprintf("<p class=vatnet id=vatnet><b>%s : %H</b></p>",
                 figures.credit > 0 ? "Crédit de TVA (ligne 25)" : "TVA nette due (ligne 28)", net.c_str());
  form_.Write(LReportWriteHtml(table, style));
}
