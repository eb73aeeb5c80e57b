#include "accounts/mileagescale.h"

#include <algorithm>

#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/log.h"
#include "llib/gen/money.h"
#include "llib/gen/record.h"
#include "llib/gen/textnum.h"

namespace {

constexpr std::string_view kKinds[] = {"car", "motorcycle", "moped"};
// Bounds far beyond any published scale, so that a year's distance times a rate stays exact.
constexpr long long kMaxRateMilli = 100000;     // 100 € a km
constexpr long long kMaxFixedCents = 100000000;  // 1,000,000 €

std::vector<std::string> Words(std::string_view line) {
  std::vector<std::string> words;
  std::size_t at = 0;
  while (true) {
    at = line.find_first_not_of(" \t\r", at);
    if (at == std::string_view::npos) break;
    std::size_t end = std::min(line.find_first_of(" \t\r", at), line.size());
    words.emplace_back(line.substr(at, end - at));
    at = end;
  }
  return words;
}

// A whole number of at most 9 digits, or "-" (read as 0) where open is allowed.
bool ReadCount(const std::string& word, bool open, long long& value) {
  if (open && word == "-") {
    value = 0;
    return true;
  }
  if (word.empty() || word.size() > 9 || word.find_first_not_of("0123456789") != std::string::npos) return false;
  value = LTextToInt64(word);
  return true;
}

// "2024" or "2022-2024": the years a line is for.
bool ReadYears(const std::string& word, int& first, int& last) {
  std::size_t dash = word.find('-');
  long long from = 0, to = 0;
  if (!ReadCount(word.substr(0, dash), false, from)) return false;
  to = from;
  if (dash != std::string::npos && !ReadCount(word.substr(dash + 1), false, to)) return false;
  first = static_cast<int>(from);
  last = static_cast<int>(to);
  return first >= 1900 && first <= last && last <= 9999;
}

bool SameClass(const LMileageBand& a, const LMileageBand& b) {
  return a.kind == b.kind && a.minHorsepower == b.minHorsepower && a.maxHorsepower == b.maxHorsepower;
}

std::string ClassName(const LMileageBand& band) {
  return band.kind + " " + std::to_string(band.minHorsepower) + " " +
         (band.maxHorsepower == 0 ? std::string("-") : std::to_string(band.maxHorsepower));
}

// Each class of fiscal horsepower goes up by distance and ends with an open band.
bool CheckClasses(const LMileageScale& scale, std::string& error) {
  for (std::size_t i = 0; i < scale.bands.size(); ++i) {
    const LMileageBand& band = scale.bands[i];
    bool last = i + 1 == scale.bands.size() || !SameClass(band, scale.bands[i + 1]);
    bool rises = last || (band.upToKm != 0 && scale.bands[i + 1].upToKm == 0) ||
                 (band.upToKm != 0 && scale.bands[i + 1].upToKm > band.upToKm);
    if (!rises || (last && band.upToKm != 0)) {
      error = "Barème kilométrique " + std::to_string(scale.year) + " : les tranches de " + ClassName(band) +
              " doivent croître et finir par une tranche sans limite (-).";
      return false;
    }
  }
  return true;
}

LMileageScale& ScaleOf(std::vector<LMileageScale>& scales, int year) {
  for (LMileageScale& scale : scales)
    if (scale.year == year) return scale;
  scales.push_back(LMileageScale{year, 0, {}});
  return scales.back();
}

}  // namespace

const LMileageBand* LMileageScale::BandFor(std::string_view kind, int horsepower, long long km) const {
  for (const LMileageBand& band : bands)
    if (band.kind == kind && horsepower >= band.minHorsepower &&
        (band.maxHorsepower == 0 || horsepower <= band.maxHorsepower) && (band.upToKm == 0 || km <= band.upToKm))
      return &band;
  return nullptr;
}

