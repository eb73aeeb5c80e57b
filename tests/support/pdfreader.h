// Reading printed PDFs back with poppler's tools, as a person's PDF reader would see them, and
// keeping a PNG rendering of each page in the test output for a person to look at.
#pragma once

#include <string>

// The text of the PDF (pdftotext -layout); "" when it cannot be read.
std::string LPdfText(const std::string& path);
// The pdfinfo field ("Pages", "Page size", "Title", ...) without its label; "" when absent.
std::string LPdfInfo(const std::string& path, const std::string& field);
// pdffonts' table rows (one a font), without the two heading lines.
std::string LPdfFontRows(const std::string& path);
// Renders every page at 60 dpi to "<output>/<name>-<n>.png", output being $KONTAVO_TEST_OUTPUT
// or the folder "output" of the current folder; returns the number of files written.
int LKeepPdfRendering(const std::string& path, const std::string& name);
