#include "llib/gen/pdfcanvas.h"

#include <cairo-pdf.h>
#include <cairo.h>
#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <array>
#include <vector>

#include "llib/gen/optionalerror.h"

namespace {

constexpr double kA4WidthPt = 595.28, kA4HeightPt = 841.89;
constexpr double kLetterWidthPt = 612, kLetterHeightPt = 792;
constexpr const char* kFontFamily = "DejaVu Sans";

// The forms draw with DejaVu Sans alone, so fontconfig knows only the folder of its Debian
// package (its cache written there by the package's fc-cache). The system's configuration (tens
// of files under /etc/fonts) and the caches of every other installed font are never read: on a
// desktop with thousands of fonts a printed invoice starts as fast as on a bare server.
constexpr const char* kFontsConfig =
    "<fontconfig><dir>/usr/share/fonts/truetype/dejavu</dir><cachedir>/var/cache/fontconfig</cachedir>"
    "<cachedir prefix=\"xdg\">fontconfig</cachedir></fontconfig>";

// Makes the configuration above the process's current one, once, before pango or cairo first
// ask fontconfig (either would load the system's whole configuration, pango on a thread of its
// own). Where that folder holds no font the system's configuration stays.
void UseFormsFonts() {
  static const bool kUsed = [] {
    FcConfig* config = FcConfigCreate();
    if (config == nullptr) return false;
    FcFontSet* fonts = nullptr;
    if (FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8*>(kFontsConfig), FcFalse) &&
        FcConfigBuildFonts(config))
      fonts = FcConfigGetFonts(config, FcSetSystem);
    if (fonts == nullptr || fonts->nfont == 0 || !FcConfigSetCurrent(config)) {
      FcConfigDestroy(config);
      return false;
    }
    return true;  // the current configuration lives as long as the process
  }();
  (void)kUsed;
}

// Countries whose offices print on Letter paper.
constexpr std::array<std::string_view, 13> kLetterCountries = {"US", "CA", "MX", "PH", "CL", "CO", "VE",
                                                                "PR", "GT", "CR", "PA", "DO", "SV"};

// Pango takes only UTF-8; a record may hold anything.
std::string ValidUtf8(std::string_view text) {
  if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) return std::string(text);
  gchar* fixed = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
  std::string result(fixed);
  g_free(fixed);
  return result;
}

cairo_status_t AppendToString(void* closure, const unsigned char* data, unsigned int length) {
  static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
  return CAIRO_STATUS_SUCCESS;
}

}  // namespace

LPaperSize LPaperSizeForCountry(std::string_view countryCode) {
  for (std::string_view letter : kLetterCountries) {
    if (countryCode == letter) return LPaperSize::kLetter;
  }
  return LPaperSize::kA4;
}

struct LPdfCanvas::Impl {
  PangoContext* context = nullptr;          // shaping context shared by every layout
  std::vector<cairo_surface_t*> pages;      // one recording surface a page
  cairo_t* cr = nullptr;                    // drawing on the last page
  std::string title;
  std::string author;
  std::string footNote;                     // above "Page n / m" on every page

  ~Impl() {
    if (cr != nullptr) cairo_destroy(cr);
    for (cairo_surface_t* page : pages) cairo_surface_destroy(page);
    if (context != nullptr) g_object_unref(context);
  }