bool LMileageScaleParse(std::string_view text, std::vector<LMileageScale>& scales, std::string& error) {
  std::vector<LMileageScale> read;
  int lineNumber = 0;
  for (std::size_t start = 0; start < text.size();) {
    std::size_t end = std::min(text.find('\n', start), text.size());
    std::string_view line = text.substr(start, end - start);
    start = end + 1;
    ++lineNumber;
    line = line.substr(0, line.find('#'));
    std::vector<std::string> words = Words(line);
    if (words.empty()) continue;
    auto refuse = [&](std::string_view reason) {
      error = "Barème kilométrique, ligne " + std::to_string(lineNumber) + " : " + std::string(reason) + " : " +
              std::string(line);
      return false;
    };
    int first = 0, last = 0;
    if (!ReadYears(words[0], first, last)) return refuse("année invalide");
    if (words.size() == 3 && words[1] == "electric") {
      long long percent = 0;
      if (!ReadCount(words[2], false, percent) || percent > 100) return refuse("majoration invalide");
      for (int year = first; year <= last; ++year) ScaleOf(read, year).electricPercent = static_cast<int>(percent);
      continue;
    }
    if (words.size() != 7) return refuse("il faut : année genre cv_min cv_max km_max taux fixe");
    LMileageBand band;
    band.kind = words[1];
    if (std::find(std::begin(kKinds), std::end(kKinds), band.kind) == std::end(kKinds))
      return refuse("genre inconnu (car, motorcycle ou moped)");
    long long minHp = 0, maxHp = 0;
    if (!ReadCount(words[2], false, minHp) || !ReadCount(words[3], true, maxHp) || minHp > 99 || maxHp > 99 ||
        (maxHp != 0 && maxHp < minHp))
      return refuse("puissance fiscale invalide");
    band.minHorsepower = static_cast<int>(minHp);
    band.maxHorsepower = static_cast<int>(maxHp);
    if (!ReadCount(words[4], true, band.upToKm)) return refuse("distance invalide");
    if (!LParseAmount(words[5], 3, band.rateMilli) || band.rateMilli < 0 || band.rateMilli > kMaxRateMilli)
      return refuse("taux invalide");
    if (!LParseAmount(words[6], 2, band.fixedCents) || band.fixedCents < 0 || band.fixedCents > kMaxFixedCents)
      return refuse("montant fixe invalide");
    for (int year = first; year <= last; ++year) ScaleOf(read, year).bands.push_back(band);
  }
  for (const LMileageScale& scale : read) {
    // An increase alone would stand for a year whose every allowance is missing.
    if (scale.bands.empty()) {
      error = "Barème kilométrique " + std::to_string(scale.year) + " : aucune tranche pour cette année.";
      return false;
    }
    if (!CheckClasses(scale, error)) return false;
  }
  scales = std::move(read);
  return true;
}

std::string LMileageScaleText(const LMileageScale& scale) {
  std::string year = std::to_string(scale.year), text;
  if (scale.electricPercent != 0) text += year + " electric " + std::to_string(scale.electricPercent) + "\n";
  for (const LMileageBand& band : scale.bands)
    text += year + " " + ClassName(band) + " " + (band.upToKm == 0 ? std::string("-") : std::to_string(band.upToKm)) +
            " " + LFormatAmountPlain(band.rateMilli, 3) + " " + LFormatAmountPlain(band.fixedCents, 2) + "\n";
  return text;
}

bool LMileageAllowance(const LMileageScale& scale, std::string_view kind, int horsepower, bool electric,
                       long long km, long long& cents) {
  const LMileageBand* band = scale.BandFor(kind, horsepower, km);
  if (band == nullptr) return false;
  // km × thousandths of a euro is tenths of a cent.
  long long base = LRoundHalfAwayFromZero(static_cast<double>(km * band->rateMilli) / 10.0) + band->fixedCents;
  cents = electric ? LRoundHalfAwayFromZero(static_cast<double>(base) * (100 + scale.electricPercent) / 100.0) : base;
  return true;
}

std::string LMileageBandFormula(const LMileageBand& band, const LCurrencyFormat& currency) {
  LCurrencyFormat rate = currency;
  rate.digits = 3;
  std::string formula = "d × " + LFormatNumber(band.rateMilli, rate);
  if (band.fixedCents == 0) return formula;
  // A whole amount without its decimals, as the published scale writes it.
  LCurrencyFormat fixed = currency;
  fixed.digits = band.fixedCents % 100 == 0 ? 0 : 2;
  return formula + " + " + LFormatMoney(fixed.digits == 0 ? band.fixedCents / 100 : band.fixedCents, fixed);
}

std::vector<LMileageScale> LMileageScales(LProfile& profile) {
  std::vector<LMileageScale> scales;
  std::string error;
  if (!LMileageScaleParse(LMileageScalePublished(), scales, error)) LLogError("%s", error.c_str());
  LRecord record;
  for (LFileStoreIteratorBase it(profile.MainList(kMileageScalesList), record); record.IsAttached(); it.Next(record)) {
    int year = LTextToInt(record.GetPrimaryKey());
    std::vector<LMileageScale> stored;
    if (!LMileageScaleParse(record.GetString("Scale"), stored, error)) {
      LLogError("%s", error.c_str());
      continue;
    }
    for (LMileageScale& scale : stored)
      if (scale.year == year) ScaleOf(scales, year) = std::move(scale);
  }
  std::sort(scales.begin(), scales.end(), [](const LMileageScale& a, const LMileageScale& b) { return a.year < b.year; });
  return scales;
}

bool LMileageScaleFor(LProfile& profile, int year, LMileageScale& scale, std::string& error) {
  std::vector<LMileageScale> scales = LMileageScales(profile);
  for (auto it = scales.rbegin(); it != scales.rend(); ++it)
    if (it->year <= year) {
      scale = std::move(*it);
      return true;
    }
  error = "Aucun barème kilométrique pour l'année " + std::to_string(year) + " : importez-le (kontavo mileage scale import).";
  return false;
}

bool LMileageScaleStore(LProfile& profile, const std::vector<LMileageScale>& scales, std::string& error) {
  for (const LMileageScale& scale : scales) {
    LRecord record;
    (void)profile.MainList(kMileageScalesList).OpenAlways(record, std::to_string(scale.year));
    record.SetString("Scale", LMileageScaleText(scale));
    if (!record.Flush()) {
      error = "Le barème kilométrique " + std::to_string(scale.year) + " n'a pas pu être enregistré.";
      return false;
    }
  }
  return true;
}
