// Printed pages as one PDF file. A canvas draws text, lines, shaded boxes and images page by
// page; coordinates are PDF points (1/72 inch) from the top-left corner of the paper, y growing
// downwards. Each page is first drawn on a recording surface and the PDF is written only by
// Finish, when the number of pages is known: that is when every page gets its foot
// "Page n / m". Text is shaped and broken into lines by pango in DejaVu Sans (the Debian font
// package installed with the system); cairo embeds the subsets of the glyphs used, so a PDF
// prints the same on any machine.
//
// One canvas is one document on one thread; the font map behind it is the thread's own.
#pragma once

#include <memory>
#include <string>
#include <string_view>

enum class LPaperSize { kA4, kLetter };

// The paper a business prints on: Letter in the countries whose offices use it (ISO 3166 code,
// "US", "CA", ...), A4 everywhere else.
LPaperSize LPaperSizeForCountry(std::string_view countryCode);

enum class LTextAlign { kLeft, kCenter, kRight };

struct LTextStyle {
  double sizePt = 9;                     // font size in points
  bool bold = false;
  bool italic = false;
  LTextAlign align = LTextAlign::kLeft;  // within the width given to the text
  double gray = 0;                       // 0 black to 1 white
};

class LPdfCanvas {
 public:
  static constexpr double kMarginPt = 42;       // around the printed area (about 15 mm)
  static constexpr double kPageNumberHeightPt = 14;  // kept above the bottom margin for "Page n / m"

  explicit LPdfCanvas(LPaperSize paper);
  ~LPdfCanvas();
  LPdfCanvas(const LPdfCanvas&) = delete;
  LPdfCanvas& operator=(const LPdfCanvas&) = delete;

  double PageWidth() const { return widthPt_; }
  double PageHeight() const { return heightPt_; }
  double Left() const { return kMarginPt; }
  double Right() const { return widthPt_ - kMarginPt; }
  double Top() const { return kMarginPt; }
  // The lowest y that page content may reach; below it is the foot.
  double Bottom() const { return heightPt_ - kMarginPt - footHeightPt_; }

  // Small centred text printed on every page above "Page n / m" (a business's legal identity);
  // set it before drawing, since it takes room from the bottom of every page.
  void SetFootNote(std::string_view text);

  // Starts a new page; drawing goes to it. The first drawing call starts page 1 by itself.
  void NewPage();
  int PageCount() const;

  // The height text takes when broken into lines of at most width points (between words, or
  // inside a word longer than a line). Bytes that are not UTF-8 are shown as replacement marks.
  double TextHeight(std::string_view text, double width, const LTextStyle& style);
  // The width of text on one line, unbroken.
  double TextWidth(std::string_view text, const LTextStyle& style);
  // Draws text with its top-left corner at (x, y), broken as TextHeight says; returns its height.
  double Text(double x, double y, double width, std::string_view text, const LTextStyle& style);

  void Line(double x1, double y1, double x2, double y2, double widthPt = 0.5, double gray = 0);
  void FillRect(double x, double y, double width, double height, double gray);

  // Draws the PNG image at path scaled down to fit in width x height (never enlarged), top-left
  // at (x, y), and sets drawnHeight (may be null) to its height on the page. false with a French
  // message in error (may be null) when the file is not a readable PNG image; nothing is drawn.
  [[nodiscard]] bool Image(const std::string& path, double x, double y, double width, double height,
                           double* drawnHeight, std::string* error);

  // Document information of the PDF.
  void SetTitle(std::string_view title);
  void SetAuthor(std::string_view author);

  // Writes every page (at least one, blank when nothing was drawn) as PDF into pdf, each with
  // "Page n / m" centred in its foot. false with a message in error (may be null) when cairo
  // could not write the file; pdf is then empty. The canvas is spent afterwards.
  [[nodiscard]] bool Finish(std::string& pdf, std::string* error);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
  double widthPt_;
  double heightPt_;
  double footHeightPt_ = kPageNumberHeightPt;  // foot note and page number
};