  // A layout of text in style, width points wide (0: unbroken).
  PangoLayout* Layout(std::string_view text, double width, const LTextStyle& style) {
    PangoLayout* layout = pango_layout_new(context);
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family_static(font, kFontFamily);
    pango_font_description_set_absolute_size(font, style.sizePt * PANGO_SCALE);
    pango_font_description_set_weight(font, style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(font, style.italic ? PANGO_STYLE_OBLIQUE : PANGO_STYLE_NORMAL);
    pango_layout_set_font_description(layout, font);
    pango_font_description_free(font);
    if (width > 0) {
      pango_layout_set_width(layout, static_cast<int>(width * PANGO_SCALE));
      pango_layout_set_wrap(layout, PANGO_WRAP_WORD_CHAR);
    }
    switch (style.align) {
      case LTextAlign::kLeft: pango_layout_set_alignment(layout, PANGO_ALIGN_LEFT); break;
      case LTextAlign::kCenter: pango_layout_set_alignment(layout, PANGO_ALIGN_CENTER); break;
      case LTextAlign::kRight: pango_layout_set_alignment(layout, PANGO_ALIGN_RIGHT); break;
    }
    std::string utf8 = ValidUtf8(text);
    pango_layout_set_text(layout, utf8.data(), static_cast<int>(utf8.size()));
    return layout;
  }

  static void Show(cairo_t* target, PangoLayout* layout, double x, double y, double gray) {
    cairo_save(target);
    cairo_set_source_rgb(target, gray, gray, gray);
    cairo_move_to(target, x, y);
    pango_cairo_show_layout(target, layout);
    cairo_restore(target);
  }
};

LPdfCanvas::LPdfCanvas(LPaperSize paper) : impl_(std::make_unique<Impl>()) {
  widthPt_ = paper == LPaperSize::kLetter ? kLetterWidthPt : kA4WidthPt;
  heightPt_ = paper == LPaperSize::kLetter ? kLetterHeightPt : kA4HeightPt;
  UseFormsFonts();
  impl_->context = pango_font_map_create_context(pango_cairo_font_map_get_default());
  // Unhinted metrics: text measured here breaks exactly as it is drawn on the PDF page.
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  pango_cairo_context_set_font_options(impl_->context, options);
  cairo_font_options_destroy(options);
  pango_cairo_context_set_resolution(impl_->context, 72);
}

LPdfCanvas::~LPdfCanvas() = default;

void LPdfCanvas::NewPage() {
  if (impl_->cr != nullptr) cairo_destroy(impl_->cr);
  cairo_rectangle_t extents = {0, 0, widthPt_, heightPt_};
  cairo_surface_t* page = cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents);
  impl_->pages.push_back(page);
  impl_->cr = cairo_create(page);
}

int LPdfCanvas::PageCount() const { return static_cast<int>(impl_->pages.size()); }

double LPdfCanvas::TextHeight(std::string_view text, double width, const LTextStyle& style) {
  PangoLayout* layout = impl_->Layout(text, width, style);
  int w = 0, h = 0;
  pango_layout_get_size(layout, &w, &h);
  g_object_unref(layout);
  return static_cast<double>(h) / PANGO_SCALE;
}

double LPdfCanvas::TextWidth(std::string_view text, const LTextStyle& style) {
  PangoLayout* layout = impl_->Layout(text, 0, style);
  int w = 0, h = 0;
  pango_layout_get_size(layout, &w, &h);
  g_object_unref(layout);
  return static_cast<double>(w) / PANGO_SCALE;
}

double LPdfCanvas::Text(double x, double y, double width, std::string_view text, const LTextStyle& style) {
  if (impl_->cr == nullptr) NewPage();
  PangoLayout* layout = impl_->Layout(text, width, style);
  Impl::Show(impl_->cr, layout, x, y, style.gray);
  int w = 0, h = 0;
  pango_layout_get_size(layout, &w, &h);
  g_object_unref(layout);
  return static_cast<double>(h) / PANGO_SCALE;
}

void LPdfCanvas::Line(double x1, double y1, double x2, double y2, double widthPt, double gray) {
  if (impl_->cr == nullptr) NewPage();
  cairo_t* cr = impl_->cr;
  cairo_save(cr);
  cairo_set_source_rgb(cr, gray, gray, gray);
  cairo_set_line_width(cr, widthPt);
  cairo_move_to(cr, x1, y1);
  cairo_line_to(cr, x2, y2);
  cairo_stroke(cr);
  cairo_restore(cr);
}

void LPdfCanvas::FillRect(double x, double y, double width, double height, double gray) {
  if (impl_->cr == nullptr) NewPage();
  cairo_t* cr = impl_->cr;
  cairo_save(cr);
  cairo_set_source_rgb(cr, gray, gray, gray);
  cairo_rectangle(cr, x, y, width, height);
  cairo_fill(cr);
  cairo_restore(cr);
}

