// kontavo tax show|set: the tax options of the business (the record "Tax" of "Misc"). Renaming
// a tax renames it in every document that names it, as the tax dialog does.
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/taxrename.h"
#include "llib/gen/money.h"
#include "llib/gen/jsontext.h"

namespace {

constexpr int kMaxTaxes = 99;

bool ParseOnOff(std::string_view text, bool& out) {
  if (text == "on") out = true;
  else if (text == "off") out = false;
  else return false;
  return true;
}

bool ParseTaxNumber(std::string_view text, int& out) {
  if (text.empty() || text.size() > 2 || text.find_first_not_of("0123456789") != std::string_view::npos) return false;
  out = std::stoi(std::string(text));
  return out >= 1 && out <= kMaxTaxes;
}

// A percentage: decimal text, at most six decimals.
bool ParsePercent(std::string_view text, double& out) {
  long long scaled = 0;
  if (!LParseAmount(text, 6, scaled)) return false;
  out = static_cast<double>(scaled) / 1e6;
  return true;
}

// "RATE" or "R1/R2/C" (C 0 or 1).
bool ParseRate(std::string_view text, LFKTaxRate& rate) {
  std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) {
    rate = {};
    return ParsePercent(text, rate.rate1);
  }
  std::string_view rest = text.substr(slash + 1);
  std::size_t second = rest.find('/');
  if (second == std::string_view::npos) return false;
  std::string_view flag = rest.substr(second + 1);
  if (flag != "0" && flag != "1") return false;
  rate.compound = flag == "1";
  return ParsePercent(text.substr(0, slash), rate.rate1) && ParsePercent(rest.substr(0, second), rate.rate2);
}

// The "K=VALUE" options of one name, each checked by parse; false with error set.
template <class Parse>
bool ForEachAssignment(const std::vector<std::string>& words, std::string& error, Parse parse) {
  for (const auto& word : words) {
    std::string number, value;
    int taxNumber = 0;
    if (!LCliSplitAssignment(word, number, value) || !ParseTaxNumber(number, taxNumber) || !parse(taxNumber, value)) {
      error = "valeur invalide : " + word;
      return false;
    }
  }
  return true;
}

int Show(LCliContext& context, LProfile& profile) {
  LTaxOptions tax;
  tax.OpenFrom(profile);
  if (context.json) {
    nlohmann::ordered_json fields = nlohmann::ordered_json::object();
    for (const auto& field : tax.Fields())
      if (!field.deleted) fields[field.name] = field.text;
    context.out << LJsonDump(fields) << "\n";
    return kExitOk;
  }
  context.out << "Taxes : " << tax.GetTaxCount() << "\n";
  context.out << "Taxe par défaut : " << tax.GetDefaultRate() << "\n";
  context.out << "Prix taxes comprises : " << (tax.IsTaxInclusive() ? "oui" : "non") << "\n";
  context.out << "Suivi de la taxe versée : " << (tax.IsTrackTaxPaid() ? "oui" : "non") << "\n";
  for (int n = 1; n <= tax.GetTaxCount(); ++n) {
    context.out << n << "\t" << tax.GetTaxName(n) << "\t" << tax.GetTaxRateText(n);
    if (!tax.GetTaxCombined(n).empty()) context.out << "\t" << tax.GetTaxCombined(n);
    if (tax.IsZeroRate(n)) context.out << "\ttaux zéro";
    context.out << "\t" << tax.GetTaxAccountPayable(n) << "\n";
  }
  return kExitOk;
}

