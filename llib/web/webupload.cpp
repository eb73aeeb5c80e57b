#include "llib/web/webupload.h"

#include <algorithm>
#include <map>
#include <mutex>

#include "llib/gen/file.h"
#include "llib/gen/hashtable.h"
#include "llib/gen/textcase.h"
#include "llib/gen/textnum.h"
#include "llib/gen/trim.h"
#include "llib/web/webformat.h"
#include "llib/web/webletconnection.h"
#include "llib/web/webletform.h"
#include "llib/web/webletsocket.h"
#include "llib/web/webpage.h"

namespace {

constexpr std::size_t kMaxUploadIdBytes = 64;
constexpr std::size_t kMaxTrackedUploads = 64;

std::string_view Unquoted(std::string_view value) {
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') return value.substr(1, value.size() - 2);
  return value;
}

// The value of "key=value" among the ';'-separated parameters of a header value; found tells
// whether the key is there at all.
std::string HeaderParameter(std::string_view value, std::string_view key, bool* found = nullptr) {
  if (found != nullptr) *found = false;
  std::size_t start = 0;
  while (start <= value.size()) {
    std::size_t end = value.find(';', start);
    if (end == std::string_view::npos) end = value.size();
    std::string_view item = LTrimControls(value.substr(start, end - start));
    std::size_t equals = item.find('=');
    if (equals != std::string_view::npos && LTrimControls(item.substr(0, equals)).size() == key.size() &&
        LStartsWithText(LTrimControls(item.substr(0, equals)), key)) {
      if (found != nullptr) *found = true;
      return std::string(Unquoted(LTrimControls(item.substr(equals + 1))));
    }
    start = end + 1;
  }
  return {};
}

bool IsMultipartFormData(std::string_view contentType) {
  return LStartsWithText(LTrimControls(contentType), "multipart/form-data");
}

// One part's headers: the form field's name, the file name (hasFile when the part carries one)
// and the content type.
struct PartHeaders {
  std::string name;
  std::string fileName;
  std::string path;  // fileName with its folders
  bool hasFile = false;
  std::string contentType;
};

PartHeaders ReadPartHeaders(std::string_view block) {
  PartHeaders part;
  std::size_t start = 0;
  while (start < block.size()) {
    std::size_t end = block.find("\r\n", start);
    if (end == std::string_view::npos) end = block.size();
    std::string_view line = block.substr(start, end - start);
    std::size_t colon = line.find(':');
    if (colon != std::string_view::npos) {
      std::string_view name = LTrimControls(line.substr(0, colon));
      std::string_view value = LTrimControls(line.substr(colon + 1));
      if (name.size() == 19 && LStartsWithText(name, "Content-Disposition")) {
        part.name = HeaderParameter(value, "name");
        part.fileName = HeaderParameter(value, "filename", &part.hasFile);
      } else if (name.size() == 12 && LStartsWithText(name, "Content-Type")) {
        part.contentType.assign(value);
      }
    }
    start = end + 2;
  }
  // Some browsers send the whole path of the file: keep its base name, and the whole for folder
  // uploads.
  part.path = part.fileName;
  std::replace(part.path.begin(), part.path.end(), '\\', '/');
  std::size_t slash = part.fileName.find_last_of("/\\");
  if (slash != std::string::npos) part.fileName.erase(0, slash + 1);
  if (part.contentType.empty()) part.contentType = "application/octet-stream";
  return part;
}

bool IsValidUploadId(std::string_view id) {
  if (id.empty() || id.size() > kMaxUploadIdBytes) return false;
  return std::all_of(id.begin(), id.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
  });
}

// The uploads of the process, by id; sequence numbers tell the oldest.
struct ProgressTable {
  struct Entry {
    LWebletUploadProgress progress;
    unsigned long long sequence = 0;
  };
  std::mutex mutex;
  std::map<std::string, Entry, std::less<>> entries;
  unsigned long long nextSequence = 0;

  // Makes room for one more: the oldest finished upload goes, or the oldest of all.
  void DropOne() {
    auto victim = entries.end();
    for (auto it = entries.begin(); it != entries.end(); ++it) {
      bool better = victim == entries.end() ||
                    (it->second.progress.finished && !victim->second.progress.finished) ||
                    (it->second.progress.finished == victim->second.progress.finished &&
                     it->second.sequence < victim->second.sequence);
      if (better) victim = it;
    }
    if (victim != entries.end()) entries.erase(victim);
  }
};

ProgressTable& Progress() {
  static ProgressTable table;
  return table;
}

}  // namespace

const LWebletUploadedFile* LWebletUpload::Find(std::string_view fieldName) const {
  for (const LWebletUploadedFile& file : files)
    if (file.fieldName == fieldName) return &file;
  return nullptr;
}

