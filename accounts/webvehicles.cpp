#include "accounts/webvehicles.h"

#include <map>

#include "accounts/vehicles.h"
#include "accounts/webreports.h"
#include "invoice/shared/profile.h"
#include "llib/gen/log.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kKeyControl = 101;
constexpr int kNameControl = 102;
constexpr int kRegistrationControl = 103;
constexpr int kKindControl = 104;
constexpr int kHorsepowerControl = 105;
constexpr int kElectricControl = 106;
constexpr int kNotesControl = 107;

constexpr int kVehicleControl = 201;
constexpr int kDateControl = 202;
constexpr int kPurposeControl = 203;
constexpr int kFromPlaceControl = 204;
constexpr int kToPlaceControl = 205;
constexpr int kDistanceControl = 206;
constexpr int kStartControl = 207;
constexpr int kEndControl = 208;

constexpr int kFromDateControl = 301;
constexpr int kToDateControl = 302;

constexpr const char* kKinds[] = {"car", "motorcycle", "moped"};

// The page's message ("msg"), shown above its table.
void WriteMessage(LWebletForm& form) {
  if (std::string message = form.GetParam("msg"); !message.empty())
    form.Write(LWebFormat("<p class=errormessage id=pagemessage>%H</p>", message.c_str()));
}

// The vehicles as choices: key, and key with description.
void VehicleChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values) {
  for (const std::string& key : LVehicleKeys(profile)) {
    LVehicle vehicle;
    if (!LVehicleLoad(profile, key, vehicle)) continue;
    texts.push_back(key + " - " + LVehicleDescription(vehicle));
    values.push_back(key);
  }
}

// Whole kilometres typed in a field: empty reads as absent. false for anything else.
bool ReadKm(const std::string& text, std::optional<long long>& km) {
  km.reset();
  if (text.empty()) return true;
  if (text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos) return false;
  km = LTextToInt64(text);
  return true;
}

std::string ListLink(std::string_view vehicle) {
  return vehicle.empty() ? std::string("vehiclemileagelist")
                         : LWebFormat("vehiclemileagelist?vehicle=%U", std::string(vehicle).c_str());
}

// ---- "vehiclelist" ------------------------------------------------------------------------------

class LWebVehiclesPage : public LWebReportSectionPage {
 public:
  explicit LWebVehiclesPage(LWebletForm& form) : LWebReportSectionPage(form, "Véhicules") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    bool mayChange = WLMayChangeData(form_);
    WriteMessage(form_);
    form_.Write("<p class=reportlinks>");
    if (mayChange) form_.Write("<a href='vehicleprop' class=actionlink id=newvehicle>Nouveau véhicule</a> ");
    form_.Write("<a href='vehiclemileagelist' class=actionlink>Tous les trajets</a> "
                "<a href='mileagereports' class=actionlink>Indemnités kilométriques</a> "
                "<a href='mileagescale' class=actionlink>Barème kilométrique</a> "
                "<a href='reports' class=actionlink>Tous les rapports</a></p>"
                "<table class=report id=vehicles><thead><tr><th class=text>Code</th><th class=text>Véhicule</th>"
                "<th class=amount>Trajets</th>"
                "<th class=amount>Distance (km)</th><th></th></tr></thead><tbody>");
    std::map<std::string, std::pair<int, long long>> logged;  // vehicle -> trips, km
    for (const LVehicleMileage& trip : LVehicleMileageList(profile, "", {}, {})) {
      ++logged[trip.vehicle].first;
      logged[trip.vehicle].second += trip.distanceKm;
    }
    std::vector<std::string> keys = LVehicleKeys(profile);
    for (const std::string& key : keys) {
      LVehicle vehicle;
      if (!LVehicleLoad(profile, key, vehicle)) continue;
      auto [trips, km] = logged[key];
      std::string actions = LWebFormat("<a href='vehiclemileagelist?vehicle=%U' class=actionlink>Trajets</a> "
                                       "<a href='mileagereports?subject=%U' class=actionlink>Indemnités</a>",
                                       key.c_str(), key.c_str());
      if (mayChange) {
        actions += LWebFormat(" <a href='vehiclemileageprop?vehicle=%U' class=actionlink>Nouveau trajet</a>", key.c_str());
        if (trips > 0)
          actions += LWebFormat(" <a href='vehicledeleterecords?id=%U' class=deletelink>Supprimer des trajets</a>",
                                key.c_str());
        else
          actions += LWebFormat(" <a href='vehicledelete?id=%U' class=deletelink onclick=\"return confirm('%H')\">"
                                "Supprimer</a>",
                                key.c_str(), LJScriptEscape("Supprimer le véhicule « " + key + " » ?").c_str());
      }
      form_.wfprintf("<tr><td><a href='vehicleprop?id=%U'>%H</a></td><td>%H</td><td class=amount>%d</td><td class=amount>%lld</td>"
                     "<td>%s</td></tr>",
                     key.c_str(), key.c_str(), LVehicleDescription(vehicle).c_str(), trips, km, actions.c_str());
    }
    if (keys.empty()) form_.Write("<tr><td colspan=5>Aucun véhicule.</td></tr>");
    form_.Write("</tbody></table>");
  }
};