bool LPdfCanvas::Image(const std::string& path, double x, double y, double width, double height,
                       double* drawnHeight, std::string* error) {
  if (drawnHeight != nullptr) *drawnHeight = 0;
  cairo_surface_t* image = cairo_image_surface_create_from_png(path.c_str());
  int imageWidth = cairo_image_surface_get_width(image);
  int imageHeight = cairo_image_surface_get_height(image);
  if (cairo_surface_status(image) != CAIRO_STATUS_SUCCESS || imageWidth <= 0 || imageHeight <= 0) {
    cairo_surface_destroy(image);
    return LFail(error, "L'image « " + path + " » n'est pas une image PNG lisible.");
  }
  if (impl_->cr == nullptr) NewPage();
  double scale = std::min({width / imageWidth, height / imageHeight, 1.0});
  cairo_t* cr = impl_->cr;
  cairo_save(cr);
  cairo_translate(cr, x, y);
  cairo_scale(cr, scale, scale);
  cairo_set_source_surface(cr, image, 0, 0);
  cairo_paint(cr);
  cairo_restore(cr);
  cairo_surface_destroy(image);
  if (drawnHeight != nullptr) *drawnHeight = imageHeight * scale;
  return true;
}

// The style of the foot of a page.
static LTextStyle FootStyle() {
  LTextStyle foot;
  foot.sizePt = 7;
  foot.align = LTextAlign::kCenter;
  foot.gray = 0.35;
  return foot;
}

void LPdfCanvas::SetFootNote(std::string_view text) {
  impl_->footNote = ValidUtf8(text);
  footHeightPt_ = kPageNumberHeightPt;
  if (!impl_->footNote.empty()) footHeightPt_ += TextHeight(impl_->footNote, Right() - Left(), FootStyle()) + 4;
}

void LPdfCanvas::SetTitle(std::string_view title) { impl_->title = ValidUtf8(title); }
void LPdfCanvas::SetAuthor(std::string_view author) { impl_->author = ValidUtf8(author); }

bool LPdfCanvas::Finish(std::string& pdf, std::string* error) {
  pdf.clear();
  if (impl_->pages.empty()) NewPage();
  if (impl_->cr != nullptr) {
    cairo_destroy(impl_->cr);
    impl_->cr = nullptr;
  }
  cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(AppendToString, &pdf, widthPt_, heightPt_);
  cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATOR, "Kontavo");
  if (!impl_->title.empty()) cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_TITLE, impl_->title.c_str());
  if (!impl_->author.empty()) cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_AUTHOR, impl_->author.c_str());
  cairo_t* cr = cairo_create(surface);
  LTextStyle foot = FootStyle();
  int nPages = PageCount();
  for (int n = 0; n < nPages; ++n) {
    cairo_set_source_surface(cr, impl_->pages[static_cast<std::size_t>(n)], 0, 0);
    cairo_paint(cr);
    double y = Bottom() + 4;
    if (!impl_->footNote.empty()) {
      PangoLayout* note = impl_->Layout(impl_->footNote, Right() - Left(), foot);
      Impl::Show(cr, note, Left(), y, foot.gray);
      g_object_unref(note);
    }
    PangoLayout* layout =
        impl_->Layout("Page " + std::to_string(n + 1) + " / " + std::to_string(nPages), Right() - Left(), foot);
    Impl::Show(cr, layout, Left(), heightPt_ - kMarginPt - 10, foot.gray);
    g_object_unref(layout);
    cairo_show_page(cr);
  }
  cairo_destroy(cr);
  cairo_surface_finish(surface);
  cairo_status_t status = cairo_surface_status(surface);
  cairo_surface_destroy(surface);
  if (status != CAIRO_STATUS_SUCCESS) {
    pdf.clear();
    return LFail(error, std::string("Impossible d'écrire le PDF : ") + cairo_status_to_string(status));
  }
  return true;
}