bool LWebletParseMultipart(std::string_view contentType, std::string_view body, LHashTable& parameters,
                           std::vector<LWebletUploadedFile>& files) {
  if (!IsMultipartFormData(contentType)) return false;
  std::string boundary = HeaderParameter(contentType, "boundary");
  if (boundary.empty()) return false;
  std::string delimiter = "--" + boundary;
  std::string partEnd = "\r\n" + delimiter;
  std::size_t pos = body.find(delimiter);
  if (pos == std::string_view::npos) return false;
  pos += delimiter.size();
  while (true) {
    if (body.substr(pos, 2) == "--") return true;
    if (body.substr(pos, 2) != "\r\n") return false;
    pos += 2;
    std::size_t headersEnd = body.find("\r\n\r\n", pos);
    if (headersEnd == std::string_view::npos) return false;
    PartHeaders part = ReadPartHeaders(body.substr(pos, headersEnd - pos));
    std::size_t dataStart = headersEnd + 4;
    std::size_t dataEnd = body.find(partEnd, dataStart);
    if (dataEnd == std::string_view::npos) return false;
    std::string_view data = body.substr(dataStart, dataEnd - dataStart);
    // A file field with no file chosen comes with an empty file name: nothing was sent.
    if (!part.hasFile) parameters.SetString(part.name, data);
    else if (!part.fileName.empty())
      files.push_back({part.name, part.fileName, part.path, part.contentType, std::string(data)});
    pos = dataEnd + partEnd.size();
  }
}

LWebletUploadResult LWebletReadUpload(LWebletForm& form, LWebletUpload& upload, std::size_t maxBytes) {
  const char* contentType = form.GetHeader("Content-Type");
  if (contentType == nullptr || !IsMultipartFormData(contentType) || HeaderParameter(contentType, "boundary").empty())
    return LWebletUploadResult::kNotMultipart;
  const char* lengthText = form.GetHeader("Content-Length");
  long long length = lengthText == nullptr ? 0 : LTextToInt64(lengthText);
  if (length > static_cast<long long>(maxBytes)) return LWebletUploadResult::kTooLong;
  LWebletSocket* socket = form.Socket();
  if (length <= 0 || socket == nullptr) return LWebletUploadResult::kBroken;

  std::string id = form.GetParam("uploadId");
  LWebletUploadProgress progress{0, static_cast<std::size_t>(length), false};
  LWebletSetUploadProgress(id, progress);
  std::string body;
  body.reserve(progress.total);
  bool whole = LWebletReadBody(*socket, body, progress.total, [&](std::size_t received) {
    progress.received = received;
    LWebletSetUploadProgress(id, progress);
  });
  progress.finished = true;
  LWebletSetUploadProgress(id, progress);
  if (!whole || !LWebletParseMultipart(contentType, body, form.parameters, upload.files))
    return LWebletUploadResult::kBroken;
  return LWebletUploadResult::kOk;
}

void LWebletSetUploadProgress(std::string_view id, const LWebletUploadProgress& progress) {
  if (!IsValidUploadId(id)) return;
  ProgressTable& table = Progress();
  std::lock_guard<std::mutex> lock(table.mutex);
  auto it = table.entries.find(id);
  if (it == table.entries.end()) {
    if (table.entries.size() >= kMaxTrackedUploads) table.DropOne();
    it = table.entries.emplace(std::string(id), ProgressTable::Entry{}).first;
    it->second.sequence = table.nextSequence++;
  }
  it->second.progress = progress;
}

bool LWebletGetUploadProgress(std::string_view id, LWebletUploadProgress& progress) {
  ProgressTable& table = Progress();
  std::lock_guard<std::mutex> lock(table.mutex);
  auto it = table.entries.find(id);
  if (it == table.entries.end()) return false;
  progress = it->second.progress;
  return true;
}

void WLUploadProgress(LWebletForm& form) {
  LWebletUploadProgress progress;
  bool known = form.session.IsPresent() && LWebletGetUploadProgress(form.GetParam("uploadId"), progress);
  if (!known) progress = {};
  WLWriteScriptAnswerHeader(form);
  form.Write(LWebFormat("ShowUploadProgress(%zu, %zu, %d);\n", progress.received, progress.total,
                        progress.finished ? 1 : 0));
}

// ---- Folder uploads ------------------------------------------------------------------------------

bool LWebletUploadedRelativePath(std::string_view path, std::string& relative) {
  if (path.empty() || path.front() == '/' || path.find('\0') != std::string_view::npos) return false;
  std::size_t first = path.find('/');
  if (first == std::string_view::npos) return false;  // a file without its folder
  std::string_view rest = path.substr(first + 1);
  for (std::size_t start = 0;;) {
    std::size_t end = rest.find('/', start);
    std::string_view part = rest.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
    if (part.empty() || part == "." || part == "..") return false;
    if (end == std::string_view::npos) break;
    start = end + 1;
  }
  relative.assign(rest);
  return true;
}

int LWebletWriteUploadedFolder(const LWebletUpload& upload, std::string_view fieldName, const std::string& target) {
  std::vector<std::pair<std::string, const LWebletUploadedFile*>> files;
  for (const LWebletUploadedFile& file : upload.files) {
    if (file.fieldName != fieldName) continue;
    std::string relative;
    if (!LWebletUploadedRelativePath(file.path, relative)) return -1;
    files.emplace_back(relative, &file);
  }
  for (const auto& [relative, file] : files) {
    std::string path = target + "/" + relative;
    for (std::size_t slash = path.find('/', target.size() + 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
      if (!LFile::IsFolder(path.substr(0, slash)) && !LFile::MakeFolder(path.substr(0, slash))) return -1;
    if (!LFile::WriteAllAtomic(path, file->data)) return -1;
  }
  return static_cast<int>(files.size());
}
