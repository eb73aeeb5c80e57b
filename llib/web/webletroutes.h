// The route table of the web server (LWebletScripts): the first path segment of a request names
// a route, and the route's handler writes the answer. Two process-wide singly linked lists of
// (name, handler): the ordinary routes, and the raw-POST routes whose handlers get a POST before
// its body is read (file uploads read the body themselves from the form's socket).
//
// A new pair goes to the front, so the newest pair of a name wins. Pairs are never removed: a
// restart of the server installs the whole table again in front of the old one. The lists are
// filled before the listener starts and read without a lock afterwards; the head pointers are
// atomic so that a reader always sees a whole list.
#pragma once

#include <span>
#include <string_view>

class LWebletForm;

using LWebletHandler = void (*)(LWebletForm& form);

// One row of a route table.
struct LWebletRoute {
  const char* name;
  LWebletHandler handler;
};

void LWebletInstallScript(std::string_view name, LWebletHandler handler);
// Installs each route of the table in order.
void LWebletInstallScripts(std::span<const LWebletRoute> routes);
void LWebletInstallPostScript(std::string_view name, LWebletHandler handler);

// The handler of the newest pair with exactly that name (case-sensitive); null when none.
LWebletHandler LWebletFindScript(std::string_view name);
LWebletHandler LWebletFindPostScript(std::string_view name);
