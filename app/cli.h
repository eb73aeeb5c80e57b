// The command line of kontavo: the desk of Kontavo on Linux. Global options come first,
//     kontavo [--home DIR] [--business B] [--json] [--yes] COMMAND [ARGS]
// then each command takes its own words through LCliArgs. Exit status: 0 done; 1 refused or
// failed, with the system's French message on stderr; 2 wrong usage.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct LDate;

class LProfile;

inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr std::size_t kCliAnyWords = static_cast<std::size_t>(-1);  // no upper bound on positional words

// The words of one command. Options are taken by name in any order; what is left are the
// positional words.
class LCliArgs {
 public:
  explicit LCliArgs(std::vector<std::string> words) : words_(std::move(words)) {}

  // "--name VALUE" or "--name=VALUE": true and value set when present (the last one wins).
  // A "--name" without its value is remembered as a usage error.
  bool TakeOption(std::string_view name, std::string& value);
  // Every occurrence, in order.
  std::vector<std::string> TakeOptionAll(std::string_view name);
  // A bare "--name".
  bool TakeFlag(std::string_view name);
  // The first word when it is not an option ("account add ..." gives "add"): taken out and
  // returned; empty otherwise. For command groups whose verbs take different options.
  std::string TakeVerb();
  // The positional words once all options were taken; false (with error set) when an unknown
  // option or a missing value is left.
  bool Finish(std::vector<std::string>& positional, std::string& error);
  bool WantsHelp() const;

 private:
  std::vector<std::string> words_;
  std::string error_;
};

// The verb of a command with several forms ("new", "show", ...): its first positional word once
// the options it may carry are set aside (options with a value, then bare flags). Empty when
// there is none. args is left as it was.
std::string LCliPeekVerb(const LCliArgs& args, std::initializer_list<std::string_view> valueOptions,
                         std::initializer_list<std::string_view> flags = {});

// The date of option ("--from 2026-11-01") into date, left as it was when the option is absent.
// false, with "date invalide pour OPTION : TEXT" in error, when the text is not a real day.
bool LCliTakeDate(LCliArgs& args, std::string_view option, LDate& date, std::string& error);

// "NAME=VALUE" into its parts; false without "=" or with an empty name.
bool LCliSplitAssignment(std::string_view word, std::string& name, std::string& value);

// What every command handler gets.
class LCliContext {
 public:
  LCliContext(std::ostream& out, std::ostream& err);
  ~LCliContext();

  std::ostream& out;
  std::ostream& err;
  bool json = false;          // --json: one JSON document on stdout
  bool yes = false;           // --yes: questions are answered yes
  std::string business;       // --business: "0", "N" or a company name; empty: as at start-up
  std::string commandName;    // the command being run, for usage messages

  // The open business, opened on first use: the one --business names, else the start-up
  // choice (MainDialog::InitDialog). Null (with the message written to err) when --business
  // names none.
  LProfile* Profile();
  // Prints the usage of the current command to err and returns kExitUsage.
  int Usage(std::string_view problem = {});
  // Ends the reading of a command's words once its options were taken: true with the
  // positional words in words when no unknown option or missing value is left and there are
  // minWords to maxWords of them. Otherwise prints the usage (with the problem when there is
  // one) and returns false; the command then returns kExitUsage.
  //     std::vector<std::string> words;
  //     if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;  // exactly one word
  [[nodiscard]] bool FinishArgs(LCliArgs& args, std::vector<std::string>& words, std::size_t minWords = 0,
                                std::size_t maxWords = kCliAnyWords);
  // Writes the message to err and returns kExitFailed.
  int Fail(std::string_view message);

 private:
  std::unique_ptr<LProfile> profile_;
};

// Resolves --business to a data folder: "" or "0" the primary business, a number its "MultiBus"
// folder (which must exist), otherwise the business whose company name is exactly that text.
// false when none matches.
bool LCliResolveBusiness(std::string_view business, std::string& folder);

// Runs the command line; returns the exit status.
int LCliMain(int argc, char** argv, std::ostream& out, std::ostream& err);