// ---- "vehicleprop" ------------------------------------------------------------------------------

class LWebVehicleDialog : public LWebDialogEx {
 public:
  explicit LWebVehicleDialog(LWebletForm& form) : LWebDialogEx(form, "vehicleprop") {
    SetTitle("Véhicule");
    SetOkPage("vehiclelist");
    SetCancelPage("vehiclelist");
    AddNavLink("vehiclelist", "Véhicules");
  }
  void InitDialog() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LVehicle vehicle;
    if (!LVehicleLoad(profile, form_.GetParam("id"), vehicle)) return;
    SetText(kKeyControl, vehicle.key);
    SetText(kNameControl, vehicle.name);
    SetText(kRegistrationControl, vehicle.registration);
    SetText(kKindControl, vehicle.kind);
    SetText(kHorsepowerControl, vehicle.horsepower > 0 ? std::to_string(vehicle.horsepower) : "");
    SetCheck(kElectricControl, vehicle.electric);
    SetText(kNotesControl, vehicle.notes);
  }
  void Generate() override {
    std::string key = form_.GetParam("id");
    AddHiddenField("id", key);
    if (key.empty()) AddInput(kKeyControl, "Code :", GetText(kKeyControl), 20);
    else AddInputReadOnly(kKeyControl, "Code :", key, 20);
    AddInput(kNameControl, "Nom :", GetText(kNameControl), 30);
    AddInput(kRegistrationControl, "Immatriculation :", GetText(kRegistrationControl), 12);
    std::vector<std::string> texts, values;
    for (const char* kind : kKinds) {
      texts.emplace_back(LVehicleKindText(kind));
      values.emplace_back(kind);
    }
    AddPullDownList(kKindControl, "Genre :", texts, values);
    AddInput(kHorsepowerControl, "Puissance fiscale (CV) :", GetText(kHorsepowerControl), 4);
    AddCheckBox(kElectricControl, "Véhicule électrique (indemnité majorée)");
    AddEdit(kNotesControl, "Notes :", 40, 3);
    AddStatic("La puissance fiscale et le genre choisissent la ligne du barème kilométrique.");
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    std::string key = form_.GetParam("id");
    bool editing = !key.empty();
    LVehicle vehicle;
    if (editing && !LVehicleLoad(profile, key, vehicle)) {
      PopupBoxError(LVehicleNotFoundMessage(key));
      return false;
    }
    if (!editing) vehicle.key = GetTextAndTrim(kKeyControl);
    std::string horsepower = GetTextAndTrim(kHorsepowerControl);
    std::vector<std::pair<std::string, std::string>> fields = {
        {"Name", GetTextAndTrim(kNameControl)},
        {"Registration", GetTextAndTrim(kRegistrationControl)},
        {"Kind", GetText(kKindControl)},
        {"FiscalHorsepower", horsepower.empty() ? "0" : horsepower},
        {"Electric", IsChecked(kElectricControl) ? "1" : "0"},
        {"Notes", GetText(kNotesControl)}};
    std::string error;
    if (!LVehicleSetFields(vehicle, fields, error) || !LVehicleSave(profile, vehicle, editing, error)) {
      int control = kNameControl;
      if (error.find("puissance fiscale") != std::string::npos || error.find("Puissance") == 0) control = kHorsepowerControl;
      else if (error.find("code") != std::string::npos || error.find("existe déjà") != std::string::npos)
        control = kKeyControl;
      PopupControlDataInvalid(control, error);
      return false;
    }
    if (!editing) LLogInfo("Le véhicule \"%s\" a été créé.", vehicle.key.c_str());
    return true;
  }
};

