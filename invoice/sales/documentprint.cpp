#include "invoice/sales/documentprint.h"

#include "invoice/sales/salesbook.h"
#include "invoice/shared/documentform.h"
#include "llib/gen/file.h"

bool LSalesDocumentWritePdf(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                            const std::string& path, std::optional<LFacturXProfile> facturX, std::string* error,
                            std::string* warning) {
  if (warning != nullptr) warning->clear();
  LSalesDocument document;
  if (!LSalesDocumentOpen(profile, kind, key, document)) {
    if (error != nullptr) *error = "Document introuvable : " + std::string(key) + ".";
    return false;
  }
  std::string pdf;
  if (!LSalesDocumentPdf(profile, kind, document, pdf, error, warning)) return false;
  if (facturX) {
    std::string plain = std::move(pdf);
    if (!LFacturXPdf(profile, kind, document, *facturX, plain, pdf, error)) return false;
  }
  if (!LFile::WriteAllAtomic(path, pdf)) {
    if (error != nullptr) *error = "Impossible d'écrire le fichier « " + path + " ».";
    return false;
  }
  return true;
}
