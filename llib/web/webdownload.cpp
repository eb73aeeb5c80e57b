#include "llib/web/webdownload.h"

#include <string>

#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

bool WLSendDownload(LWebletForm& form, std::string_view contentType, std::string_view fileName, std::string_view bytes,
                    bool inlineView) {
  // The plain name keeps the ASCII letters only: a quoted header value is not the place for
  // UTF-8, and old clients read this one.
  std::string plain;
  for (char c : fileName) plain += (static_cast<unsigned char>(c) < 32 || static_cast<unsigned char>(c) > 126 || c == '"' || c == '\\') ? '_' : c;
  std::string name(fileName), type(contentType);
  if (!form.WriteHeader(LWebFormat("HTTP/1.1 200 OK\r\nContent-Type: %s\r\n"
                                   "Content-Disposition: %s; filename=\"%s\"; filename*=UTF-8''%U\r\n"
                                   "Content-Length: %zu\r\nCache-Control: no-store\r\n\r\n",
                                   type.c_str(), inlineView ? "inline" : "attachment", plain.c_str(), name.c_str(),
                                   bytes.size())))
    return false;
  return form.Write(bytes);
}