// ---- "vehicledelete" ----------------------------------------------------------------------------

void WLVehicleDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  std::string key = form.GetParam("id"), error = kWebViewerRefusal;
  LProfile profile(WLSessionBusinessFolder(form));
  if (!WLMayChangeData(form) || !LVehicleDelete(profile, key, error)) {
    WLRedirect(form, LWebFormat("vehiclelist?msg=%U", error.c_str()));
    return;
  }
  LLogInfo("Le véhicule \"%s\" a été supprimé.", key.c_str());
  WLRedirect(form, "vehiclelist");
}

// ---- "vehicledeleterecords" ---------------------------------------------------------------------

class LWebVehicleDeleteRecordsDialog : public LWebDialogEx {
 public:
  explicit LWebVehicleDeleteRecordsDialog(LWebletForm& form) : LWebDialogEx(form, "vehicledeleterecords") {
    SetTitle("Supprimer des trajets");
    SetOkText("Supprimer les trajets");
    SetCancelText("Annuler");
    SetCancelPage("vehiclelist");
    AddNavLink("vehiclelist", "Véhicules");
  }
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LVehicle vehicle;
    std::string key = form_.GetParam("id");
    if (!LVehicleLoad(profile, key, vehicle)) {
      AddRowError(LVehicleNotFoundMessage(key));
      return;
    }
    AddHiddenField("id", key);
    AddStaticBold(key + " — " + LVehicleDescription(vehicle));
    AddStatic("Les trajets datés de la période sont supprimés ; sans dates, tous les trajets du véhicule. "
              "Une fois ses trajets supprimés, le véhicule peut l'être aussi.");
    AddDateInput(kFromDateControl, "Du :", GetText(kFromDateControl));
    AddDateInput(kToDateControl, "Au :", GetText(kToDateControl));
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    LDate from, to;
    for (auto [id, date] : {std::pair<int, LDate*>{kFromDateControl, &from}, {kToDateControl, &to}}) {
      std::string text = GetTextAndTrim(id);
      if (!text.empty() && !LDate::Parse(text, *date)) {
        PopupControlDataInvalid(id, "Date invalide : " + text + " (AAAA-MM-JJ).");
        return false;
      }
    }
    if (from.IsValid() && to.IsValid() && to < from) {
      PopupControlDataInvalid(kToDateControl, "La date de fin précède la date de début.");
      return false;
    }
    LProfile profile(WLSessionBusinessFolder(form_));
    std::string key = form_.GetParam("id");
    int removed = LVehicleMileageDeleteRange(profile, key, from, to);
    LLogInfo("%d trajets du véhicule \"%s\" ont été supprimés.", removed, key.c_str());
    Redirect(ListLink(key));
    SetAnswerWritten();
    return true;
  }
};

// ---- "vehiclemileagelist" -----------------------------------------------------------------------

