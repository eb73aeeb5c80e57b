// kontavo vehicle add|edit|list|show|delete and kontavo mileage add|list|delete|clear|scale: the
// vehicles, their mileage logs and the kilometric scale (accounts/vehicles.h,
// accounts/mileagescale.h). `report mileage [VEHICLE]` gives the allowances.
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/mileagescale.h"
#include "accounts/vehicles.h"
#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/jsontext.h"

namespace {

nlohmann::ordered_json VehicleJson(const LVehicle& vehicle) {
  return {{"key", vehicle.key},
          {"Name", vehicle.name},
          {"Registration", vehicle.registration},
          {"Kind", vehicle.kind},
          {"FiscalHorsepower", vehicle.horsepower},
          {"Electric", vehicle.electric ? 1 : 0},
          {"Notes", vehicle.notes}};
}

// add|edit KEY FIELD=VALUE...: words[1] the key.
int VehicleWrite(LCliContext& context, LProfile& profile, const std::vector<std::string>& words, bool add) {
  std::vector<std::pair<std::string, std::string>> fields;
  for (std::size_t i = 2; i < words.size(); ++i) {
    std::string name, value;
    if (!LCliSplitAssignment(words[i], name, value)) return context.Usage("champ invalide : " + words[i]);
    fields.emplace_back(name, value);
  }
  LVehicle vehicle;
  vehicle.key = words[1];
  if (!add && !LVehicleLoad(profile, words[1], vehicle)) return context.Fail(LVehicleNotFoundMessage(words[1]));
  std::string error;
  if (!LVehicleSetFields(vehicle, fields, error) || !LVehicleSave(profile, vehicle, !add, error))
    return context.Fail(error);
  return kExitOk;
}

int VehicleList(LCliContext& context, LProfile& profile) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const std::string& key : LVehicleKeys(profile)) {
    LVehicle vehicle;
    if (!LVehicleLoad(profile, key, vehicle)) continue;
    if (context.json) all.push_back(VehicleJson(vehicle));
    else
      context.out << key << "\t" << vehicle.name << "\t" << vehicle.registration << "\t" << vehicle.kind << "\t"
                  << vehicle.horsepower << "\t" << (vehicle.electric ? 1 : 0) << "\n";
  }
  if (context.json) context.out << LJsonDump(all) << "\n";
  return kExitOk;
}

int VehicleShow(LCliContext& context, LProfile& profile, const std::string& key) {
  LVehicle vehicle;
  if (!LVehicleLoad(profile, key, vehicle)) return context.Fail(LVehicleNotFoundMessage(key));
  nlohmann::ordered_json json = VehicleJson(vehicle);
  if (context.json) {
    context.out << LJsonDump(json) << "\n";
    return kExitOk;
  }
  json.erase("key");
  for (const auto& [name, value] : json.items())
    context.out << name << "=" << (value.is_string() ? value.get<std::string>() : LJsonDump(value)) << "\n";
  return kExitOk;
}

// A whole number of kilometres; false with the usage problem.
bool ReadKm(std::string_view option, const std::string& text, long long& km, std::string& problem) {
  if (!text.empty() && text.find_first_not_of("0123456789") == std::string::npos && text.size() <= 9) {
    km = std::stoll(text);
    return true;
  }
  problem = "distance invalide pour " + std::string(option) + " : " + text + " (un nombre entier de kilomètres)";
  return false;
}

int MileageAdd(LCliContext& context, LProfile& profile, LCliArgs& args) {
  LVehicleMileage trip;
  std::string error, km, start, end;
  trip.date = LDate::Today();
  if (!LCliTakeDate(args, "--date", trip.date, error)) return context.Usage(error);
  bool byDistance = args.TakeOption("--km", km);
  bool byStart = args.TakeOption("--start", start);
  bool byEnd = args.TakeOption("--end", end);
  args.TakeOption("--purpose", trip.purpose);
  args.TakeOption("--origin", trip.origin);
  args.TakeOption("--destination", trip.destination);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  if (!byDistance && !byStart && !byEnd) return context.Usage();
  trip.vehicle = words[0];
  long long value = 0;
  if (byDistance) {
    if (!ReadKm("--km", km, trip.distanceKm, error)) return context.Usage(error);
  }
  if (byStart) {
    if (!ReadKm("--start", start, value, error)) return context.Usage(error);
    trip.startKm = value;
  }
  if (byEnd) {
    if (!ReadKm("--end", end, value, error)) return context.Usage(error);
    trip.endKm = value;
  }
  if (!LVehicleMileageSave(profile, trip, error)) return context.Fail(error);
  context.out << trip.key << "\n";
  return kExitOk;
}

std::string OptionalKm(const std::optional<long long>& km) { return km ? std::to_string(*km) : std::string(); }

