// "mileagescale": the kilometric scales in force, a table a year (a line per class of vehicle, a
// column per band of distance), and the import of a new year's scale typed or pasted in the
// scale's text form (accounts/mileagescale.h), as `kontavo mileage scale import` does.
#include "accounts/mileagescale.h"
#include "accounts/vehicles.h"
#include "accounts/webvehicles.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/webaccess.h"
#include "llib/gen/log.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"

namespace {

constexpr int kScaleTextControl = 401;

// "voiture 5 CV", "moto 3 à 5 CV", "voiture 3 CV et moins", "voiture 7 CV et plus", "cyclomoteur".
std::string ClassText(const LMileageBand& band) {
  std::string text(LVehicleKindText(band.kind));
  if (band.minHorsepower == 0 && band.maxHorsepower == 0) return text;
  if (band.maxHorsepower == 0) return text + " " + std::to_string(band.minHorsepower) + " CV et plus";
  if (band.minHorsepower <= 1 && band.maxHorsepower > 1) return text + " " + std::to_string(band.maxHorsepower) + " CV et moins";
  if (band.minHorsepower == band.maxHorsepower) return text + " " + std::to_string(band.minHorsepower) + " CV";
  return text + " " + std::to_string(band.minHorsepower) + " à " + std::to_string(band.maxHorsepower) + " CV";
}

// The distances of a band, from the end of the band before it (0 for the first).
std::string DistanceText(long long afterKm, long long upToKm) {
  if (upToKm == 0 && afterKm == 0) return "toute distance";
  if (upToKm == 0) return "au-delà de " + std::to_string(afterKm) + " km";
  if (afterKm == 0) return "jusqu'à " + std::to_string(upToKm) + " km";
  return "de " + std::to_string(afterKm + 1) + " à " + std::to_string(upToKm) + " km";
}

std::string ScaleTable(const LMileageScale& scale, const LCurrencyFormat& currency) {
  std::string html = LWebFormat("<table class=report id=scale%d><caption>Barème %d", scale.year, scale.year);
  if (scale.electricPercent != 0)
    html += LWebFormat(" <span class=subtitle>véhicules électriques : +%d %%</span>", scale.electricPercent);
  html += "</caption><tbody>";
  long long afterKm = 0;
  for (std::size_t i = 0; i < scale.bands.size(); ++i) {
    const LMileageBand& band = scale.bands[i];
    bool first = i == 0 || ClassText(scale.bands[i - 1]) != ClassText(band);
    if (first) {
      html += LWebFormat("%s<tr><td>%H</td>", i == 0 ? "" : "</tr>", ClassText(band).c_str());
      afterKm = 0;
    }
    html += LWebFormat("<td>%H : %H</td>", DistanceText(afterKm, band.upToKm).c_str(), LMileageBandFormula(band, currency).c_str());
    afterKm = band.upToKm;
  }
  return html + (scale.bands.empty() ? "" : "</tr>") + "</tbody></table>";
}

class LWebMileageScaleDialog : public LWebDialogEx {
 public:
  explicit LWebMileageScaleDialog(LWebletForm& form) : LWebDialogEx(form, "mileagescale") {
    SetTitle("Barème kilométrique");
    SetOkText("Importer");
    SetCancelText("Retour");
    SetCancelPage("vehiclelist");
    AddNavLink("vehiclelist", "Véhicules");
    AddNavLink("mileagereports", "Indemnités kilométriques");
    SetControlTableWidth("auto");
  }
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    AddStatic("Pour chaque année, l'indemnité de la distance d parcourue dans l'année. Une année dont le barème "
              "n'est pas encore publié prend le dernier barème connu.");
    std::string tables;
    for (const LMileageScale& scale : LMileageScales(profile)) tables = ScaleTable(scale, profile.GetCurrencyFormat()) + tables;  // newest first
    form_.Write("<tr><td colspan=2>" + tables + "</td></tr>");
    if (!WLMayChangeData(form_)) return;
    AddStatic("Importer le barème d'une année : une ligne par tranche, « ANNÉE GENRE CV_MIN CV_MAX KM_MAX TAUX FIXE » "
              "(genre car, motorcycle ou moped ; « - » pour une borne ouverte), et « ANNÉE electric POURCENTAGE ». "
              "Une année importée remplace la même année du barème.");
    AddEdit(kScaleTextControl, "Barème :", 60, 8);
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    std::vector<LMileageScale> scales;
    std::string error;
    if (!LMileageScaleParse(GetText(kScaleTextControl), scales, error) ||
        !LMileageScaleStore(profile, scales, error)) {
      PopupControlDataInvalid(kScaleTextControl, error);
      return false;
    }
    if (scales.empty()) {
      PopupControlDataInvalid(kScaleTextControl, "Aucune ligne de barème.");
      return false;
    }
    for (const LMileageScale& scale : scales) LLogInfo("Le barème kilométrique %d a été importé.", scale.year);
    Redirect("mileagescale");
    SetAnswerWritten();
    return true;
  }
};

const LWebletRoute kScaleRoutes[] = {{"mileagescale", WLWebDialogRun<LWebMileageScaleDialog>}};

}  // namespace

void LAccountsInstallMileageScalePage() { LWebletInstallScripts(kScaleRoutes); }
