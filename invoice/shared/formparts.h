// The parts every printed form of the business shares: the paper it prints on, the seller's
// block at the top left (logo, name, address, contact) with the form's title and its reference
// lines at the top right, the other party's block below, the line that tops continued pages,
// paragraphs that move to a new page when they do not fit, and the seller's legal identity
// printed at the foot of every page. The invoice, the receipt, the packing slip, the shipping
// label and the customer statement are all drawn from these, so they look like one family.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/company.h"
#include "invoice/shared/printformat.h"
#include "llib/gen/pdfcanvas.h"
#include "llib/gen/reporttable.h"

class LProfile;

// What every form reads once about the business: loaded from the profile's business.
struct LFormSeller {
  explicit LFormSeller(const LProfile& profile);

  LCompany company;     // the "Company" record
  std::string logoPath; // empty: no logo
  LPaperSize paper;     // A4, or Letter in the countries that print on it
};

// "SARL au capital de 10 000,00 € – SIREN 123456789 – SIRET … – RCS Lyon – N° TVA FR…": the
// parts that are set, joined by dashes; empty when none is.
std::string LCompanyLegalIdentity(const LCompany& company, const LPrintFormat& format);

// The file name of a form's PDF: the title with "-" for blanks, "-", the key, ".pdf"
// ("Facture-12.pdf", "Bon-de-commande-3.pdf"); characters that cannot be in a file name are
// replaced by "_".
std::string LFormPdfName(std::string_view title, std::string_view key);

// Sets the canvas's title, author and foot note (the legal identity) for a form of seller.
void LFormBegin(LPdfCanvas& canvas, const LFormSeller& seller, const LPrintFormat& format, std::string_view title);

// The non-empty lines joined by line ends.
std::string LFormJoinLines(const std::vector<std::string>& lines);

// Draws the seller's block at the left and, at the right, title in capitals over infoLines
// (number, dates, ...); returns the y below both. A logo that cannot be drawn is left out and
// the reason put in warning (may be null).
double LFormDrawHeader(LPdfCanvas& canvas, const LFormSeller& seller, std::string_view title,
                       const std::vector<std::string>& infoLines, std::string* warning);

// Draws the other party's block in the right half at y: a small grey heading ("Client"), the
// name in bold and the lines below it; returns the y below it.
double LFormDrawParty(LPdfCanvas& canvas, std::string_view heading, std::string_view name,
                      const std::vector<std::string>& lines, double y);

// Draws a second block like LFormDrawParty in the left half (a delivery address); returns its
// bottom.
double LFormDrawSideBlock(LPdfCanvas& canvas, std::string_view heading, std::string_view text, double y);

// The top of a continued page: text in bold at the top margin; returns the y below it.
double LFormContinuedTop(LPdfCanvas& canvas, std::string_view text);

// Draws text across the printed width at y, on a new page topped by continuedTop when it does
// not fit; y moves below it. Empty text draws nothing.
void LFormParagraph(LPdfCanvas& canvas, std::string_view continuedTop, std::string_view text, const LTextStyle& style,
                    double& y);

// The notes and the footer text of the form's options record ("Invoice", "Receipt", ...) under
// each other: notes as given (the record's "NotesText" when notes is null), the "FooterText"
// centred in italics.
void LFormNotesAndFooter(LPdfCanvas& canvas, std::string_view continuedTop, const LRecord& formOptions,
                         const std::string* notes, double& y);

// Any report of the report table printed on the business's paper, its legal identity at the foot
// of every page (LReportWritePdf). false with a message in error (may be null) when the PDF
// could not be made.
[[nodiscard]] bool LFormReportPdf(LProfile& profile, const LReportTable& table, const LReportStyle& style,
                                  std::string& pdf, std::string* error);
