// Replies of an SMTP server. A reply is one or more lines ended by LF; a line whose fourth
// character is '-' announces another line ("250-SIZE 1000"), and the first line that is shorter
// than four characters or has no '-' there is the last one ("250 OK"). Its leading decimal number
// is the reply code; the text after its first ':' (carriage returns dropped) is the reply text
// that error messages quote. Of each line only the first 258 characters are kept.
//
// LSmtpReplyParser is the byte-level reader, free of sockets; ProcessSendEmailSMTPRecv and
// ProcessSendEmailSMTPRecvEhloResponse run it over a connection with the dialogue's time limit.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

class LProcessInterface;
class LSocket;

class LSmtpReplyParser {
 public:
  static constexpr std::size_t kMaxKeptLineBytes = 258;  // bytes of a line kept
  // Bytes one reply may take at most, continuation lines included: a server that keeps talking
  // past this is broken or hostile, and the reply ends as failed.
  static constexpr std::size_t kMaxReplyBytes = 64 * 1024;

  // Takes bytes of the reply; returns how many were used. Stops right after the LF of the last
  // line, so the bytes that follow belong to the next reply. Returns 0 without using any byte
  // once the reply is complete or has failed.
  std::size_t Feed(std::string_view bytes);

  bool IsComplete() const { return complete_; }
  // The reply grew past kMaxReplyBytes before its last line ended.
  bool IsTooLong() const { return tooLong_; }
  // The code of the last line (0 when it does not begin with a digit); valid once complete.
  int Code() const { return code_; }
  // The text after the first ':' of the last line; empty without ':'.
  const std::string& Text() const { return text_; }
  // Some line of the reply contains "STARTTLS" (an EHLO reply offering encryption).
  bool OffersStartTls() const { return offersStartTls_; }

 private:
  void EndLine();

  std::string line_;            // kept bytes of the line being read (CR dropped)
  std::size_t replyBytes_ = 0;  // bytes of the reply used so far
  bool complete_ = false;
  bool tooLong_ = false;
  bool offersStartTls_ = false;
  int code_ = 0;
  std::string text_;
};

// Reads one reply within replyTimeoutMs in pieces of at most 512 bytes. true with code and text
// set when a complete reply arrived; false (code 0, text empty) on time-out, a closed
// connection, an over-long reply, or a stop from the interface.
bool ProcessSendEmailSMTPRecv(LProcessInterface& process, LSocket& socket, int& code, std::string& text,
                              unsigned replyTimeoutMs);
// The same for the reply to EHLO; startTlsOffered tells whether a line contains "STARTTLS".
bool ProcessSendEmailSMTPRecvEhloResponse(LProcessInterface& process, LSocket& socket, bool& startTlsOffered,
                                          int& code, unsigned replyTimeoutMs);
