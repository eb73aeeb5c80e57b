#include "invoice/shared/webnavtabs.h"

#include <algorithm>
#include <mutex>

#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"

namespace {

std::mutex tabsMutex;              // guards tabs
std::vector<LWebNavTab> tabs;      // every installed tab, by rank

}  // namespace

void LWebNavTabInstall(const LWebNavTab& tab) {
  std::lock_guard lock(tabsMutex);
  std::erase_if(tabs, [&](const LWebNavTab& old) { return old.target == tab.target; });
  auto place = std::upper_bound(tabs.begin(), tabs.end(), tab.rank,
                                [](int rank, const LWebNavTab& other) { return rank < other.rank; });
  tabs.insert(place, tab);
}

std::vector<LWebNavTab> WLVisibleNavTabs(LWebletForm& form) {
  bool administrator = WLIsAdministator(form);
  std::vector<LWebNavTab> visible;
  std::lock_guard lock(tabsMutex);
  for (const LWebNavTab& tab : tabs)
    if (LWebletFindScript(tab.target) != nullptr && (administrator || !tab.administratorOnly))
      visible.push_back(tab);
  return visible;
}

void WLWriteNavTabs(LWebletForm& form, std::string_view current) {
  std::string bar = "<div class=navtabs>";
  for (const LWebNavTab& tab : WLVisibleNavTabs(form))
    bar += LWebFormat("<a href='%s' class=%s>%H</a>", tab.target.c_str(),
                      current == tab.target ? "'navtab navtabcurrent'" : "navtab", tab.text.c_str());
  bar += "</div>";
  form.Write(bar);
}

void LWebPageWithNavTabs::PrintHeader() {
  LWebPageEx::PrintHeader();
  WLWriteNavTabs(form_, currentTab_);
}
