#include "accounts/mileagereport.h"

#include <algorithm>
#include <map>
#include <vector>

#include "accounts/mileagescale.h"
#include "accounts/vehicles.h"
#include "invoice/shared/profile.h"

namespace {

std::string Km(long long km) { return std::to_string(km); }

// The allowance of a year's distance of the vehicle; 0 km is no allowance at all.
bool Allowance(const LMileageScale& scale, const LVehicle& vehicle, long long km, long long& cents,
               std::string& error) {
  cents = 0;
  if (km == 0 || LMileageAllowance(scale, vehicle.kind, vehicle.horsepower, vehicle.electric, km, cents)) return true;
  error = "Le barème kilométrique " + std::to_string(scale.year) + " ne couvre pas le véhicule " +
          LVehicleDescription(vehicle) + ".";
  return false;
}

struct Totals {
  long long km = 0;
  long long cents = 0;
};

// The rows of one vehicle; its totals added to all.
bool AddVehicle(LProfile& profile, const LVehicle& vehicle, const std::vector<LVehicleMileage>& trips, const LDate& from,
                const LDate& to, LReportTable& table, Totals& all, std::string& error) {
  table.AddHeading(vehicle.key + " — " + LVehicleDescription(vehicle));
  Totals own;
  for (int year = from.year; year <= to.year; ++year) {
    long long before = 0, within = 0;
    for (const LVehicleMileage& trip : trips) {
      if (trip.date.year != year) continue;
      if (trip.date < from) {
        before += trip.distanceKm;
        continue;
      }
      if (to < trip.date) continue;
      within += trip.distanceKm;
      std::string places = trip.origin;
      if (!trip.destination.empty()) places += (places.empty() ? "" : " → ") + trip.destination;
      LReportRow& row = table.AddRow(LReportRowKind::kAccount, trip.purpose.empty() ? "Trajet" : trip.purpose,
                                     {std::nullopt, std::nullopt, std::nullopt, std::nullopt}, 1);
      row.texts = {trip.date.ToText(), places, Km(trip.distanceKm), ""};
    }
    if (within == 0) continue;
    LMileageScale scale;
    long long upToEnd = 0, upToStart = 0;
    if (!LMileageScaleFor(profile, year, scale, error) || !Allowance(scale, vehicle, before + within, upToEnd, error) ||
        !Allowance(scale, vehicle, before, upToStart, error))
      return false;
    const LMileageBand* band = scale.BandFor(vehicle.kind, vehicle.horsepower, before + within);
    std::string label = "Indemnité " + std::to_string(year) + ", barème " + std::to_string(scale.year) + " : " +
                        LMileageBandFormula(*band, profile.GetCurrencyFormat());
    if (vehicle.electric && scale.electricPercent != 0)
      label += ", majoré de " + std::to_string(scale.electricPercent) + " %";
    if (before != 0) label += " (après " + Km(before) + " km dans l'année)";
    LReportRow& row = table.AddRow(LReportRowKind::kTotal, label,
                                   {std::nullopt, std::nullopt, std::nullopt, upToEnd - upToStart}, 1);
    row.texts = {"", "", Km(within), ""};
    own.km += within;
    own.cents += upToEnd - upToStart;
  }
  LReportRow& total =
      table.AddRow(LReportRowKind::kTotal, "Total " + vehicle.key, {std::nullopt, std::nullopt, std::nullopt, own.cents});
  total.texts = {"", "", Km(own.km), ""};
  all.km += own.km;
  all.cents += own.cents;
  return true;
}

}  // namespace

bool LMileageReport(LProfile& profile, std::string_view vehicle, const LDate& from, const LDate& to,
                    LReportTable& table, std::string& error) {
  if (!from.IsValid() || !to.IsValid() || to < from) {
    error = "Période invalide.";
    return false;
  }
  // The trips of the period's whole years: the distance before the period counts in the scale's
  // formula.
  std::map<std::string, std::vector<LVehicleMileage>> trips;
  for (LVehicleMileage& trip : LVehicleMileageList(profile, vehicle, LDate(from.year, 1, 1), LDate(to.year, 12, 31)))
    trips[trip.vehicle].push_back(std::move(trip));
  std::vector<std::string> keys;
  if (!vehicle.empty()) keys.emplace_back(vehicle);
  else
    for (const auto& [key, own] : trips) {
      auto inPeriod = [&](const LVehicleMileage& trip) { return !(trip.date < from) && !(to < trip.date); };
      if (std::any_of(own.begin(), own.end(), inPeriod)) keys.push_back(key);
    }
  LReportTable built;
  built.title = "Indemnités kilométriques";
  built.subtitle = "Du " + from.ToText() + " au " + to.ToText();
  built.columns = {"Date", "Trajet", "Distance (km)", "Indemnité"};
  Totals all;
  for (const std::string& key : keys) {
    LVehicle read;
    if (!LVehicleLoad(profile, key, read)) {
      error = LVehicleNotFoundMessage(key);
      return false;
    }
    if (!AddVehicle(profile, read, trips[key], from, to, built, all, error)) return false;
  }
  LReportRow& total =
      built.AddRow(LReportRowKind::kResult, "Total des indemnités", {std::nullopt, std::nullopt, std::nullopt, all.cents});
  total.texts = {"", "", Km(all.km), ""};
  table = std::move(built);
  return true;
}
