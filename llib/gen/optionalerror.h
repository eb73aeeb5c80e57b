// The optional error message of a routine that can fail. Such a routine returns false on failure
// and takes a `std::string* error` that may be null: a caller that only needs the yes or no
// passes nullptr, one that shows the user why passes a string. These two calls are the one way to
// fill it, so that no routine forgets the null check.
//
//   if (!item.Flush()) return LFail(error, "Impossible d'enregistrer l'article.");
#pragma once

#include <string>
#include <string_view>

// Copies message into *error when error is not null; does nothing otherwise.
void LSetError(std::string* error, std::string_view message);

// Does what LSetError does, then returns false, for `return LFail(error, ...);`.
bool LFail(std::string* error, std::string_view message);
