#include "accounts/vehicles.h"

#include <algorithm>

#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestorekeys.h"
#include "llib/gen/record.h"
#include "llib/gen/textnum.h"

namespace {

struct KindWords {
  std::string_view kind, french, other;
};
constexpr KindWords kKinds[] = {
    {"car", "voiture", "automobile"}, {"motorcycle", "moto", "motocyclette"}, {"moped", "cyclomoteur", "scooter"}};

constexpr long long kMaxTripKm = 100000;
constexpr long long kMaxOdometerKm = 99999999;

// Whole kilometres of a record field: empty when absent.
std::optional<long long> OptionalKm(const LRecord& record, std::string_view name) {
  if (!record.TestFieldExists(name) || record.GetString(name).empty()) return std::nullopt;
  return record.GetInt64(name, 0);
}

void SetOptionalKm(LRecord& record, std::string_view name, const std::optional<long long>& km) {
  if (km) record.SetInt64(name, *km);
  else record.DeleteField(name);
}

void ReadTrip(const LRecord& record, LVehicleMileage& trip) {
  LVehicleMileage read;
  read.key = record.GetPrimaryKey();
  read.vehicle = record.GetString("Vehicle");
  (void)LDate::Parse(record.GetString("Date"), read.date);
  read.distanceKm = record.GetInt64("Distance", 0);
  read.startKm = OptionalKm(record, "StartOdometer");
  read.endKm = OptionalKm(record, "EndOdometer");
  read.purpose = record.GetString("Purpose");
  read.origin = record.GetString("From");
  read.destination = record.GetString("To");
  trip = std::move(read);
}

bool InRange(const LDate& date, const LDate& from, const LDate& to) {
  return (!from.IsValid() || !(date < from)) && (!to.IsValid() || !(to < date));
}

bool HasTrips(LProfile& profile, std::string_view vehicle) {
  LRecord record;
  for (LFileStoreIteratorBase it(profile.MainList(kMileageList), record); record.IsAttached(); it.Next(record))
    if (record.GetString("Vehicle") == vehicle) {
      record.DetachWithoutSave();
      return true;
    }
  return false;
}

}  // namespace

std::string_view LVehicleKindText(std::string_view kind) {
  for (const KindWords& words : kKinds)
    if (words.kind == kind) return words.french;
  return kind;
}

bool LVehicleKindOf(std::string_view word, std::string& kind) {
  for (const KindWords& words : kKinds)
    if (word == words.kind || word == words.french || word == words.other) {
      kind = std::string(words.kind);
      return true;
    }
  return false;
}

std::string LVehicleDescription(const LVehicle& vehicle) {
  std::string text = vehicle.name.empty() ? vehicle.key : vehicle.name;
  if (!vehicle.registration.empty()) text += " (" + vehicle.registration + ")";
  text += ", " + std::string(LVehicleKindText(vehicle.kind));
  if (vehicle.horsepower > 0) text += " " + std::to_string(vehicle.horsepower) + " CV";
  if (vehicle.electric) text += " électrique";
  return text;
}

std::string LVehicleNotFoundMessage(std::string_view key) { return "Véhicule introuvable : " + std::string(key); }

bool LVehicleLoad(LProfile& profile, std::string_view key, LVehicle& vehicle) {
  LRecord record;
  if (key.empty() || !profile.MainList(kVehiclesList).Open(record, key)) return false;
  LVehicle read;
  read.key = std::string(key);
  read.name = record.GetString("Name");
  read.registration = record.GetString("Registration");
  read.kind = record.GetString("Kind", "car");
  read.horsepower = record.GetInt("FiscalHorsepower", 0);
  read.electric = record.GetBool("Electric", false);
  read.notes = record.GetString("Notes");
  record.DetachWithoutSave();
  vehicle = std::move(read);
  return true;
}

std::vector<std::string> LVehicleKeys(LProfile& profile) {
  return LFileStoreSortedKeys(profile.MainList(kVehiclesList));
}

bool LVehicleSetFields(LVehicle& vehicle, const std::vector<std::pair<std::string, std::string>>& fields,
                       std::string& error) {
  for (const auto& [name, value] : fields) {
    if (name == "Name") vehicle.name = value;
    else if (name == "Registration") vehicle.registration = value;
    else if (name == "Notes") vehicle.notes = value;
    else if (name == "Kind") {
      if (!LVehicleKindOf(value, vehicle.kind)) {
        error = "Genre de véhicule inconnu : " + value + " (voiture, moto ou cyclomoteur).";
        return false;
      }
    } else if (name == "FiscalHorsepower") {
      if (value.empty() || value.size() > 2 || value.find_first_not_of("0123456789") != std::string::npos) {
        error = "Puissance fiscale invalide : " + value + " (un nombre entier de CV).";
        return false;
      }
      vehicle.horsepower = LTextToInt(value);
    } else if (name == "Electric") {
      if (value != "0" && value != "1") {
        error = "Electric vaut 1 (véhicule électrique) ou 0 : " + value;
        return false;
      }
      vehicle.electric = value == "1";
    } else {
      error = "Champ inconnu : " + name + " (Name, Registration, Kind, FiscalHorsepower, Electric, Notes).";
      return false;
    }
  }
  return true;
}

