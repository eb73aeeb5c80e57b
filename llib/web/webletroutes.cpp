#include "llib/web/webletroutes.h"

#include <atomic>
#include <string>

namespace {

struct RouteNode {
  std::string name;
  LWebletHandler handler;
  RouteNode* next;  // older pairs
};

// The two lists of LWebletScripts, created on first use and kept for the life of the process.
struct LWebletScripts {
  std::atomic<RouteNode*> scripts{nullptr};
  std::atomic<RouteNode*> postScripts{nullptr};
};

LWebletScripts& Scripts() {
  static LWebletScripts* scripts = new LWebletScripts;  // never destroyed: detached threads read it
  return *scripts;
}

void Push(std::atomic<RouteNode*>& head, std::string_view name, LWebletHandler handler) {
  RouteNode* node = new RouteNode{std::string(name), handler, head.load()};
  while (!head.compare_exchange_weak(node->next, node)) {
  }
}

LWebletHandler Find(const std::atomic<RouteNode*>& head, std::string_view name) {
  for (RouteNode* node = head.load(); node != nullptr; node = node->next)
    if (node->name == name) return node->handler;
  return nullptr;
}

}  // namespace

void LWebletInstallScript(std::string_view name, LWebletHandler handler) {
  Push(Scripts().scripts, name, handler);
}

void LWebletInstallScripts(std::span<const LWebletRoute> routes) {
  for (const LWebletRoute& route : routes) LWebletInstallScript(route.name, route.handler);
}

void LWebletInstallPostScript(std::string_view name, LWebletHandler handler) {
  Push(Scripts().postScripts, name, handler);
}

LWebletHandler LWebletFindScript(std::string_view name) { return Find(Scripts().scripts, name); }

LWebletHandler LWebletFindPostScript(std::string_view name) { return Find(Scripts().postScripts, name); }
