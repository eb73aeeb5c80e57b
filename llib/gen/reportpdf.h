// Any report of the report table as a printed PDF: the title and its period line at the top, a
// table whose first column holds the labels (indented by their level, with the detail text after
// them) and one right-aligned column per amount column, headings and totals in bold, over as
// many pages as the rows need with the column headings repeated and "Page n / m" at the foot.
// Amount columns are as wide as their widest cell; the labels take what is left.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/pdfcanvas.h"
#include "llib/gen/reporttable.h"

// Prints table into pdf on paper; footNote (may be empty) is printed small at the foot of every
// page (the business's name). false with a message in error (may be null) when the PDF could
// not be written; pdf is then empty.
[[nodiscard]] bool LReportWritePdf(const LReportTable& table, const LReportStyle& style, LPaperSize paper,
                                   std::string_view footNote, std::string& pdf, std::string* error);