bool LVehicleSave(LProfile& profile, const LVehicle& vehicle, bool replace, std::string& error) {
  if (vehicle.key.empty()) {
    error = "Veuillez entrer le code du véhicule.";
    return false;
  }
  if (vehicle.kind != "moped" && vehicle.horsepower <= 0) {
    error = "Indiquez la puissance fiscale du véhicule (CV) : elle choisit le barème kilométrique.";
    return false;
  }
  const LFileStoreListBase& list = profile.MainList(kVehiclesList);
  if (!replace && list.TestRecordExists(vehicle.key)) {
    error = "Le véhicule « " + vehicle.key + " » existe déjà.";
    return false;
  }
  LRecord record;
  (void)list.OpenAlways(record, vehicle.key);
  record.SetString("Name", vehicle.name);
  record.SetString("Registration", vehicle.registration);
  record.SetString("Kind", vehicle.kind);
  record.SetInt("FiscalHorsepower", vehicle.horsepower);
  record.SetBool("Electric", vehicle.electric);
  record.SetString("Notes", vehicle.notes);
  record.SetDirty(true);  // a vehicle saved unchanged still takes its file
  if (record.Flush()) return true;
  error = "Le véhicule n'a pas pu être enregistré.";
  return false;
}

bool LVehicleDelete(LProfile& profile, std::string_view key, std::string& error) {
  if (key.empty() || !profile.MainList(kVehiclesList).TestRecordExists(key)) {
    error = LVehicleNotFoundMessage(key);
    return false;
  }
  if (HasTrips(profile, key)) {
    error = "Le véhicule « " + std::string(key) + " » a des trajets : supprimez d'abord ses trajets.";
    return false;
  }
  if (profile.MainList(kVehiclesList).Delete(key)) return true;
  error = "Le véhicule n'a pas pu être supprimé.";
  return false;
}

bool LVehicleMileageSave(LProfile& profile, LVehicleMileage& trip, std::string& error) {
  if (trip.vehicle.empty() || !profile.MainList(kVehiclesList).TestRecordExists(trip.vehicle)) {
    error = LVehicleNotFoundMessage(trip.vehicle);
    return false;
  }
  if (!trip.date.IsValid()) {
    error = "Veuillez entrer la date du trajet.";
    return false;
  }
  if (trip.startKm.has_value() != trip.endKm.has_value()) {
    error = "Indiquez les deux relevés du compteur, au départ et à l'arrivée.";
    return false;
  }
  if (trip.startKm) {
    if (*trip.startKm < 0 || *trip.endKm > kMaxOdometerKm || *trip.endKm <= *trip.startKm) {
      error = "Le compteur à l'arrivée doit dépasser le compteur au départ.";
      return false;
    }
    long long byOdometer = *trip.endKm - *trip.startKm;
    if (trip.distanceKm != 0 && trip.distanceKm != byOdometer) {
      error = "La distance (" + std::to_string(trip.distanceKm) + " km) ne correspond pas aux compteurs (" +
              std::to_string(byOdometer) + " km).";
      return false;
    }
    trip.distanceKm = byOdometer;
  }
  if (trip.distanceKm <= 0 || trip.distanceKm > kMaxTripKm) {
    error = "Distance invalide : " + std::to_string(trip.distanceKm) + " km (de 1 à 100000 km).";
    return false;
  }
  const LFileStoreListBase& list = profile.MainList(kMileageList);
  LRecord record;
  if (trip.key.empty()) list.CreateNewRecord(record);
  else (void)list.OpenAlways(record, trip.key);
  record.SetString("Vehicle", trip.vehicle);
  record.SetString("Date", trip.date.ToText());
  record.SetInt64("Distance", trip.distanceKm);
  SetOptionalKm(record, "StartOdometer", trip.startKm);
  SetOptionalKm(record, "EndOdometer", trip.endKm);
  record.SetString("Purpose", trip.purpose);
  record.SetString("From", trip.origin);
  record.SetString("To", trip.destination);
  if (!record.Flush()) {
    error = "Le trajet n'a pas pu être enregistré.";
    return false;
  }
  trip.key = record.GetPrimaryKey();
  return true;
}

bool LVehicleMileageLoad(LProfile& profile, std::string_view key, LVehicleMileage& trip) {
  LRecord record;
  if (key.empty() || !profile.MainList(kMileageList).Open(record, key)) return false;
  ReadTrip(record, trip);
  record.DetachWithoutSave();
  return true;
}

std::vector<LVehicleMileage> LVehicleMileageList(LProfile& profile, std::string_view vehicle, const LDate& from,
                                                 const LDate& to) {
  std::vector<LVehicleMileage> trips;
  LRecord record;
  for (LFileStoreIteratorBase it(profile.MainList(kMileageList), record); record.IsAttached(); it.Next(record)) {
    LVehicleMileage trip;
    ReadTrip(record, trip);
    if ((vehicle.empty() || trip.vehicle == vehicle) && InRange(trip.date, from, to)) trips.push_back(std::move(trip));
  }
  std::sort(trips.begin(), trips.end(), [](const LVehicleMileage& a, const LVehicleMileage& b) {
    if (a.date != b.date) return a.date < b.date;
    return a.key.size() != b.key.size() ? a.key.size() < b.key.size() : a.key < b.key;
  });
  return trips;
}

bool LVehicleMileageDelete(LProfile& profile, std::string_view key) {
  return !key.empty() && profile.MainList(kMileageList).Delete(key);
}

int LVehicleMileageDeleteRange(LProfile& profile, std::string_view vehicle, const LDate& from, const LDate& to) {
  int removed = 0;
  for (const LVehicleMileage& trip : LVehicleMileageList(profile, vehicle, from, to))
    if (LVehicleMileageDelete(profile, trip.key)) ++removed;
  return removed;
}
