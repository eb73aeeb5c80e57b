#include "app/webcompanyfields.h"

namespace {

const LWebCompanyField kFields[] = {
    {4, &LCompanyDetails::email, "email", "Courriel :", 40},
    {5, &LCompanyDetails::phone, "phone", "Téléphone :", 20},
    {6, &LCompanyDetails::legalForm, "legalForm", "Forme juridique :", 12},
    {7, &LCompanyDetails::shareCapital, "shareCapital", "Capital social :", 14},
    {8, &LCompanyDetails::siren, "siren", "SIREN :", 12},
    {9, &LCompanyDetails::siret, "siret", "SIRET :", 16},
    {10, &LCompanyDetails::rcs, "rcs", "RCS :", 20},
    {11, &LCompanyDetails::vatNumber, "vatNumber", "N° de TVA intracommunautaire :", 16},
    {12, &LCompanyDetails::latePenaltyRate, "latePenaltyRate", "Taux des pénalités de retard (%) :", 8},
};

}  // namespace

std::span<const LWebCompanyField> LWebCompanyFields() { return kFields; }

int LWebCompanyFieldControl(int base, std::string_view name, int fallback) {
  for (const LWebCompanyField& field : kFields)
    if (field.name == name) return base + field.offset;
  return fallback;
}
