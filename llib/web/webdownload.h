// A file made on demand (a printed PDF, an export) sent as the answer to a request, under the
// name the browser saves it as.
#pragma once

#include <string_view>

class LWebletForm;

// Sends bytes as contentType named fileName (UTF-8; also given in the RFC 5987 form, so accented
// names arrive whole). inlineView: the browser shows it (a PDF in its viewer) rather than saving
// it. false when the answer could not be written.
bool WLSendDownload(LWebletForm& form, std::string_view contentType, std::string_view fileName, std::string_view bytes,
                    bool inlineView = false);
