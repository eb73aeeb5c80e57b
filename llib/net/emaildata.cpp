#include "llib/net/emaildata.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <vector>

#include "llib/gen/base64.h"
#include "llib/gen/file.h"
#include "llib/gen/process.h"
#include "llib/net/email.h"
#include "llib/net/emailmime.h"
#include "llib/net/socket.h"

namespace {

// Bytes gathered before the writer sends them.
constexpr std::size_t kWriteGatherBytes = 16 * 1024;
// Base64 lines: 57 bytes of a file give one line of 76 characters; files are read 256 lines at
// a time.
constexpr std::size_t kBase64LineSourceBytes = 57;
constexpr std::size_t kBase64ReadBytes = kBase64LineSourceBytes * 256;
// Share of the progress bar: the text is sent at 0.2, attachments fill the bar up to 0.95.
constexpr double kProgressText = 0.2;
constexpr double kProgressAttachmentsStart = 0.25;
constexpr double kProgressAttachmentsEnd = 0.95;

std::string Headers(const EmailSMTPSendProcess& request, std::string_view sender) {
  std::string subject;
  LRFC2047Encode(subject, request.subject);
  std::string headers = "MIME-Version: 1.0\r\nFrom: " + std::string(sender) + "\r\nTo: " + request.recipients +
                        "\r\nSubject: " + subject + "\r\nDate: " +
                        LEmailFormatDate(request.date != 0 ? request.date : std::time(nullptr)) + "\r\n";
  headers += "X-Mailer: " + std::string(kEmailMailerName) + "\r\n";
  if (!request.replyTo.empty()) headers += "Reply-To: " + request.replyTo + "\r\n";
  return headers;
}

constexpr std::string_view kPlainTextType = "Content-Type: text/plain; charset=\"utf-8\"\r\n\r\n";

unsigned long long FileSize(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 ? static_cast<unsigned long long>(info.st_size) : 0;
}

LEmailDataResult WriteFailure(const LSmtpDataWriter& writer) {
  return writer.Status() == LNetStatus::kStopped ? LEmailDataResult::kStopped : LEmailDataResult::kConnectionFailed;
}

LEmailDataResult WriteAttachments(LProcessInterface& process, const EmailSMTPSendProcess& request,
                                  LSmtpDataWriter& writer, const std::string& boundary,
                                  std::string& unreadablePath) {
  process.SetStatus("Envoi des pièces jointes au message", 0);
  std::vector<unsigned long long> sizes;
  unsigned long long total = 0;
  for (const auto& path : request.attachments) total += sizes.emplace_back(FileSize(path));
  double start = kProgressAttachmentsStart;
  double span = kProgressAttachmentsEnd - kProgressAttachmentsStart;
  for (std::size_t i = 0; i < request.attachments.size(); ++i) {
    const std::string& path = request.attachments[i];
    std::string name;
    LRFC2047Encode(name, LEmailAttachmentName(path), LRFC2047Use::kQuotedParameter);
    std::string partHeader = "\r\n--" + boundary + "\r\nContent-Type: " +
                             std::string(LEmailAttachmentContentType(path)) + "; name=\"" + name +
                             "\"\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment; filename=\"" +
                             name + "\"\r\n\r\n";
    if (!writer.Write(partHeader)) return WriteFailure(writer);
    double share = total > 0 ? span * static_cast<double>(sizes[i]) / static_cast<double>(total)
                             : span / static_cast<double>(request.attachments.size());
    LEmailDataResult result = ProcessSendEmailSMTPSendDataBase64(process, writer, path, start, share);
    if (result == LEmailDataResult::kAttachmentUnreadable) unreadablePath = path;
    if (result != LEmailDataResult::kWritten) return result;
    start += share;
  }
  if (!writer.Write("\r\n--" + boundary + "--\r\n")) return WriteFailure(writer);
  return LEmailDataResult::kWritten;
}

}  // namespace

// ---- Writer -----------------------------------------------------------------------------------

bool LSmtpDataWriter::Write(std::string_view bytes) {
  if (status_ != LNetStatus::kOk) return false;
  pending_ += bytes;
  return pending_.size() < kWriteGatherBytes || Flush();
}

bool LSmtpDataWriter::Flush() {
  if (status_ != LNetStatus::kOk) return false;
  if (!pending_.empty()) status_ = socket_.Send(pending_, writeTimeoutMs_);
  pending_.clear();
  return status_ == LNetStatus::kOk;
}

// ---- Text lines -------------------------------------------------------------------------------