class LWebMileagePage : public LWebReportSectionPage {
 public:
  explicit LWebMileagePage(LWebletForm& form) : LWebReportSectionPage(form, "Trajets") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    bool mayChange = WLMayChangeData(form_);
    std::string vehicle = form_.GetParam("vehicle");
    LDate from, to;
    (void)LDate::Parse(form_.GetParam("from"), from);
    (void)LDate::Parse(form_.GetParam("to"), to);
    WriteMessage(form_);
    std::vector<std::string> texts{"Tous les véhicules"}, values{""};
    VehicleChoices(profile, texts, values);
    std::string options;
    for (std::size_t i = 0; i < texts.size(); ++i)
      options += LWebFormat("<option value='%H'%s>%H</option>", values[i].c_str(), values[i] == vehicle ? " selected" : "",
                            texts[i].c_str());
    form_.wfprintf("<form method=get action='vehiclemileagelist' id=mileagefilter><p>"
                   "<select name=vehicle onchange='this.form.submit()'>%s</select> "
                   "Du <input type=date name=from value='%H'> au <input type=date name=to value='%H'> "
                   "<input type=submit value='Afficher'></p></form>",
                   options.c_str(), from.IsValid() ? from.ToText().c_str() : "", to.IsValid() ? to.ToText().c_str() : "");
    form_.Write("<p class=reportlinks>");
    if (mayChange)
      form_.wfprintf("<a href='vehiclemileageprop%s' class=actionlink id=newtrip>Nouveau trajet</a> ",
                     vehicle.empty() ? "" : LWebFormat("?vehicle=%U", vehicle.c_str()).c_str());
    form_.wfprintf("<a href='mileagereports%s' class=actionlink>Indemnités kilométriques</a> "
                   "<a href='vehiclelist' class=actionlink>Véhicules</a></p>",
                   vehicle.empty() ? "" : LWebFormat("?subject=%U", vehicle.c_str()).c_str());
    form_.Write("<table class=report id=trips><thead><tr><th class=text>Date</th><th class=text>Véhicule</th>"
                "<th class=text>Motif</th><th class=text>Trajet</th>"
                "<th class=amount>Compteur</th><th class=amount>Distance (km)</th><th></th></tr></thead><tbody>");
    long long total = 0;
    std::vector<LVehicleMileage> trips = LVehicleMileageList(profile, vehicle, from, to);
    for (const LVehicleMileage& trip : trips) {
      std::string places = trip.origin + (trip.destination.empty() ? "" : " → " + trip.destination);
      std::string odometer = trip.startKm ? std::to_string(*trip.startKm) + " → " + std::to_string(*trip.endKm) : "";
      std::string actions;
      if (mayChange)
        actions = LWebFormat("<a href='vehiclemileagedelete?id=%U' class=deletelink onclick=\"return confirm('%H')\">"
                             "Supprimer</a>",
                             trip.key.c_str(),
                             LJScriptEscape("Supprimer le trajet du " + trip.date.ToText() + " ?").c_str());
      form_.wfprintf("<tr><td class=date><a href='vehiclemileageprop?id=%U'>%s</a></td><td>%H</td><td>%H</td><td>%H</td>"
                     "<td class=amount>%H</td><td class=amount>%lld</td><td>%s</td></tr>",
                     trip.key.c_str(), trip.date.ToText().c_str(), trip.vehicle.c_str(), trip.purpose.c_str(),
                     places.c_str(), odometer.c_str(), trip.distanceKm, actions.c_str());
      total += trip.distanceKm;
    }
    if (trips.empty()) form_.Write("<tr><td colspan=7>Aucun trajet.</td></tr>");
    form_.wfprintf("</tbody><tfoot><tr class=total><td colspan=5>Total : %zu trajet%s</td><td class=amount "
                   "id=totalkm>%lld</td><td></td></tr></tfoot></table>",
                   trips.size(), trips.size() > 1 ? "s" : "", total);
  }
};

// ---- "vehiclemileageprop" -----------------------------------------------------------------------

