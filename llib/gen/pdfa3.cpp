#include "llib/gen/pdfa3.h"

// qpdf 11 asks its users to say they no longer use its old smart pointer.
#define POINTERHOLDER_TRANSITION 4
#include <lcms2.h>
#include <qpdf/Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEFStreamObjectHelper.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFFileSpecObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <cstdio>
#include <exception>
#include <memory>

#include "llib/gen/optionalerror.h"
#include "llib/gen/reporttable.h"

namespace {

// The ICC profile of the sRGB space that cairo draws in, made by lcms; empty when lcms fails.
std::string SrgbProfile() {
  std::string bytes;
  cmsHPROFILE profile = cmsCreate_sRGBProfile();
  if (profile == nullptr) return bytes;
  cmsUInt32Number size = 0;
  if (cmsSaveProfileToMem(profile, nullptr, &size) && size > 0) {
    bytes.resize(size);
    if (!cmsSaveProfileToMem(profile, bytes.data(), &size)) bytes.clear();
  }
  cmsCloseProfile(profile);
  return bytes;
}

// A moment in UTC by strftime format.
std::string UtcText(time_t time, const char* format) {
  struct tm utc;
  gmtime_r(&time, &utc);
  char text[40];
  std::strftime(text, sizeof text, format, &utc);
  return text;
}
// The same moment in the two spellings that must agree: the PDF's ("D:20261124040502+00'00'")
// and XMP's ("2026-11-24T04:05:02+00:00").
std::string PdfDate(time_t time) { return UtcText(time, "D:%Y%m%d%H%M%S+00'00'"); }
std::string XmpDate(time_t time) { return UtcText(time, "%Y-%m-%dT%H:%M:%S+00:00"); }

std::string Xmp(const LPdfA3Metadata& metadata, const std::string& producer) {
  std::string date = XmpDate(metadata.created);
  return "<?xpacket begin=\"\xEF\xBB\xBF\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?>\n"
         "<x:xmpmeta xmlns:x=\"adobe:ns:meta/\">\n"
         "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\">\n"
         "<rdf:Description rdf:about=\"\" xmlns:pdfaid=\"http://www.aiim.org/pdfa/ns/id/\">\n"
         "<pdfaid:part>3</pdfaid:part>\n<pdfaid:conformance>B</pdfaid:conformance>\n</rdf:Description>\n"
         "<rdf:Description rdf:about=\"\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\">\n"
         "<dc:title><rdf:Alt><rdf:li xml:lang=\"x-default\">" +
         LHtmlEscape(metadata.title) +
         "</rdf:li></rdf:Alt></dc:title>\n"
         "<dc:creator><rdf:Seq><rdf:li>" +
         LHtmlEscape(metadata.author) +
         "</rdf:li></rdf:Seq></dc:creator>\n</rdf:Description>\n"
         "<rdf:Description rdf:about=\"\" xmlns:pdf=\"http://ns.adobe.com/pdf/1.3/\">\n"
         "<pdf:Producer>" +
         LHtmlEscape(producer) +
         "</pdf:Producer>\n</rdf:Description>\n"
         "<rdf:Description rdf:about=\"\" xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\">\n"
         "<xmp:CreatorTool>Kontavo</xmp:CreatorTool>\n<xmp:CreateDate>" +
         date + "</xmp:CreateDate>\n<xmp:ModifyDate>" + date + "</xmp:ModifyDate>\n<xmp:MetadataDate>" + date +
         "</xmp:MetadataDate>\n</rdf:Description>\n" + metadata.extraXmp +
         "</rdf:RDF>\n</x:xmpmeta>\n<?xpacket end=\"w\"?>";
}

void SetInfo(QPDF& pdf, const LPdfA3Metadata& metadata, const std::string& producer) {
  QPDFObjectHandle trailer = pdf.getTrailer();
  QPDFObjectHandle info = trailer.getKey("/Info");
  if (!info.isDictionary()) {
    info = pdf.makeIndirectObject(QPDFObjectHandle::newDictionary());
    trailer.replaceKey("/Info", info);
  }
  std::string date = PdfDate(metadata.created);
  info.replaceKey("/Title", QPDFObjectHandle::newUnicodeString(metadata.title));
  info.replaceKey("/Author", QPDFObjectHandle::newUnicodeString(metadata.author));
  info.replaceKey("/Creator", QPDFObjectHandle::newUnicodeString("Kontavo"));
  info.replaceKey("/Producer", QPDFObjectHandle::newUnicodeString(producer));
  info.replaceKey("/CreationDate", QPDFObjectHandle::newString(date));
  info.replaceKey("/ModDate", QPDFObjectHandle::newString(date));
}

void AddOutputIntent(QPDF& pdf, const std::string& icc) {
  QPDFObjectHandle profile = QPDFObjectHandle::newStream(&pdf, icc);
  profile.getDict().replaceKey("/N", QPDFObjectHandle::newInteger(3));
  QPDFObjectHandle intent = QPDFObjectHandle::newDictionary();
  intent.replaceKey("/Type", QPDFObjectHandle::newName("/OutputIntent"));
  intent.replaceKey("/S", QPDFObjectHandle::newName("/GTS_PDFA1"));
  intent.replaceKey("/OutputConditionIdentifier", QPDFObjectHandle::newString("sRGB"));
  intent.replaceKey("/Info", QPDFObjectHandle::newString("sRGB IEC61966-2.1"));
  intent.replaceKey("/DestOutputProfile", profile);
  QPDFObjectHandle intents = QPDFObjectHandle::newArray();
  intents.appendItem(pdf.makeIndirectObject(intent));
  pdf.getRoot().replaceKey("/OutputIntents", intents);
}

void Attach(QPDF& pdf, const LPdfAttachment& attachment, time_t created) {
  std::string date = PdfDate(created);
  QPDFEFStreamObjectHelper stream = QPDFEFStreamObjectHelper::createEFStream(pdf, attachment.content);
  stream.setSubtype(attachment.mimeType).setCreationDate(date).setModDate(date);
  QPDFFileSpecObjectHelper fileSpec = QPDFFileSpecObjectHelper::createFileSpec(pdf, attachment.fileName, stream);
  fileSpec.setDescription(attachment.description);
  QPDFObjectHandle fileSpecObject = fileSpec.getObjectHandle();
  fileSpecObject.replaceKey("/AFRelationship", QPDFObjectHandle::newName("/" + attachment.relationship));
  QPDFEmbeddedFileDocumentHelper(pdf).replaceEmbeddedFile(attachment.fileName, fileSpec);
  QPDFObjectHandle associated = QPDFObjectHandle::newArray();
  associated.appendItem(fileSpecObject);
  pdf.getRoot().replaceKey("/AF", associated);
}

}  // namespace