bool ProcessSendEmailSMTPDataMessageContent(LSmtpDataWriter& writer, std::string_view text) {
  bool firstLine = true;
  while (!text.empty()) {
    std::size_t end = text.find_first_of("\r\n");
    bool hasEnding = end != std::string_view::npos;
    std::string_view line = text.substr(0, end);
    std::size_t consumed = !hasEnding ? text.size() : end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
    for (;;) {
      std::size_t cut = LEmailCutLength(line);
      // A '.' at the start of any line but the first is doubled; the server removes one again.
      if (!firstLine && !line.empty() && line.front() == '.' && !writer.Write(".")) return false;
      firstLine = false;
      if (!writer.Write(line.substr(0, cut))) return false;
      if (cut == line.size()) break;
      if (!writer.Write("\r\n")) return false;
      line.remove_prefix(cut);
    }
    if (hasEnding && !writer.Write("\r\n")) return false;
    text.remove_prefix(consumed);
  }
  return true;
}

// ---- Base64 -----------------------------------------------------------------------------------

LNetStatus ProcessSendEmailStringBase64(LSocket& socket, std::string_view text, unsigned timeoutMs) {
  return socket.Send(LBase64Encode(text) + "\r\n", timeoutMs);
}

LEmailDataResult ProcessSendEmailSMTPSendDataBase64(LProcessInterface& process, LSmtpDataWriter& writer,
                                                    const std::string& path, double progressStart,
                                                    double progressSpan) {
  LFileDescriptor file(LRobustOpen(path, O_RDONLY));
  if (!file.IsOpen()) return LEmailDataResult::kAttachmentUnreadable;
  unsigned long long size = FileSize(path);
  unsigned long long done = 0;
  std::vector<char> chunk(kBase64ReadBytes);
  std::string lines;
  bool firstLine = true;
  for (;;) {
    if (process.IsToStop()) return LEmailDataResult::kStopped;
    long long count = LRobustRead(file.Get(), chunk.data(), chunk.size());
    if (count < 0) return LEmailDataResult::kAttachmentUnreadable;
    if (count == 0) break;
    lines.clear();
    for (long long offset = 0; offset < count; offset += kBase64LineSourceBytes) {
      if (!firstLine) lines += "\r\n";
      firstLine = false;
      std::size_t piece = static_cast<std::size_t>(std::min<long long>(kBase64LineSourceBytes, count - offset));
      LBase64EncodeAppend(std::string_view(chunk.data() + offset, piece), lines);
    }
    if (!writer.Write(lines)) return WriteFailure(writer);
    done += static_cast<unsigned long long>(count);
    if (size > 0) process.SetProgress(progressStart + progressSpan * std::min(1.0, double(done) / double(size)));
    if (static_cast<std::size_t>(count) < chunk.size()) break;
  }
  return LEmailDataResult::kWritten;
}

// ---- The message ------------------------------------------------------------------------------

LEmailDataResult ProcessSendEmailSMTPData(LProcessInterface& process, const EmailSMTPSendProcess& request,
                                          LSmtpDataWriter& writer, std::string_view sender,
                                          std::string& unreadablePath) {
  process.SetProgress(kProgressText);
  process.SetStatus("Envoi du texte du message", 0);
  if (!writer.Write(Headers(request, sender))) return WriteFailure(writer);
  bool hasAttachments = !request.attachments.empty();
  if (!hasAttachments && request.html.empty()) {
    if (!writer.Write(kPlainTextType) || !ProcessSendEmailSMTPDataMessageContent(writer, request.text) ||
        !writer.Flush())
      return WriteFailure(writer);
    return LEmailDataResult::kWritten;
  }
  std::string boundary = LEmailChooseBoundary(request.text, request.html);
  std::string_view kind = hasAttachments ? "mixed" : "alternative";
  if (!writer.Write("Content-Type: multipart/" + std::string(kind) + "; boundary=" + boundary + "\r\n\r\n--" +
                    boundary + "\r\n") ||
      !writer.Write(kPlainTextType) || !ProcessSendEmailSMTPDataMessageContent(writer, request.text))
    return WriteFailure(writer);
  if (hasAttachments) {
    LEmailDataResult result = WriteAttachments(process, request, writer, boundary, unreadablePath);
    if (result != LEmailDataResult::kWritten) return result;
  } else if (!writer.Write("\r\n--" + boundary + "\r\nContent-type: text/html; charset=utf-8\r\n\r\n") ||
             !ProcessSendEmailSMTPDataMessageContent(writer, request.html) ||
             !writer.Write("\r\n--" + boundary + "--\r\n\r\n")) {
    return WriteFailure(writer);
  }
  return writer.Flush() ? LEmailDataResult::kWritten : WriteFailure(writer);
}