int Set(LCliContext& context, LCliArgs& args) {
  std::string count, defaultRate, inclusive, trackPaid;
  bool hasCount = args.TakeOption("--count", count);
  bool hasDefault = args.TakeOption("--default", defaultRate);
  bool hasInclusive = args.TakeOption("--inclusive", inclusive);
  bool hasTrackPaid = args.TakeOption("--track-paid", trackPaid);
  std::vector<std::string> names = args.TakeOptionAll("--name");
  std::vector<std::string> rates = args.TakeOptionAll("--rate");
  std::vector<std::string> zeros = args.TakeOptionAll("--zero");
  std::vector<std::string> accounts = args.TakeOptionAll("--account");
  std::vector<std::string> combinations = args.TakeOptionAll("--combined");
  std::vector<std::string> words;
  std::string error;
  if (!args.Finish(words, error)) return context.Usage(error);
  if (words.size() != 1) return context.Usage();

  int countValue = 0, defaultValue = 0;
  bool inclusiveValue = false, trackPaidValue = false;
  if ((hasCount && count != "0" && !ParseTaxNumber(count, countValue)) ||
      (hasDefault && !ParseTaxNumber(defaultRate, defaultValue)) ||
      (hasInclusive && !ParseOnOff(inclusive, inclusiveValue)) ||
      (hasTrackPaid && !ParseOnOff(trackPaid, trackPaidValue)))
    return context.Usage();
  // Everything is read before anything is written.
  std::vector<std::pair<int, std::string>> newNames;
  std::vector<std::pair<int, LFKTaxRate>> newRates;
  std::vector<std::pair<int, bool>> newZeros;
  std::vector<std::pair<int, std::string>> newAccounts;
  std::vector<std::pair<int, std::string>> newCombinations;
  bool ok = ForEachAssignment(names, error, [&](int n, const std::string& v) {
              newNames.emplace_back(n, v);
              return !v.empty() && v != kTaxNameNone && v != kTaxNameDefault;
            }) &&
            ForEachAssignment(rates, error, [&](int n, const std::string& v) {
              LFKTaxRate rate;
              newRates.emplace_back(n, rate);
              return ParseRate(v, newRates.back().second);
            }) &&
            ForEachAssignment(zeros, error, [&](int n, const std::string& v) {
              bool zero = false;
              newZeros.emplace_back(n, zero);
              return ParseOnOff(v, newZeros.back().second);
            }) &&
            ForEachAssignment(accounts, error, [&](int n, const std::string& v) {
              newAccounts.emplace_back(n, v);
              return true;
            }) &&
            ForEachAssignment(combinations, error, [&](int n, const std::string& v) {
              newCombinations.emplace_back(n, v);
              return true;
            });
  if (!ok) return context.Usage(error);

  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LTaxOptions tax;
  tax.OpenFrom(*profile);
  if (hasCount) tax.SetInt("TaxSystem", countValue);
  if (hasDefault) tax.SetInt("DefaultRate", defaultValue);
  if (hasInclusive) tax.SetBool("TaxInclusive", inclusiveValue);
  if (hasTrackPaid) tax.SetBool("TrackTaxPaid", trackPaidValue);
  std::vector<std::pair<std::string, std::string>> renames;
  for (const auto& [n, name] : newNames) {
    std::string old = tax.GetString(LTaxOptions::TaxField("TaxName", n));
    if (!old.empty() && old != name) renames.emplace_back(old, name);
    tax.SetTaxName(n, name);
  }
  for (const auto& [n, rate] : newRates) tax.SetTaxRate(n, rate);
  for (const auto& [n, zero] : newZeros) tax.SetZeroRate(n, zero);
  for (const auto& [n, account] : newAccounts) tax.SetTaxAccountPayable(n, account);
  for (const auto& [n, combined] : newCombinations) tax.SetTaxCombined(n, combined);
  tax.Flush();
  for (const auto& [oldName, newName] : renames) {
    LChangeTaxNameData data{profile, oldName, newName};
    LProcessInterfaceVoid silent;
    ProcessChangeTaxName(silent, data);
  }
  return kExitOk;
}

}  // namespace

int LCmdTax(LCliContext& context, LCliArgs& args) {
  std::string verb = LCliPeekVerb(args, {"--count", "--default", "--inclusive", "--track-paid", "--name", "--rate",
                                         "--zero", "--account", "--combined"});
  if (verb == "set") return Set(context, args);
  if (verb != "show") return context.Usage();
  std::vector<std::string> words;
  std::string error;
  if (!args.Finish(words, error)) return context.Usage(error);
  if (words.size() != 1) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  return Show(context, *profile);
}
