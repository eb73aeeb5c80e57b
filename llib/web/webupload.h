// File uploads to the web server. A dialog that uploads posts its form as multipart/form-data
// into a hidden frame; its route has a raw-POST handler (webletroutes.h) that reads the body
// itself with LWebletReadUpload: the ordinary fields go into the request's parameters, the files
// into an LWebletUpload. While the body arrives, the bytes received so far are published under
// the upload's id (the parameter "uploadId" that the page script adds to the form's address),
// and the route "uploadProgress" answers the browser's polls with them.
//
//     void WLLoadStatementPost(LWebletForm& form) {   // raw-POST handler
//       LWebletUpload upload;
//       if (!LWebletReadUpload(form, upload)) { ...answer script with the refusal...; return; }
//       const LWebletUploadedFile* file = upload.Find("statement");
//     }
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "llib/web/webletconnection.h"

class LHashTable;
class LWebletForm;

// An upload larger than this is refused before any of it is read.
inline constexpr std::size_t kWebletMaxUploadBytes = 3000000;
// The body is read in pieces of this size, the progress published after each.
inline constexpr std::size_t kWebletUploadPieceBytes = kWebletBodyPieceBytes;

struct LWebletUploadedFile {
  std::string fieldName;    // the form field's name
  std::string fileName;     // as the browser gave it (the base name, without folders)
  std::string path;         // the name with its folders, "/" between them, as a folder upload
                            // sends it ("Sauvegarde/Misc/Options.dat"); outside input: check
                            // every part before using it as a path
  std::string contentType;  // "application/octet-stream" when the browser gave none
  std::string data;         // the bytes of the file
};

struct LWebletUpload {
  std::vector<LWebletUploadedFile> files;
  // The file of the field fieldName; null when none was sent.
  const LWebletUploadedFile* Find(std::string_view fieldName) const;
};

// Why an upload could not be read.
enum class LWebletUploadResult {
  kOk,
  kNotMultipart,  // no multipart/form-data content type with a boundary
  kTooLong,       // "Content-Length" above the limit (nothing was read)
  kBroken,        // the connection failed or ended before the whole body, or the body is malformed
};

// Reads the body of a POST whose handler got it unread ("Content-Length" bytes within that many
// ms plus 40000), publishing the progress under the parameter "uploadId" when there is one.
// On kOk the fields are in form.parameters and the files in upload.
LWebletUploadResult LWebletReadUpload(LWebletForm& form, LWebletUpload& upload,
                                      std::size_t maxBytes = kWebletMaxUploadBytes);

// Writes the files of a folder upload (the field fieldName of a form with an input
// "webkitdirectory") under target, which must exist: each file at its path less the chosen
// folder's own name ("Sauvegarde/Misc/Options.dat" -> target/Misc/Options.dat), folders made
// as needed. A path with an empty, "." or ".." part, a NUL or a leading "/" is refused whole
// before anything is written. Returns the number of files written; -1 on a refused path or a
// failed write (what was written stays: the caller removes target).
int LWebletWriteUploadedFolder(const LWebletUpload& upload, std::string_view fieldName, const std::string& target);
// The path under the chosen folder of a folder upload's file path ("Sauvegarde/Misc/Options.dat"
// -> "Misc/Options.dat"); false for the paths LWebletWriteUploadedFolder refuses.
bool LWebletUploadedRelativePath(std::string_view path, std::string& relative);

// Splits a multipart/form-data body: fields without a file name go into parameters (name to
// text), the others into files. false when contentType names no boundary or the body does not
// follow it.
bool LWebletParseMultipart(std::string_view contentType, std::string_view body, LHashTable& parameters,
                           std::vector<LWebletUploadedFile>& files);

// ---- Progress of the uploads of the process ----------------------------------------------------
struct LWebletUploadProgress {
  std::size_t received = 0;  // bytes of the body read so far
  std::size_t total = 0;     // "Content-Length"
  bool finished = false;     // the whole body was read, or reading stopped
};
// Ids are the browser's: at most 64 letters, digits, '-' or '_'; other ids are ignored. The table
// keeps the latest uploads only (finished ones are dropped first when it is full).
void LWebletSetUploadProgress(std::string_view id, const LWebletUploadProgress& progress);
// false when the id is unknown.
bool LWebletGetUploadProgress(std::string_view id, LWebletUploadProgress& progress);

// Route "uploadProgress" (parameter "uploadId"): answers script for the page,
// "ShowUploadProgress(received, total, finished);" with finished 1 or 0, and 0, 0, 0 for an
// unknown id or without session.
void WLUploadProgress(LWebletForm& form);