class LWebMileageDialog : public LWebDialogEx {
 public:
  explicit LWebMileageDialog(LWebletForm& form) : LWebDialogEx(form, "vehiclemileageprop") {
    SetTitle("Trajet");
    SetCancelPage("vehiclemileagelist");
    AddNavLink("vehiclelist", "Véhicules");
    AddNavLink("vehiclemileagelist", "Trajets");
  }
  void InitDialog() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LVehicleMileage trip;
    if (!LVehicleMileageLoad(profile, form_.GetParam("id"), trip)) {
      SetText(kVehicleControl, form_.GetParam("vehicle"));
      SetText(kDateControl, LDate::Today().ToText());
      return;
    }
    SetText(kVehicleControl, trip.vehicle);
    SetText(kDateControl, trip.date.ToText());
    SetText(kPurposeControl, trip.purpose);
    SetText(kFromPlaceControl, trip.origin);
    SetText(kToPlaceControl, trip.destination);
    // A trip logged by odometer shows its readings only: changing one changes the distance.
    SetText(kDistanceControl, trip.startKm ? "" : std::to_string(trip.distanceKm));
    SetText(kStartControl, trip.startKm ? std::to_string(*trip.startKm) : "");
    SetText(kEndControl, trip.endKm ? std::to_string(*trip.endKm) : "");
  }
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    std::vector<std::string> texts, values;
    VehicleChoices(profile, texts, values);
    if (values.empty()) {
      AddRowError("Aucun véhicule : créez d'abord le véhicule.");
      return;
    }
    AddHiddenField("id", form_.GetParam("id"));
    AddPullDownList(kVehicleControl, "Véhicule :", texts, values);
    AddDateInput(kDateControl, "Date :", GetText(kDateControl));
    AddInput(kPurposeControl, "Motif :", GetText(kPurposeControl), 40);
    AddInput(kFromPlaceControl, "Départ :", GetText(kFromPlaceControl), 30);
    AddInput(kToPlaceControl, "Arrivée :", GetText(kToPlaceControl), 30);
    AddInput(kDistanceControl, "Distance (km) :", GetText(kDistanceControl), 8);
    AddInput(kStartControl, "Compteur au départ :", GetText(kStartControl), 10);
    AddInput(kEndControl, "Compteur à l'arrivée :", GetText(kEndControl), 10);
    AddStatic("Indiquez la distance, ou les deux relevés du compteur : la distance est alors leur différence.");
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    LVehicleMileage trip;
    trip.key = form_.GetParam("id");
    if (!trip.key.empty() && !profile.MainList(kMileageList).TestRecordExists(trip.key)) {
      PopupBoxError("Ce trajet n'existe plus.");
      return false;
    }
    trip.vehicle = GetText(kVehicleControl);
    std::string date = GetTextAndTrim(kDateControl);
    if (!LDate::Parse(date, trip.date)) {
      PopupControlDataInvalid(kDateControl, "Date invalide : " + date + " (AAAA-MM-JJ).");
      return false;
    }
    trip.purpose = GetTextAndTrim(kPurposeControl);
    trip.origin = GetTextAndTrim(kFromPlaceControl);
    trip.destination = GetTextAndTrim(kToPlaceControl);
    std::optional<long long> distance;
    for (auto [id, km] : {std::pair<int, std::optional<long long>*>{kDistanceControl, &distance},
                          {kStartControl, &trip.startKm}, {kEndControl, &trip.endKm}})
      if (!ReadKm(GetTextAndTrim(id), *km)) {
        PopupControlDataInvalid(id, "Nombre de kilomètres invalide : " + GetTextAndTrim(id) + " (un nombre entier).");
        return false;
      }
    trip.distanceKm = distance.value_or(0);
    std::string error;
    if (!LVehicleMileageSave(profile, trip, error)) {
      int control = kDistanceControl;
      if (error.find("compteur") != std::string::npos) control = kEndControl;
      else if (error.find("Véhicule") == 0) control = kVehicleControl;
      else if (error.find("date") != std::string::npos) control = kDateControl;
      PopupControlDataInvalid(control, error);
      return false;
    }
    Redirect(ListLink(trip.vehicle));
    SetAnswerWritten();
    return true;
  }
};

// ---- "vehiclemileagedelete" ---------------------------------------------------------------------

void WLMileageDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LVehicleMileage trip;
  std::string key = form.GetParam("id");
  bool found = LVehicleMileageLoad(profile, key, trip);
  if (!WLMayChangeData(form)) {
    WLRedirect(form, LWebFormat("vehiclemileagelist?msg=%U", kWebViewerRefusal));
    return;
  }
  if (found && LVehicleMileageDelete(profile, key)) LLogInfo("Le trajet %s a été supprimé.", key.c_str());
  WLRedirect(form, ListLink(trip.vehicle));
}

const LWebletRoute kVehicleRoutes[] = {
    {"vehiclelist", WLWebPageRun<LWebVehiclesPage>},
    {"vehicleprop", WLWebDialogRun<LWebVehicleDialog>},
    {"vehicledelete", WLVehicleDelete},
    {"vehicledeleterecords", WLWebDialogRun<LWebVehicleDeleteRecordsDialog>},
    {"vehiclemileagelist", WLWebPageRun<LWebMileagePage>},
    {"vehiclemileageprop", WLWebDialogRun<LWebMileageDialog>},
    {"vehiclemileagedelete", WLMileageDelete},
};

}  // namespace

void LAccountsInstallVehiclePages() {
  LWebletInstallScripts(kVehicleRoutes);
  LAccountsInstallMileageScalePage();
}
