// The French kilometric scale ("barème kilométrique"): what the tax authority allows per year for
// the business use of a private vehicle, by kind of vehicle, fiscal horsepower and the distance of
// the year. Each band gives the year's allowance as d × rate + fixed, d the year's distance in km.
//
// The scale is data, never code: one line a band, blanks between the words,
//     YEAR KIND HP_MIN HP_MAX UP_TO_KM RATE FIXED      2024 car 5 5 5000 0.357 1395
//     YEAR electric PERCENT                            2024 electric 20
// KIND "car", "motorcycle" or "moped"; HP_MAX "-" for no upper bound (a moped's band is "0 -");
// UP_TO_KM "-" for the last band of a class; RATE in euros per km (at most three decimals);
// FIXED in euros; "electric" the increase of an electric vehicle's allowance in percent. "#"
// begins a comment. The published scales ship with the program (mileagescaledata.cpp); a
// business keeps the years it imports (the list "MileageScales", one record a year whose "Scale"
// holds that year's lines), which take the place of the shipped year of the same number.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/money.h"

class LProfile;

inline constexpr std::string_view kMileageScalesList = "MileageScales";

struct LMileageBand {
  std::string kind;          // "car", "motorcycle", "moped"
  int minHorsepower = 0;     // the class of fiscal horsepower, both ends included
  int maxHorsepower = 0;     // 0: no upper bound
  long long upToKm = 0;      // the band covers distances up to this; 0: no upper bound
  long long rateMilli = 0;   // thousandths of a euro per km (0.357 -> 357)
  long long fixedCents = 0;  // the fixed part, cents
};

struct LMileageScale {
  int year = 0;                     // the year of the distances it applies to
  int electricPercent = 0;          // increase of an electric vehicle's allowance
  std::vector<LMileageBand> bands;  // in the order given: the classes, each band by distance

  // The band for a year's distance of a vehicle; null when the scale has no class for it.
  const LMileageBand* BandFor(std::string_view kind, int horsepower, long long km) const;
};

// Reads scale text (above) into one scale a year, in the order of the years' first lines. false
// with a French message naming the line at fault; scales unchanged then.
bool LMileageScaleParse(std::string_view text, std::vector<LMileageScale>& scales, std::string& error);
// The scale as the lines LMileageScaleParse reads.
std::string LMileageScaleText(const LMileageScale& scale);

// The allowance of a year's distance in cents, rounded half away from zero: d × rate + fixed,
// then the electric increase. false when the scale has no band for the vehicle.
bool LMileageAllowance(const LMileageScale& scale, std::string_view kind, int horsepower, bool electric,
                       long long km, long long& cents);
// "d × 0,357 + 1 395 €" of a band, as the report shows it, in the business's number and currency
// format (the allowance it gives is shown so too).
std::string LMileageBandFormula(const LMileageBand& band, const LCurrencyFormat& currency);

// The scales that apply in the business: the shipped ones, each year the business imported in
// place of the shipped one; sorted by year.
std::vector<LMileageScale> LMileageScales(LProfile& profile);
// The scale for the distances of year: that year's, else the latest before it (the scale of a
// year is published months after it ends). false with a French message when none is that old.
bool LMileageScaleFor(LProfile& profile, int year, LMileageScale& scale, std::string& error);
// Keeps the years of scales in the business (each replacing the year of that number). false with
// a French message when a write failed; the years written before it stay.
[[nodiscard]] bool LMileageScaleStore(LProfile& profile, const std::vector<LMileageScale>& scales, std::string& error);

// The scales published by the tax authority, as scale text.
std::string_view LMileageScalePublished();
