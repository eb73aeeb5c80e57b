// Vehicles and their mileage logs. A vehicle is a record of the list "Vehicles" under the key the
// user gives it: "Name", "Registration", "Kind" ("car", "motorcycle" or "moped", the kinds of the
// kilometric scale), "FiscalHorsepower" (the "CV" of the registration document, which picks the
// scale's class), "Electric" ("1": the scale's increase applies) and "Notes".
//
// A trip is a record of the list "Mileage" under the first free number: "Vehicle" (the vehicle's
// key), "Date", "Distance" (whole km), "StartOdometer" and "EndOdometer" (the readings, when the
// trip was logged by them; the distance is then their difference), "Purpose" (why the trip was
// made: what the tax authority asks for), "From" and "To" (the places).
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "llib/gen/date.h"

class LProfile;

inline constexpr std::string_view kVehiclesList = "Vehicles";
inline constexpr std::string_view kMileageList = "Mileage";

struct LVehicle {
  std::string key;           // the record's key
  std::string name;          // "Name": "Clio de Paul"
  std::string registration;  // "Registration": "AB-123-CD"
  std::string kind = "car";  // "Kind": "car", "motorcycle", "moped"
  int horsepower = 0;        // "FiscalHorsepower"; 0 unknown (a moped needs none)
  bool electric = false;     // "Electric"
  std::string notes;         // "Notes"
};

struct LVehicleMileage {
  std::string key;                       // the record's key; empty for a trip not yet saved
  std::string vehicle;                   // "Vehicle": a vehicle's key
  LDate date;                            // "Date"
  long long distanceKm = 0;              // "Distance"
  std::optional<long long> startKm;      // "StartOdometer"
  std::optional<long long> endKm;        // "EndOdometer"
  std::string purpose;                   // "Purpose"
  std::string origin;                    // "From"
  std::string destination;               // "To"
};

// The French word of a kind ("voiture", "moto", "cyclomoteur"); the kind itself when unknown.
std::string_view LVehicleKindText(std::string_view kind);
// The kind of a word, English or French ("car", "voiture", "moto", ...); false when none.
bool LVehicleKindOf(std::string_view word, std::string& kind);
// "Clio de Paul (AB-123-CD), voiture 5 CV électrique": the vehicle as reports and lists show it.
std::string LVehicleDescription(const LVehicle& vehicle);

// "Véhicule introuvable : <key>", for a vehicle that is not there.
std::string LVehicleNotFoundMessage(std::string_view key);
// Reads the vehicle; false when there is none (vehicle unchanged).
bool LVehicleLoad(LProfile& profile, std::string_view key, LVehicle& vehicle);
// The vehicles' keys, sorted.
std::vector<std::string> LVehicleKeys(LProfile& profile);
// Sets fields by their record names ("Kind=voiture", "FiscalHorsepower=5", "Electric=1", ...).
// false with a French error for an unknown field or a value that does not read (vehicle left
// partly set: callers discard it).
bool LVehicleSetFields(LVehicle& vehicle, const std::vector<std::pair<std::string, std::string>>& fields,
                       std::string& error);
// Writes the vehicle under its key (a new one is refused when the key exists, unless replace).
// false with a French error: no key, no horsepower for a car or a motorcycle, a write that failed.
[[nodiscard]] bool LVehicleSave(LProfile& profile, const LVehicle& vehicle, bool replace, std::string& error);
// Removes the vehicle. Refused (false, French error) while it has trips, or when there is none.
[[nodiscard]] bool LVehicleDelete(LProfile& profile, std::string_view key, std::string& error);

// Checks the trip (its vehicle exists, a real date, a distance of 1 to 100,000 km that agrees with
// the odometers) and writes it; a trip without key gets the first free number, written back into
// trip.key. false with a French error; nothing written then.
[[nodiscard]] bool LVehicleMileageSave(LProfile& profile, LVehicleMileage& trip, std::string& error);
// Reads the trip; false when there is none.
bool LVehicleMileageLoad(LProfile& profile, std::string_view key, LVehicleMileage& trip);
// The trips of vehicle (every vehicle when empty) dated from..to (a bound not valid is open), by
// date then by key.
std::vector<LVehicleMileage> LVehicleMileageList(LProfile& profile, std::string_view vehicle, const LDate& from,
                                                 const LDate& to);
// Removes the trip; false when there was none.
bool LVehicleMileageDelete(LProfile& profile, std::string_view key);
// Removes the trips of vehicle dated from..to (bounds as LVehicleMileageList); the number removed.
int LVehicleMileageDeleteRange(LProfile& profile, std::string_view vehicle, const LDate& from, const LDate& to);
