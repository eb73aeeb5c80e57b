// The web pages of a benchmark answered in process, without a socket: the page is written into
// memory, so the figure is the server's work alone. Each request runs as the web server runs it:
// session loaded from its file, access checked, route handler called.
#pragma once

#include <string>

#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"

class LBenchPages {
 public:
  // Opens a desk session on the business folder; the routes are installed by the benchmark.
  void OpenSession(const std::string& business) {
    LWebletForm form(nullptr);
    form.session.CreateNewSession(false);
    form.session.SetString("desk", "1");
    form.session.SetString("profile", business);
    form.session.FlushSession();
    session_ = form.session.GetSessionId();
  }

  // One request of route with query; returns the bytes of the answer.
  std::size_t Get(const char* route, const std::string& query) const {
    LWebletForm form(nullptr);
    form.scriptName = route;
    form.parameters.LoadHTTPString(query);
    (void)form.session.LoadSession(session_);
    LWebletFindScript(route)(form);
    return form.Captured().size();
  }

 private:
  std::string session_;
};
