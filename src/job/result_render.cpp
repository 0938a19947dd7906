#include "job/result_render.h"

#include <algorithm>
#include <cctype>

namespace ent {

namespace {

const char kStyle[] =
    "body{font-family:sans-serif;margin:1.5em;color:#222}"
    "h1{font-size:1.3em}h2{font-size:1.1em;margin-top:1.6em}"
    "table{border-collapse:collapse;margin:.4em 0 1.2em}"
    "caption{text-align:left;font-weight:bold;padding:.3em 0}"
    "td,th{padding:.15em .6em;vertical-align:top;white-space:pre-wrap;text-align:left}"
    "th{border-bottom:1px solid #888}"
    "tr.b td{font-weight:bold}td.b{font-weight:bold}"
    "td:first-child,td.num{white-space:pre}"
    "td.num{text-align:right;font-variant-numeric:tabular-nums}"
    "table.posts td,table.posts th{border:1px solid #ccc}"
    ".note{color:#666}";

// Amounts and counts as the reports write them ("1,415.81", "-3", ".50"): aligned right.
bool LooksNumeric(const std::string& text) {
  size_t i = text.empty() || text[0] != '-' ? 0 : 1;
  bool digit = false, point = false;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (std::isdigit(static_cast<unsigned char>(c))) {
      digit = true;
    } else if (c == ',' && !point) {
    } else if (c == '.' && !point) {
      point = true;
    } else {
      return false;
    }
  }
  return digit;
}

// Characters shown, for lining up columns: UTF-8 continuation bytes take no place.
size_t Width(const std::string& text) {
  return static_cast<size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

// A cell's text on one line, led by its indentation.
std::string Flat(const ViewCell& cell) {
  std::string text(static_cast<size_t>(cell.indent), ' ');
  for (char c : cell.text) text += (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) ? ' ' : c;
  return text;
}

std::string Count(size_t n) {
  std::string digits = std::to_string(n), out;
  for (size_t i = 0; i < digits.size(); ++i) {
    if (i && (digits.size() - i) % 3 == 0) out += ',';
    out += digits[i];
  }
  return out;
}

bool AllHidden(const ViewTable& table) {
  return std::all_of(table.columns.begin(), table.columns.end(),
                     [](const ViewColumn& c) { return c.heading_hidden; });
}

std::string MoreRows(const ViewTable& table) {
  if (table.rows.size() >= table.total_rows) return "";
  return "showing the first " + Count(table.rows.size()) + " of " + Count(table.total_rows) + " rows";
}

std::string HtmlTable(const ViewTable& table) {
  std::string out = "<table>";
  if (!table.caption.empty()) out += "<caption>" + HtmlEscape(table.caption) + "</caption>";
  if (!AllHidden(table)) {
    out += "<thead><tr>";
    for (const ViewColumn& c : table.columns)
      out += "<th>" + (c.heading_hidden ? "" : HtmlEscape(c.name)) + "</th>";
    out += "</tr></thead>";
  }
  out += "<tbody>\n";
  for (const ViewRow& row : table.rows) {
    out += row.bold ? "<tr class=\"b\">" : "<tr>";
    for (const ViewCell& cell : row.cells) {
      std::string classes = LooksNumeric(cell.text) ? "num" : "";
      if (cell.bold && !row.bold) classes += classes.empty() ? "b" : " b";
      out += "<td";
      if (!classes.empty()) out += " class=\"" + classes + "\"";
      if (cell.indent > 0)
        out += " style=\"padding-left:calc(.6em + " + std::to_string(cell.indent) + "ch)\"";
      out += ">" + HtmlEscape(cell.text) + "</td>";
    }
    out += "</tr>\n";
  }
  out += "</tbody></table>\n";
  if (table.total_rows == 0) out += "<p class=\"note\">No rows.</p>\n";
  const std::string more = MoreRows(table);
  if (!more.empty()) out += "<p class=\"note\">" + more + "</p>\n";
  return out;
}

std::string TextTable(const ViewTable& table) {
  const size_t n = table.columns.size();
  std::vector<size_t> width(n, 0);
  const bool headings = !AllHidden(table);
  for (size_t c = 0; c < n; ++c)
    if (headings && !table.columns[c].heading_hidden) width[c] = Width(table.columns[c].name);
  for (const ViewRow& row : table.rows)
    for (size_t c = 0; c < n && c < row.cells.size(); ++c)
      width[c] = std::max(width[c], Width(Flat(row.cells[c])));
  size_t total = 0;
  for (size_t w : width) total += w;
  total += n ? 2 * (n - 1) : 0;

  auto line = [&](const std::vector<std::string>& cells, const std::vector<bool>& right) {
    std::string out;
    for (size_t c = 0; c < n; ++c) {
      const std::string& text = cells[c];
      const std::string pad(width[c] - Width(text), ' ');
      out += right[c] ? pad + text : text + (c + 1 < n ? pad : "");
      if (c + 1 < n) out += "  ";
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out + "\n";
  };

  std::string out;
  if (!table.caption.empty()) out += table.caption + "\n";
  if (headings) {
    std::vector<std::string> names;
    for (const ViewColumn& c : table.columns) names.push_back(c.heading_hidden ? "" : c.name);
    out += line(names, std::vector<bool>(n, false));
    out += std::string(total, '-') + "\n";
  }
  bool previous_bold = true;  // no rule above the first line
  for (const ViewRow& row : table.rows) {
    if (row.bold && !previous_bold) out += std::string(total, '-') + "\n";
    previous_bold = row.bold;
    std::vector<std::string> cells;
    std::vector<bool> right;
    for (size_t c = 0; c < n; ++c) {
      const ViewCell empty;
      const ViewCell& cell = c < row.cells.size() ? row.cells[c] : empty;
      cells.push_back(Flat(cell));
      right.push_back(LooksNumeric(cell.text));
    }
    out += line(cells, right);
  }
  if (table.total_rows == 0) out += "(no rows)\n";
  const std::string more = MoreRows(table);
  if (!more.empty()) out += "(" + more + ")\n";
  return out;
}

// A field for a spreadsheet: quoted when it must be, and never read as a formula.
std::string CsvField(std::string text) {
  const char first = text.empty() ? '\0' : text[0];
  if (first == '=' || first == '+' || first == '@' || first == '\t' || first == '\r' ||
      (first == '-' && !LooksNumeric(text)))
    text = "'" + text;
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

std::string ViewTitle(const ResultView& view) {
  std::string title = view.kind;
  for (size_t i = 0; i < view.attributes.size(); ++i)
    title += (i ? ", " : " (") + view.attributes[i].first + "=" + view.attributes[i].second;
  return view.attributes.empty() ? title : title + ")";
}

}  // namespace

std::string HtmlEscape(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string HtmlPageStart(const std::string& title) {
  return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
         "<meta name=\"viewport\" content=\"width=device-width\"><title>" +
         HtmlEscape(title) + "</title><style>" + kStyle + "</style></head>\n<body>\n";
}

std::string HtmlPageEnd() {
  return "</body></html>\n";
}

std::string RenderHtmlTables(const ResultView& view) {
  std::string out;
  if (view.kind != "rowset") out += "<p><b>" + HtmlEscape(ViewTitle(view)) + "</b></p>\n";
  for (const ViewTable& table : view.tables) out += HtmlTable(table);
  return out;
}

std::string RenderHtmlPage(const ResultView& view, const std::string& title) {
  std::string page = HtmlPageStart(title);
  // Scripts and outside resources are refused even if escaping were ever to miss something.
  page.insert(page.find("<title>"),
              "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
              "'unsafe-inline'\">");
  return page + "<h1>" + HtmlEscape(title) + "</h1>\n" + RenderHtmlTables(view) + HtmlPageEnd();
}

std::string RenderText(const ResultView& view) {
  std::string out;
  if (view.kind != "rowset") out += ViewTitle(view) + "\n\n";
  for (size_t t = 0; t < view.tables.size(); ++t) out += (t ? "\n" : "") + TextTable(view.tables[t]);
  return out;
}

std::string RenderCsv(const ResultView& view) {
  std::string out;
  for (size_t t = 0; t < view.tables.size(); ++t) {
    const ViewTable& table = view.tables[t];
    if (t) out += "\r\n";
    if (!table.caption.empty()) out += CsvField(table.caption) + "\r\n";
    for (size_t c = 0; c < table.columns.size(); ++c) out += (c ? "," : "") + CsvField(table.columns[c].name);
    out += "\r\n";
    for (const ViewRow& row : table.rows) {
      for (size_t c = 0; c < row.cells.size(); ++c)
        out += (c ? "," : "") +
               CsvField(std::string(static_cast<size_t>(row.cells[c].indent), ' ') + row.cells[c].text);
      out += "\r\n";
    }
  }
  return out;
}

}  // namespace ent
