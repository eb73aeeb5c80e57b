#include "app/webdesk.h"

#include <ctime>

#include "app/maindialog.h"
#include "llib/gen/log.h"
#include "llib/web/webdesk.h"
#include "llib/web/webletform.h"
#include "llib/web/weblogon.h"

namespace {

constexpr std::string_view kRefusedPage =
    "HTTP/1.1 403 Forbidden\r\nConnection: close\r\nCache-Control: no-cache\r\nContent-Type: text/html; "
    "charset=utf-8\r\n\r\n<html><head><title>Kontavo - Lien expiré</title><link href=s.css type='text/css' "
    "rel=stylesheet></head><body><div class=contenttable><h3>Ce lien d'ouverture de session n'est plus "
    "valable.</h3><p>Un lien du poste de travail ne sert qu'une fois, dans la minute qui suit sa création, et "
    "seulement sur cet ordinateur. Lancez de nouveau <b>kontavo desk</b> pour en obtenir un autre, ou <a "
    "href=\"logon\">ouvrez une session</a> avec votre compte Web.</p></div></body></html>";

}  // namespace

void WLDeskLogon(LWebletForm& form) {
  bool accepted = LWebIsLoopbackAddress(form.clientAddress) &&
                  LWebDeskRedeemToken(form.GetParam("token"), std::time(nullptr));
  if (!accepted) {
    LLogWarning("Lien du poste de travail refusé pour %s", form.ClientAddressText().c_str());
    form.WriteHeader(kRefusedPage);
    return;
  }
  form.session.CreateNewSession(false);
  form.session.SetString(kDeskSessionValue, "1");
  form.session.SetString("profile", MainDialog::GetStartupFolder());
  // The cookie comes with a redirection to the main page, as a header (see WLSessionCookieLine);
  // the browser keeps the spent link out of its history.
  form.WriteHeader("HTTP/1.1 302 Found\r\nLocation: main\r\n" + WLSessionCookieLine(form, false) +
                   "\r\nCache-Control: no-cache\r\nContent-Length: 0\r\n\r\n");
  form.responseSent = true;
}
