#include "invoice/shared/formparts.h"

#include <algorithm>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/reportpdf.h"
#include "llib/gen/utf8.h"

LFormSeller::LFormSeller(const LProfile& profile) {
  company.OpenFrom(profile);
  logoPath = company.GetLogoPath(profile);
  LOptions options;
  options.OpenFrom(profile);
  paper = LPaperSizeForCountry(options.GetString("CountryCode"));
}

std::string LCompanyLegalIdentity(const LCompany& company, const LPrintFormat& format) {
  std::vector<std::string> parts;
  std::string name = company.GetName();
  std::string form = company.GetLegalForm();
  if (company.GetShareCapital() > 0)
    form += (form.empty() ? "Capital de " : " au capital de ") + format.Money(company.GetShareCapital());
  if (!name.empty()) parts.push_back(name);
  if (!form.empty()) parts.push_back(form);
  if (!company.GetSiren().empty()) parts.push_back("SIREN " + company.GetSiren());
  if (!company.GetSiret().empty()) parts.push_back("SIRET " + company.GetSiret());
  if (!company.GetRcs().empty()) parts.push_back(company.GetRcs());
  if (!company.GetVatNumber().empty()) parts.push_back("N° TVA " + company.GetVatNumber());
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : " – ") + part;
  return text;
}

std::string LFormPdfName(std::string_view title, std::string_view key) {
  std::string name;
  for (char c : title) name += c == ' ' ? '-' : c;
  name += "-";
  for (char c : key) name += (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 32) ? '_' : c;
  return name + ".pdf";
}

void LFormBegin(LPdfCanvas& canvas, const LFormSeller& seller, const LPrintFormat& format, std::string_view title) {
  canvas.SetTitle(title);
  canvas.SetAuthor(seller.company.GetName());
  canvas.SetFootNote(LCompanyLegalIdentity(seller.company, format));
}

std::string LFormJoinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    if (line.empty()) continue;
    if (!text.empty()) text += "\n";
    text += line;
  }
  return text;
}

double LFormDrawHeader(LPdfCanvas& canvas, const LFormSeller& seller, std::string_view title,
                       const std::vector<std::string>& infoLines, std::string* warning) {
  const double top = canvas.Top();
  const double width = canvas.Right() - canvas.Left();
  const LCompany& company = seller.company;
  double left = top;
  if (!seller.logoPath.empty()) {
    double logoHeight = 0;
    std::string error;
    if (canvas.Image(seller.logoPath, canvas.Left(), left, width * 0.4, 60, &logoHeight, &error)) {
      left += logoHeight + 6;
    } else if (warning != nullptr) {
      *warning = error + " Le document est imprimé sans logo.";
    }
  }
  LTextStyle name;
  name.sizePt = 13;
  name.bold = true;
  left += canvas.Text(canvas.Left(), left, width * 0.55, company.GetName(), name);
  LTextStyle small;
  small.sizePt = 8.5;
  std::string contact = LFormJoinLines(
      {company.GetAddress(), company.GetPhone().empty() ? "" : "Tél. " + company.GetPhone(), company.GetEmail()});
  left += canvas.Text(canvas.Left(), left + 2, width * 0.55, contact, small) + 2;

  LTextStyle titleStyle;
  titleStyle.sizePt = 20;
  titleStyle.bold = true;
  titleStyle.align = LTextAlign::kRight;
  double x = canvas.Left() + width * 0.55;
  double right = top;
  right += canvas.Text(x, right, width * 0.45, LUtf8ToUpper(title), titleStyle);
  LTextStyle info;
  info.sizePt = 9;
  info.align = LTextAlign::kRight;
  right += canvas.Text(x, right + 4, width * 0.45, LFormJoinLines(infoLines), info) + 4;
  return std::max(left, right) + 14;
}

namespace {

double DrawBlock(LPdfCanvas& canvas, double x, double width, std::string_view heading, std::string_view name,
                 std::string_view text, double y) {
  LTextStyle label;
  label.sizePt = 8;
  label.gray = 0.4;
  double h = canvas.Text(x, y, width, heading, label);
  if (!name.empty()) {
    LTextStyle nameStyle;
    nameStyle.sizePt = 11;
    nameStyle.bold = true;
    h += canvas.Text(x, y + h + 2, width, name, nameStyle) + 2;
  }
  LTextStyle textStyle;
  textStyle.sizePt = 9;
  h += canvas.Text(x, y + h + 2, width, text, textStyle) + 2;
  return y + h;
}

}  // namespace

double LFormDrawParty(LPdfCanvas& canvas, std::string_view heading, std::string_view name,
                      const std::vector<std::string>& lines, double y) {
  const double width = canvas.Right() - canvas.Left();
  return DrawBlock(canvas, canvas.Left() + width * 0.5, width * 0.5, heading, name, LFormJoinLines(lines), y) + 16;
}

double LFormDrawSideBlock(LPdfCanvas& canvas, std::string_view heading, std::string_view text, double y) {
  const double width = canvas.Right() - canvas.Left();
  return DrawBlock(canvas, canvas.Left(), width * 0.45, heading, {}, text, y) + 16;
}

double LFormContinuedTop(LPdfCanvas& canvas, std::string_view text) {
  LTextStyle style;
  style.sizePt = 9;
  style.bold = true;
  return canvas.Top() + canvas.Text(canvas.Left(), canvas.Top(), canvas.Right() - canvas.Left(), text, style) + 8;
}

void LFormParagraph(LPdfCanvas& canvas, std::string_view continuedTop, std::string_view text, const LTextStyle& style,
                    double& y) {
  if (text.empty()) return;
  double width = canvas.Right() - canvas.Left();
  double height = canvas.TextHeight(text, width, style);
  if (y + height > canvas.Bottom()) {
    canvas.NewPage();
    y = LFormContinuedTop(canvas, continuedTop);
  }
  y += canvas.Text(canvas.Left(), y, width, text, style) + 6;
}

void LFormNotesAndFooter(LPdfCanvas& canvas, std::string_view continuedTop, const LRecord& formOptions,
                         const std::string* notes, double& y) {
  LTextStyle style;
  style.sizePt = 8.5;
  LFormParagraph(canvas, continuedTop, notes != nullptr ? *notes : formOptions.GetString("NotesText"), style, y);
  LTextStyle footer = style;
  footer.italic = true;
  footer.align = LTextAlign::kCenter;
  LFormParagraph(canvas, continuedTop, formOptions.GetString("FooterText"), footer, y);
}

bool LFormReportPdf(LProfile& profile, const LReportTable& table, const LReportStyle& style, std::string& pdf,
                    std::string* error) {
  LFormSeller seller(profile);
  return LReportWritePdf(table, style, seller.paper, LCompanyLegalIdentity(seller.company, LPrintFormat(profile)), pdf,
                         error);
}
