// Printing a stored sales-side document to a PDF file: the one routine behind the "pdf" verb of
// the document commands and the web's PDF links.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "invoice/shared/facturx.h"
#include "invoice/shared/salesdocument.h"

class LProfile;

// Opens the document key of kind (recorded, else draft), prints it and writes the PDF to path
// (replacing it at once: a reader never sees half a file). false with a French message in error
// (may be null) when the document does not exist or the file cannot be written; nothing is
// written then. warning as LSalesDocumentPdf gives it. With facturX, the PDF is the Factur-X
// PDF/A-3 of that profile (invoices and credit notes only).
[[nodiscard]] bool LSalesDocumentWritePdf(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                                          const std::string& path, std::optional<LFacturXProfile> facturX,
                                          std::string* error, std::string* warning);
