// Turning a PDF into a PDF/A-3b that carries a file: the form of electronic invoices, whose
// printed pages are for people and whose attached XML is for the buyer's software.
//
// What is added to the document: the XMP metadata (PDF/A identification, title, author, dates,
// producer, matching the document information dictionary, plus any schemas the caller brings),
// an sRGB output intent with its ICC profile, the attached file as an embedded file stream with
// its MIME subtype, size and date, listed both in the catalog's embedded files and in its
// associated files (/AF) with its relationship to the document, and a document ID in the
// trailer. The pages themselves are copied as they are: their fonts must already be embedded.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

struct LPdfAttachment {
  std::string fileName;      // "factur-x.xml"
  std::string mimeType;      // "text/xml"
  std::string description;   // shown by PDF readers beside the file
  std::string relationship;  // "Data", "Source", "Alternative", ...
  std::string content;       // the file's bytes
};

struct LPdfA3Metadata {
  std::string title;
  std::string author;
  time_t created = 0;        // creation and modification time written in both places
  std::string extraXmp;      // further rdf:Description elements, already XML
};

// Writes into out pdf made PDF/A-3b with attachment. false with a French message in error (may
// be null) when pdf cannot be read; out is then empty.
[[nodiscard]] bool LPdfMakeA3(std::string_view pdf, const LPdfA3Metadata& metadata, const LPdfAttachment& attachment,
                              std::string& out, std::string* error);

// The attachment named fileName of pdf. false with a French message in error (may be null)
// when pdf cannot be read or has no such file; content is then empty.
[[nodiscard]] bool LPdfReadAttachment(std::string_view pdf, std::string_view fileName, std::string& content,
                                      std::string* error);
