// The mileage report: for each vehicle, its trips over the period (date, purpose, places,
// distance), then for each calendar year of the period the allowance of the kilometric scale
// (accounts/mileagescale.h) for that year's distance, and the totals.
//
// The scale's formula is for a whole year's distance, so a period that starts or ends inside a
// year gets the part that its trips add to the year: the allowance of the year's distance up to
// the period's end, less that of the distance before its start. The periods of a year thus add up
// to the year's allowance.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/date.h"
#include "llib/gen/reporttable.h"

class LProfile;

// Title "Indemnités kilométriques", columns "Date", "Trajet", "Distance (km)" (text cells) and
// "Indemnité" (cents). vehicle empty: every vehicle that has trips in the period. false with a
// French error: a period that ends before it starts, an unknown vehicle, a year without a scale
// (or whose scale has no band for the vehicle).
bool LMileageReport(LProfile& profile, std::string_view vehicle, const LDate& from, const LDate& to,
                    LReportTable& table, std::string& error);
