#include "llib/net/email.h"

#include <fcntl.h>

#include "llib/gen/file.h"
#include "llib/net/emailaddress.h"
#include "llib/net/emaildialogue.h"
#include "llib/net/socket.h"

namespace {

std::vector<std::string> Addresses(std::string_view list) {
  std::vector<std::string> addresses;
  std::string address;
  for (LEmailAddressListIterator it(list); it.Next(address);) addresses.push_back(address);
  return addresses;
}

// Everything that can be refused before the network is touched: no recipient, a malformed
// address (which would also corrupt the commands it goes into), an attachment that cannot be
// read. true when the request can go; otherwise the message is set.
bool CheckRequest(LProcessInterface& process, const EmailSMTPSendProcess& request,
                  const std::vector<std::vector<std::string>>& lists) {
  std::size_t count = 0;
  for (const auto& list : lists) {
    for (const auto& address : list) {
      if (!LEmail::ValidateAddressSingle(address)) {
        process.SetErrorF("Adresse de courriel de destinataire non valide: %s", address.c_str());
        return false;
      }
    }
    count += list.size();
  }
  if (count == 0) {
    process.SetError("Aucun destinataire indiqué pour réception de courriel.");
    return false;
  }
  if (!request.sender.empty() && !LEmail::ValidateAddressSingle(request.sender)) {
    process.SetErrorF("Adresse de courriel de l'expéditeur non valide: %s", request.sender.c_str());
    return false;
  }
  for (const auto& path : request.attachments) {
    LFileDescriptor file(LRobustOpen(path, O_RDONLY));
    if (!file.IsOpen() || LFile::IsFolder(path)) {
      process.SetErrorF("Impossible de lire la pièce jointe \"%s\".", path.c_str());
      return false;
    }
  }
  return true;
}

// Connects the socket; kProcessFailed with the connection message when no port answers.
LProcessResult ConnectTo(LProcessInterface& process, LSocket& socket, const std::vector<LIPAddressWithPort>& tries,
                         unsigned timeoutMs, std::string_view serverName, std::string_view emailTo) {
  socket.SetStopTest([&process] { return process.IsToStop(); });
  for (const auto& address : tries) {
    LNetStatus status = socket.Connect(address, timeoutMs);
    if (status == LNetStatus::kOk) return kProcessFinished;
    if (status == LNetStatus::kStopped) return kProcessCancelled;
  }
  if (process.IsToStop()) return kProcessCancelled;
  process.SetErrorF("Impossible de se connecter au serveur de messagerie \"%s\" pour envoyer un message à \"%s\".",
                    std::string(serverName).c_str(), std::string(emailTo).c_str());
  return kProcessFailed;
}

// One connection to the configured server for every recipient.
LProcessResult SendThroughServer(LProcessInterface& process, EmailSMTPSendProcess& request,
                                 const std::vector<std::vector<std::string>>& lists) {
  LEmailSMTPRun run;
  run.recipientLists = lists;
  run.emailTo = request.recipients;
  std::vector<LIPAddressWithPort> tries;
  LIPAddressWithPort address;
  if (LIPAddressWithPort::Parse(request.server, request.ports.submission, address)) {
    tries.push_back(address);
    if (address.Port() == request.ports.submission)
      tries.emplace_back(address.Host(), request.ports.fallback);
    run.mailHost = address.Host();
  } else {
    run.mailHost = request.server;
  }
  run.sender = !request.sender.empty() ? request.sender : "Kontavo@" + run.mailHost;
  LSocket socket;
  LProcessResult connected =
      ConnectTo(process, socket, tries, request.timeLimits.connectMs, request.server, request.recipients);
  if (connected != kProcessFinished) return connected;
  return ProcessSendEmailSMTPDialogue(process, request, socket, run);
}

// One connection per recipient, to the mail exchanger of the recipient's domain.
LProcessResult SendDirect(LProcessInterface& process, EmailSMTPSendProcess& request,
                          const std::vector<std::vector<std::string>>& lists) {
  const LEmailMXLookupFunction& lookUp =
      request.mxLookup ? request.mxLookup : LEmailMXLookupFunction(&LIPAddressWithPort::EmailMXLookup);
  for (const auto& list : lists) {
    for (const auto& address : list) {
      std::string domain = address.substr(address.rfind('@') + 1);
      LEmailSMTPRun run;
      run.direct = true;
      run.emailTo = address;
      run.recipientLists = {{address}};
      run.sender = !request.sender.empty() ? request.sender : "Kontavo@" + domain;
      LIPAddressWithPort exchanger;
      std::vector<LIPAddressWithPort> tries;
      if (lookUp(domain, exchanger)) tries.push_back(exchanger);
      run.mailHost = tries.empty() ? domain : exchanger.Host();
      LSocket socket;
      LProcessResult result =
          ConnectTo(process, socket, tries, request.timeLimits.connectMs, run.mailHost, address);
      if (result == kProcessFinished) result = ProcessSendEmailSMTPDialogue(process, request, socket, run);
      if (result != kProcessFinished) return result;
    }
  }
  return kProcessFinished;
}

}  // namespace

LProcessResult Process(LProcessInterface& process, EmailSMTPSendProcess& request) {
  process.SetProgress(0);
  process.SetStatus("Connexion au serveur en cours", 0);
  std::vector<std::vector<std::string>> lists{Addresses(request.recipients)};
  for (const auto& copies : request.copyRecipients) lists.push_back(Addresses(copies));
  if (!CheckRequest(process, request, lists)) return kProcessFailed;
  return request.server.empty() ? SendDirect(process, request, lists) : SendThroughServer(process, request, lists);
}
