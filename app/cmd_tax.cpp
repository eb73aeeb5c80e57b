// kontavo tax show|set: the tax options of the business (the record "Tax" of "Misc"). Renaming
// a tax renames it in every document that names it, as the tax dialog does.
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/taxsettings.h"
#include "llib/gen/jsontext.h"

namespace {

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
  LTaxSettingsChange change;
  for (auto [option, field] : {std::pair{"--name", LTaxSettingField::kName}, {"--rate", LTaxSettingField::kRate},
                               {"--zero", LTaxSettingField::kZero}, {"--account", LTaxSettingField::kAccount},
                               {"--combined", LTaxSettingField::kCombined}})
    for (std::string& text : args.TakeOptionAll(option)) change.assignments.push_back({field, std::move(text)});
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;

  int countValue = 0, defaultValue = 0;
  bool inclusiveValue = false, trackPaidValue = false;
  if ((hasCount && count != "0" && !LTaxNumberParse(count, countValue)) ||
      (hasDefault && !LTaxNumberParse(defaultRate, defaultValue)) ||
      (hasInclusive && !LTaxSwitchParse(inclusive, inclusiveValue)) ||
      (hasTrackPaid && !LTaxSwitchParse(trackPaid, trackPaidValue)))
    return context.Usage();
  if (hasCount) change.count = countValue;
  if (hasDefault) change.defaultRate = defaultValue;
  if (hasInclusive) change.inclusive = inclusiveValue;
  if (hasTrackPaid) change.trackPaid = trackPaidValue;

  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (!LTaxSettingsApply(*profile, change, &error)) {
    // A value that does not read is a usage error, as it always was on the command line.
    if (error.starts_with(LTaxSettingsInvalidMessage(""))) return context.Usage(error);
    return context.Fail(error);
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
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  return Show(context, *profile);
}
