#include "llib/net/emailreply.h"

#include "llib/gen/process.h"
#include "llib/net/socket.h"

namespace {

// Bytes asked of the connection per read.
constexpr std::size_t kReceivePieceBytes = 512;
// Digits of a reply code read at most: real codes have three.
constexpr int kMaxCodeDigits = 9;

// Reads one reply into parser; false when it did not complete.
bool ReadReply(LSocket& socket, LSmtpReplyParser& parser, unsigned replyTimeoutMs) {
  // The limit covers the whole reply, so a server trickling continuation lines forever ends it
  // as surely as a silent one.
  LNetDeadline deadline = LNetDeadline::After(replyTimeoutMs);
  for (;;) {
    socket.Consume(parser.Feed(socket.Buffered()));
    if (parser.IsComplete()) return true;
    if (parser.IsTooLong()) return false;
    if (socket.Receive(kReceivePieceBytes, deadline) != LNetStatus::kOk) return false;
  }
}

}  // namespace

std::size_t LSmtpReplyParser::Feed(std::string_view bytes) {
  std::size_t used = 0;
  while (used < bytes.size() && !complete_ && !tooLong_) {
    if (replyBytes_ >= kMaxReplyBytes) {
      tooLong_ = true;
      break;
    }
    char c = bytes[used++];
    ++replyBytes_;
    if (c == '\n') EndLine();
    else if (c != '\r' && line_.size() < kMaxKeptLineBytes) line_.push_back(c);
  }
  return used;
}

void LSmtpReplyParser::EndLine() {
  if (line_.find("STARTTLS") != std::string::npos) offersStartTls_ = true;
  if (line_.size() >= 4 && line_[3] == '-') {
    line_.clear();
    return;
  }
  code_ = 0;
  for (int i = 0; i < kMaxCodeDigits && i < static_cast<int>(line_.size()) && line_[i] >= '0' && line_[i] <= '9'; ++i)
    code_ = code_ * 10 + (line_[i] - '0');
  std::size_t colon = line_.find(':');
  text_ = colon == std::string::npos ? std::string() : line_.substr(colon + 1);
  complete_ = true;
}

bool ProcessSendEmailSMTPRecv(LProcessInterface& process, LSocket& socket, int& code, std::string& text,
                              unsigned replyTimeoutMs) {
  LSmtpReplyParser parser;
  socket.SetStopTest([&process] { return process.IsToStop(); });
  bool complete = ReadReply(socket, parser, replyTimeoutMs);
  code = complete ? parser.Code() : 0;
  text = complete ? parser.Text() : std::string();
  return complete;
}

bool ProcessSendEmailSMTPRecvEhloResponse(LProcessInterface& process, LSocket& socket, bool& startTlsOffered,
                                          int& code, unsigned replyTimeoutMs) {
  LSmtpReplyParser parser;
  socket.SetStopTest([&process] { return process.IsToStop(); });
  bool complete = ReadReply(socket, parser, replyTimeoutMs);
  code = complete ? parser.Code() : 0;
  startTlsOffered = complete && parser.OffersStartTls();
  return complete;
}
