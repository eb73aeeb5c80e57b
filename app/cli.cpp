#include "app/cli.h"

#include <cstdlib>
#include <ostream>

#include "accounts/ledgerintent.h"
#include "app/appinstall.h"
#include "app/commands.h"
#include "app/maindialog.h"
#include "app/multiplebusiness.h"
#include "app/worker.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"

// ---- Arguments --------------------------------------------------------------------------------

namespace {

bool IsOptionWord(std::string_view word) { return word.size() > 2 && word.substr(0, 2) == "--"; }

}  // namespace

bool LCliArgs::TakeOption(std::string_view name, std::string& value) {
  bool found = false;
  for (std::size_t i = 0; i < words_.size();) {
    std::string_view word = words_[i];
    if (word == name) {
      if (i + 1 >= words_.size()) {
        error_ = "l'option " + std::string(name) + " attend une valeur";
        words_.erase(words_.begin() + static_cast<long>(i));
        continue;
      }
      value = words_[i + 1];
      found = true;
      words_.erase(words_.begin() + static_cast<long>(i), words_.begin() + static_cast<long>(i) + 2);
    } else if (word.size() > name.size() && word.substr(0, name.size()) == name && word[name.size()] == '=') {
      value = std::string(word.substr(name.size() + 1));
      found = true;
      words_.erase(words_.begin() + static_cast<long>(i));
    } else {
      ++i;
    }
  }
  return found;
}

std::vector<std::string> LCliArgs::TakeOptionAll(std::string_view name) {
  std::vector<std::string> values;
  for (std::size_t i = 0; i < words_.size();) {
    std::string_view word = words_[i];
    if (word == name && i + 1 < words_.size()) {
      values.push_back(words_[i + 1]);
      words_.erase(words_.begin() + static_cast<long>(i), words_.begin() + static_cast<long>(i) + 2);
    } else if (word.size() > name.size() && word.substr(0, name.size()) == name && word[name.size()] == '=') {
      values.emplace_back(word.substr(name.size() + 1));
      words_.erase(words_.begin() + static_cast<long>(i));
    } else if (word == name) {
      error_ = "l'option " + std::string(name) + " attend une valeur";
      words_.erase(words_.begin() + static_cast<long>(i));
    } else {
      ++i;
    }
  }
  return values;
}

bool LCliArgs::TakeFlag(std::string_view name) {
  bool found = false;
  for (std::size_t i = 0; i < words_.size();) {
    if (words_[i] == name) {
      found = true;
      words_.erase(words_.begin() + static_cast<long>(i));
    } else {
      ++i;
    }
  }
  return found;
}

std::string LCliArgs::TakeVerb() {
  if (words_.empty() || IsOptionWord(words_.front())) return {};
  std::string verb = std::move(words_.front());
  words_.erase(words_.begin());
  return verb;
}

bool LCliArgs::WantsHelp() const {
  for (const auto& word : words_)
    if (word == "--help") return true;
  return false;
}

bool LCliArgs::Finish(std::vector<std::string>& positional, std::string& error) {
  if (!error_.empty()) {
    error = error_;
    return false;
  }
  positional.clear();
  bool onlyPositional = false;
  for (const auto& word : words_) {
    if (!onlyPositional && word == "--") {
      onlyPositional = true;
    } else if (!onlyPositional && IsOptionWord(word)) {
      error = "option inconnue : " + word;
      return false;
    } else {
      positional.push_back(word);
    }
  }
  return true;
}

// ---- Context ----------------------------------------------------------------------------------

std::string LCliPeekVerb(const LCliArgs& args, std::initializer_list<std::string_view> valueOptions,
                         std::initializer_list<std::string_view> flags) {
  LCliArgs copy = args;
  for (std::string_view option : valueOptions) copy.TakeOptionAll(option);
  for (std::string_view flag : flags) copy.TakeFlag(flag);
  std::vector<std::string> words;
  std::string ignored;
  (void)copy.Finish(words, ignored);
  return words.empty() ? std::string() : words.front();
}

bool LCliTakeDate(LCliArgs& args, std::string_view option, LDate& date, std::string& error) {
  std::string text;
  if (!args.TakeOption(option, text)) return true;
  if (LDate::Parse(text, date)) return true;
  error = "date invalide pour " + std::string(option) + " : " + text;
  return false;
}

bool LCliSplitAssignment(std::string_view word, std::string& name, std::string& value) {
  std::size_t equals = word.find('=');
  if (equals == std::string_view::npos || equals == 0) return false;
  name = std::string(word.substr(0, equals));
  value = std::string(word.substr(equals + 1));
  return true;
}

LCliContext::LCliContext(std::ostream& out, std::ostream& err) : out(out), err(err) {}
LCliContext::~LCliContext() = default;

