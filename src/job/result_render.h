// The forms a person reads a result in: an HTML page, a plain-text table and CSV, all from one
// ResultView (report/result_view.h), so that they agree on the display markers:
//   bold lines   HTML: the row's cells in bold; text: a rule above a bold line that follows a plain one
//   indentation  HTML: the cell's left padding grows by n character widths; text and CSV: n blanks
//   hide_ names  HTML and text: an empty heading (no heading line at all when every one is hidden);
//                CSV keeps the names, since a spreadsheet needs them to tell the columns apart
// Every text from the document is escaped for the form it lands in; nothing in it is ever markup or
// a formula.
#pragma once

#include <string>
#include <string_view>

#include "job/result_view.h"

namespace ent {

// Escapes & < > " ' for HTML text and double-quoted attribute values.
std::string HtmlEscape(std::string_view text);

// The start of an HTML page with the shared style (no scripts), and its end.
std::string HtmlPageStart(const std::string& title);
std::string HtmlPageEnd();

// The view's tables as an HTML fragment, to sit inside a page.
std::string RenderHtmlTables(const ResultView& view);
// A whole page for one document; it forbids scripts and outside resources by its own policy.
std::string RenderHtmlPage(const ResultView& view, const std::string& title);

std::string RenderText(const ResultView& view);
std::string RenderCsv(const ResultView& view);

}  // namespace ent
