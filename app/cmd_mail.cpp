// kontavo mail ...: the user's e-mail settings and sending one message with them.
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "llib/gen/file.h"
#include "llib/gen/process.h"
#include "llib/gen/processterminal.h"
#include "llib/net/email.h"
#include "llib/net/emailsettings.h"
#include "llib/gen/jsontext.h"

namespace {

bool ParseOnOff(const std::string& word, bool& value) {
  if (word != "on" && word != "off") return false;
  value = word == "on";
  return true;
}

void PrintSettings(LCliContext& context, const LEmailSettings& settings) {
  if (context.json) {
    nlohmann::json json = {
        {"server", settings.server},         {"user", settings.user},
        {"passwordSet", !settings.password.empty()}, {"sender", settings.sender},
        {"replyTo", settings.replyTo},       {"starttls", settings.useEncryption},
        {"verify", settings.verifyCertificate},      {"caFile", settings.caFile},
    };
    context.out << LJsonDump(json) << "\n";
    return;
  }
  context.out << "server=" << settings.server << "\n"
              << "user=" << settings.user << "\n"
              << "password=" << (settings.password.empty() ? "" : "********") << "\n"
              << "sender=" << settings.sender << "\n"
              << "reply-to=" << settings.replyTo << "\n"
              << "starttls=" << (settings.useEncryption ? "on" : "off") << "\n"
              << "verify=" << (settings.verifyCertificate ? "on" : "off") << "\n"
              << "ca-file=" << settings.caFile << "\n";
}

std::string ReadStandardInput() {
  std::string text;
  char buffer[4096];
  for (;;) {
    long long count = LRobustRead(STDIN_FILENO, buffer, sizeof buffer);
    if (count <= 0) break;
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return text;
}

// The options of both actions, taken before the action word is known (LCliArgs hands out the
// positional words only once every option is taken).
struct MailOptions {
  std::optional<std::string> server, user, sender, replyTo, starttls, verify, caFile;
  bool passwordStdin = false;
  std::optional<std::string> to, subject, body, bodyFile, htmlFile;
  std::vector<std::string> attachments;

  void Take(LCliArgs& args) {
    for (auto [name, value] : {std::pair{"--server", &server}, {"--user", &user}, {"--sender", &sender},
                               {"--reply-to", &replyTo}, {"--starttls", &starttls}, {"--verify", &verify},
                               {"--ca-file", &caFile}, {"--to", &to}, {"--subject", &subject}, {"--body", &body},
                               {"--body-file", &bodyFile}, {"--html-file", &htmlFile}}) {
      std::string text;
      if (args.TakeOption(name, text)) *value = text;
    }
    passwordStdin = args.TakeFlag("--password-stdin");
    attachments = args.TakeOptionAll("--attach");
  }
  bool HasConfigOptions() const {
    return server || user || sender || replyTo || starttls || verify || caFile || passwordStdin;
  }
  bool HasSendOptions() const { return to || subject || body || bodyFile || htmlFile || !attachments.empty(); }
};

int MailConfig(LCliContext& context, const MailOptions& options) {
  LEmailSettings settings = LEmailSettingsLoad();
  if (options.server) settings.server = *options.server;
  if (options.user) settings.user = *options.user;
  if (options.passwordStdin) {
    std::string password = ReadStandardInput();
    if (password.ends_with('\n')) password.pop_back();
    if (password.ends_with('\r')) password.pop_back();
    settings.password = password;
  }
  if (options.sender) settings.sender = *options.sender;
  if (options.replyTo) settings.replyTo = *options.replyTo;
  if (std::string problem = LEmailSettingsCheck(settings); !problem.empty()) return context.Fail(problem);
  if (options.starttls && !ParseOnOff(*options.starttls, settings.useEncryption))
    return context.Usage("--starttls attend on ou off");
  if (options.verify && !ParseOnOff(*options.verify, settings.verifyCertificate))
    return context.Usage("--verify attend on ou off");
  if (options.caFile) {
    std::string content;
    if (!options.caFile->empty() && !LFile::ReadAll(*options.caFile, content))
      return context.Fail("Fichier de certificats illisible : " + *options.caFile);
    // Kept absolute: the service reads it later from another working folder.
    std::error_code error;
    settings.caFile = options.caFile->empty() ? std::string() : std::filesystem::absolute(*options.caFile, error).string();
  }
  if (options.HasConfigOptions() && !LEmailSettingsSave(settings))
    return context.Fail("Impossible d'enregistrer les réglages de messagerie.");
  PrintSettings(context, settings);
  return kExitOk;
}

int MailSend(LCliContext& context, const MailOptions& options) {
  if (!options.to || options.body.has_value() == options.bodyFile.has_value()) return context.Usage();
  EmailSMTPSendProcess request;
  LEmailSettingsFillRequest(LEmailSettingsLoad(), request);
  request.recipients = *options.to;
  request.subject = options.subject.value_or("");
  if (options.body) request.text = *options.body;
  if (options.bodyFile && !LFile::ReadAll(*options.bodyFile, request.text))
    return context.Fail("Impossible de lire le fichier : " + *options.bodyFile);
  if (options.htmlFile && !LFile::ReadAll(*options.htmlFile, request.html))
    return context.Fail("Impossible de lire le fichier : " + *options.htmlFile);
  request.attachments = options.attachments;

  LProcessTerminal progress("Envoi du courriel");
  LProcessResult result = Process(progress, request);
  if (result == kProcessCancelled) return context.Fail("Envoi annulé.");
  if (result != kProcessFinished) return context.Fail(progress.GetError());
  if (context.json) context.out << LJsonDump(nlohmann::json({{"sent", true}})) << "\n";
  return kExitOk;
}

}  // namespace

int LCmdMail(LCliContext& context, LCliArgs& args) {
  MailOptions options;
  options.Take(args);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  if (words[0] == "config" && !options.HasSendOptions()) return MailConfig(context, options);
  if (words[0] == "send" && !options.HasConfigOptions()) return MailSend(context, options);
  return context.Usage();
}