bool LCliResolveBusiness(std::string_view business, std::string& folder) {
  LBusinessEntry entry;
  if (!LMultipleBusinessResolve(business, entry)) return false;
  folder = entry.folder;
  return true;
}

LProfile* LCliContext::Profile() {
  if (!profile_) {
    if (business.empty()) {
      // Start-up: the primary business, then the remembered working folder when it still exists.
      profile_ = std::make_unique<LProfile>();
      MainDialog::InitDialog(*profile_);
    } else {
      std::string folder;
      if (!LCliResolveBusiness(business, folder)) {
        err << LBusinessNotFoundMessage(business) << "\n";
        return nullptr;
      }
      profile_ = std::make_unique<LProfile>(folder);
    }
    LLedgerSettleInterrupted(*profile_);  // a command never answers from half-posted books
  }
  return profile_.get();
}

int LCliContext::Usage(std::string_view problem) {
  if (!problem.empty()) err << "kontavo " << commandName << " : " << problem << "\n";
  if (const LCliCommand* command = LCliFindCommand(commandName)) err << "Usage :\n" << command->usage;
  return kExitUsage;
}

bool LCliContext::FinishArgs(LCliArgs& args, std::vector<std::string>& words, std::size_t minWords,
                             std::size_t maxWords) {
  std::string error;
  if (!args.Finish(words, error)) return Usage(error), false;
  if (words.size() < minWords || words.size() > maxWords) return Usage(), false;
  return true;
}

int LCliContext::Fail(std::string_view message) {
  err << message << "\n";
  return kExitFailed;
}

// ---- Main -------------------------------------------------------------------------------------

namespace {

constexpr std::string_view kGlobalUsage =
    "Usage : kontavo [--home DIR] [--business B] [--json] [--yes] COMMANDE [ARGUMENTS]\n"
    "        kontavo help [COMMANDE]\n";

void PrintHelp(std::ostream& out) {
  out << kGlobalUsage << "\nCommandes :\n";
  for (const LCliCommand* command = LCliCommands(); command->run != nullptr; ++command) {
    std::string name(command->name);
    name.resize(std::max<std::size_t>(name.size(), 12), ' ');
    out << "  " << name << " " << command->summary << "\n";
  }
  out << "\nkontavo help COMMANDE affiche l'usage d'une commande.\n";
}

}  // namespace

int LCliMain(int argc, char** argv, std::ostream& out, std::ostream& err) {
  LAppInstall();
  // kontavo started by itself to run a long operation (app/worker.h).
  if (argc >= 2 && std::string_view(argv[1]) == "--worker") return LCliWorkerMain(argc - 2, argv + 2);
  LCliContext context(out, err);
  int i = 1;
  for (; i < argc; ++i) {
    std::string_view word = argv[i];
    auto valueOf = [&](std::string_view name, std::string& value) {
      if (word == name) {
        if (i + 1 >= argc) return false;
        value = argv[++i];
        return true;
      }
      value = std::string(word.substr(name.size() + 1));
      return true;
    };
    auto is = [&](std::string_view name) {
      return word == name || (word.size() > name.size() && word.substr(0, name.size()) == name &&
                              word[name.size()] == '=');
    };
    if (is("--home")) {
      std::string home;
      if (!valueOf("--home", home)) return err << kGlobalUsage, kExitUsage;
      ::setenv("KONTAVO_HOME", home.c_str(), 1);
    } else if (is("--business")) {
      if (!valueOf("--business", context.business)) return err << kGlobalUsage, kExitUsage;
    } else if (word == "--json") {
      context.json = true;
    } else if (word == "--yes") {
      context.yes = true;
    } else if (word == "--help" || word == "-h") {
      PrintHelp(out);
      return kExitOk;
    } else {
      break;
    }
  }
  if (i >= argc) {
    PrintHelp(err);
    return kExitUsage;
  }
  std::string name = argv[i++];
  if (name == "help") {
    if (i >= argc) {
      PrintHelp(out);
      return kExitOk;
    }
    const LCliCommand* command = LCliFindCommand(argv[i]);
    if (command == nullptr) return err << "Commande inconnue : " << argv[i] << "\n", kExitUsage;
    out << "Usage :\n" << command->usage;
    return kExitOk;
  }
  const LCliCommand* command = LCliFindCommand(name);
  if (command == nullptr) {
    err << "Commande inconnue : " << name << "\n";
    PrintHelp(err);
    return kExitUsage;
  }
  context.commandName = name;
  std::vector<std::string> words(argv + i, argv + argc);
  LCliArgs args(std::move(words));
  if (args.WantsHelp()) {
    out << "Usage :\n" << command->usage;
    return kExitOk;
  }
  // Options that every command accepts after its name too.
  if (args.TakeFlag("--json")) context.json = true;
  if (args.TakeFlag("--yes")) context.yes = true;
  std::string business;
  if (args.TakeOption("--business", business)) context.business = business;
  return command->run(context, args);
}