int MileageList(LCliContext& context, LProfile& profile, LCliArgs& args) {
  LDate from, to;
  std::string error;
  if (!LCliTakeDate(args, "--from", from, error) || !LCliTakeDate(args, "--to", to, error)) return context.Usage(error);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 1)) return kExitUsage;
  std::string vehicle = words.empty() ? std::string() : words[0];
  if (!vehicle.empty() && !profile.MainList(kVehiclesList).TestRecordExists(vehicle))
    return context.Fail(LVehicleNotFoundMessage(vehicle));
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const LVehicleMileage& trip : LVehicleMileageList(profile, vehicle, from, to)) {
    if (!context.json) {
      context.out << trip.key << "\t" << trip.date.ToText() << "\t" << trip.vehicle << "\t" << trip.distanceKm << "\t"
                  << OptionalKm(trip.startKm) << "\t" << OptionalKm(trip.endKm) << "\t" << trip.purpose << "\t"
                  << trip.origin << "\t" << trip.destination << "\n";
      continue;
    }
    nlohmann::ordered_json json = {{"key", trip.key}, {"Vehicle", trip.vehicle}, {"Date", trip.date.ToText()},
                                   {"Distance", trip.distanceKm}};
    if (trip.startKm) json["StartOdometer"] = *trip.startKm;
    if (trip.endKm) json["EndOdometer"] = *trip.endKm;
    json["Purpose"] = trip.purpose;
    json["From"] = trip.origin;
    json["To"] = trip.destination;
    all.push_back(json);
  }
  if (context.json) context.out << LJsonDump(all) << "\n";
  return kExitOk;
}

// clear VEHICLE [--from D] [--to D]: the vehicle's trips of the period (every one without dates).
int MileageClear(LCliContext& context, LProfile& profile, LCliArgs& args) {
  LDate from, to;
  std::string error;
  if (!LCliTakeDate(args, "--from", from, error) || !LCliTakeDate(args, "--to", to, error)) return context.Usage(error);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  if (!profile.MainList(kVehiclesList).TestRecordExists(words[0]))
    return context.Fail(LVehicleNotFoundMessage(words[0]));
  context.out << LVehicleMileageDeleteRange(profile, words[0], from, to) << "\n";
  return kExitOk;
}

// scale [YEAR]: the scales in force (or the one that applies to YEAR); scale import FILE.
int MileageScale(LCliContext& context, LProfile& profile, const std::vector<std::string>& words) {
  std::string error;
  if (words.size() == 3 && words[1] == "import") {
    std::string text;
    if (!LFile::ReadAll(words[2], text)) return context.Fail("Impossible de lire le fichier " + words[2]);
    std::vector<LMileageScale> scales;
    if (!LMileageScaleParse(text, scales, error) || !LMileageScaleStore(profile, scales, error)) return context.Fail(error);
    for (const LMileageScale& scale : scales) context.out << scale.year << "\n";
    return kExitOk;
  }
  if (words.size() == 2) {
    if (words[1].size() != 4 || words[1].find_first_not_of("0123456789") != std::string::npos)
      return context.Usage("année invalide : " + words[1]);
    LMileageScale scale;
    if (!LMileageScaleFor(profile, std::stoi(words[1]), scale, error)) return context.Fail(error);
    context.out << LMileageScaleText(scale);
    return kExitOk;
  }
  if (words.size() != 1) return context.Usage();
  for (const LMileageScale& scale : LMileageScales(profile)) context.out << LMileageScaleText(scale);
  return kExitOk;
}

}  // namespace

int LCmdVehicle(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1)) return kExitUsage;
  const std::string& verb = words[0];
  bool keyed = words.size() >= 2;
  if (!((verb == "add" && keyed) || (verb == "edit" && words.size() >= 3) || (verb == "list" && words.size() == 1) ||
        ((verb == "show" || verb == "delete") && words.size() == 2)))
    return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "list") return VehicleList(context, *profile);
  if (verb == "show") return VehicleShow(context, *profile, words[1]);
  if (verb == "delete") return LVehicleDelete(*profile, words[1], error) ? kExitOk : context.Fail(error);
  return VehicleWrite(context, *profile, words, verb == "add");
}

int LCmdMileage(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "add") return MileageAdd(context, *profile, args);
  if (verb == "list") return MileageList(context, *profile, args);
  if (verb == "clear") return MileageClear(context, *profile, args);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  words.insert(words.begin(), verb);
  if (verb == "scale") return MileageScale(context, *profile, words);
  if (verb == "delete" && words.size() == 2) {
    if (!LVehicleMileageDelete(*profile, words[1])) return context.Fail("Trajet introuvable : " + words[1]);
    return kExitOk;
  }
  return context.Usage();
}
