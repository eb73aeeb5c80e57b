// The message as it travels after DATA: headers, the text lines (cut past 700 bytes and
// dot-stuffed so that no line "." ends the data early), the MIME parts and the attached files
// in base64. Everything is written through an LSmtpDataWriter, which gathers small pieces into
// writes of about 16 KB, each under the dialogue's time limit for one piece of the message.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "llib/net/netwait.h"

class LProcessInterface;
class LSocket;
struct EmailSMTPSendProcess;

class LSmtpDataWriter {
 public:
  LSmtpDataWriter(LSocket& socket, unsigned writeTimeoutMs) : socket_(socket), writeTimeoutMs_(writeTimeoutMs) {}

  // Queues bytes, sending when enough gathered. false once a send failed (later writes do
  // nothing and fail too).
  bool Write(std::string_view bytes);
  // Sends what is queued.
  bool Flush();
  // kOk, or how the first failed send ended.
  LNetStatus Status() const { return status_; }

 private:
  LSocket& socket_;
  unsigned writeTimeoutMs_;
  std::string pending_;  // bytes queued, not sent yet
  LNetStatus status_ = LNetStatus::kOk;
};

// How writing the message ended.
enum class LEmailDataResult {
  kWritten,
  kStopped,             // the interface asked to stop
  kConnectionFailed,    // a write failed or timed out
  kAttachmentUnreadable,  // a file could not be read; unreadablePath names it
};

// Writes the whole message (headers, parts, attachments), without the final "\r\n.\r\n".
// sender fills the "From" header.
LEmailDataResult ProcessSendEmailSMTPData(LProcessInterface& process, const EmailSMTPSendProcess& request,
                                          LSmtpDataWriter& writer, std::string_view sender,
                                          std::string& unreadablePath);

// Writes text line by line with CR LF line ends (a LF, a CR LF or a lone CR ends a line in
// text): lines of more than 700 bytes cut (LEmailCutLength), the rest counting as a new line; a
// line that begins with '.' gets a second '.', except the very first line of the text. A last
// line without its own line end is written without CR LF.
bool ProcessSendEmailSMTPDataMessageContent(LSmtpDataWriter& writer, std::string_view text);

// Sends the base64 of text and CR LF as one command line (the user name and password of AUTH
// LOGIN).
LNetStatus ProcessSendEmailStringBase64(LSocket& socket, std::string_view text, unsigned timeoutMs);

// Writes the file at path in base64, lines of 76 characters separated by CR LF (no line end
// after the last), moving the progress from progressStart over progressSpan.
LEmailDataResult ProcessSendEmailSMTPSendDataBase64(LProcessInterface& process, LSmtpDataWriter& writer,
                                                    const std::string& path, double progressStart,
                                                    double progressSpan);