bool LPdfMakeA3(std::string_view pdf, const LPdfA3Metadata& metadata, const LPdfAttachment& attachment,
                std::string& out, std::string* error) {
  out.clear();
  std::string icc = SrgbProfile();
  if (icc.empty()) return LFail(error, "Impossible de créer le profil de couleurs sRGB du PDF/A.");
  try {
    QPDF document;
    document.setSuppressWarnings(true);
    document.processMemoryFile("document", pdf.data(), pdf.size());
    std::string producer = "Kontavo";
    SetInfo(document, metadata, producer);
    QPDFObjectHandle xmp = QPDFObjectHandle::newStream(&document, Xmp(metadata, producer));
    xmp.getDict().replaceKey("/Type", QPDFObjectHandle::newName("/Metadata"));
    xmp.getDict().replaceKey("/Subtype", QPDFObjectHandle::newName("/XML"));
    document.getRoot().replaceKey("/Metadata", document.makeIndirectObject(xmp));
    AddOutputIntent(document, icc);
    Attach(document, attachment, metadata.created);

    QPDFWriter writer(document);
    writer.setOutputMemory();
    writer.setMinimumPDFVersion("1.7");
    writer.write();
    std::shared_ptr<Buffer> buffer = writer.getBufferSharedPointer();
    out.assign(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
    return true;
  } catch (const std::exception& e) {
    out.clear();
    return LFail(error, std::string("PDF illisible : ") + e.what());
  }
}

bool LPdfReadAttachment(std::string_view pdf, std::string_view fileName, std::string& content, std::string* error) {
  content.clear();
  try {
    QPDF document;
    document.setSuppressWarnings(true);
    document.processMemoryFile("document", pdf.data(), pdf.size());
    QPDFEmbeddedFileDocumentHelper files(document);
    std::shared_ptr<QPDFFileSpecObjectHelper> fileSpec = files.getEmbeddedFile(std::string(fileName));
    if (!fileSpec) return LFail(error, "Le PDF ne contient pas de fichier « " + std::string(fileName) + " ».");
    std::shared_ptr<Buffer> data = fileSpec->getEmbeddedFileStream().getStreamData(qpdf_dl_all);
    content.assign(reinterpret_cast<const char*>(data->getBuffer()), data->getSize());
    return true;
  } catch (const std::exception& e) {
    content.clear();
    return LFail(error, std::string("PDF illisible : ") + e.what());
  }
}
