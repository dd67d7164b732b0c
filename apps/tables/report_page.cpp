#include "report_page.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace brivok::tables {
namespace {

/// The name of a section within a page, as usual for Markdown: "two-men-against-a-pawn".
std::string anchorOf(std::string_view heading) {
    std::string anchor;
    for (const char letter : heading) {
        anchor += letter == ' '
                      ? '-'
                      : static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return anchor;
}

/// Breaks lines at blanks after at most 100 columns.
std::string wrapped(std::string_view text) {
    constexpr std::size_t Width = 100;
    std::string result;
    std::size_t column = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (column != 0) {
            const bool breaks = column + 1 + end > Width;
            result += breaks ? '\n' : ' ';
            column = breaks ? 0 : column + 1;
        }
        result += text.substr(0, end);
        column += end;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

constexpr std::string_view PageStyle = R"(
  :root { color-scheme: light dark; --ink: #1d2733; --soft: #4c5561; --paper: #fff; --rule: #dcd8cf;
    --stripe: #f6f4ef; --accent: #2f6fb3; --light: #f0e6d2; --dark: #c8a678 }
  @media (prefers-color-scheme: dark) {
    :root { --ink: #e6ebf1; --soft: #b4bdc9; --paper: #0f1216; --rule: #2e353f; --stripe: #161b21;
      --accent: #7fb2ea; --light: #b9b1a1; --dark: #7d6a4e }
  }
  body { margin: 0 auto; padding: 24px 20px 80px; max-width: 1280px; color: var(--ink);
    background: var(--paper); font: 15px/1.5 system-ui, "DejaVu Sans", "Segoe UI", Helvetica, Arial, sans-serif }
  h1 { font-size: 30px; line-height: 1.2; margin: 16px 0 }
  h2 { font-size: 22px; margin: 56px 0 12px; padding-top: 12px; border-top: 1px solid var(--rule) }
  p { max-width: 76ch }
  a { color: var(--accent); text-decoration: none }
  a:hover { text-decoration: underline }
  code { font: 13px ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace }
  .wide { overflow-x: auto; margin: 18px 0 }
  table { border-collapse: collapse; font-size: 13.5px; font-variant-numeric: tabular-nums }
  th { text-align: left; color: var(--soft); font-weight: 600; border-bottom: 1px solid var(--rule) }
  th, td { padding: 4px 9px; white-space: nowrap }
  tr.first td { border-top: 1px solid var(--rule) }
  tbody tr:hover { background: var(--stripe) }
  .right { text-align: right }
  .chart { max-width: 100%; height: auto; display: block; margin: 18px 0 }
  details { border: 1px solid var(--rule); border-radius: 8px; margin: 8px 0; padding: 0 14px }
  summary { cursor: pointer; padding: 8px 0 }
  summary span { color: var(--soft) }
  figure { display: flex; gap: 20px; margin: 8px 0 18px; align-items: flex-start }
  figure .board { flex: none; width: 176px; height: 176px }
  figcaption p { margin: 0 0 8px }
  @media (max-width: 640px) { figure { flex-direction: column } }
  #board .light { fill: var(--light) } #board .dark { fill: var(--dark) }
  .board text { font: 1px "DejaVu Sans", "Segoe UI Symbol", "Noto Sans Symbols2", sans-serif;
    text-anchor: middle; stroke-width: .035px; paint-order: stroke }
  .board .w { fill: #fff; stroke: #222; stroke-width: .07px } .board .b { fill: #16191d; stroke: #16191d }
)";

/// The empty board, once on the page.
std::string boardSymbol() {
    std::string dark;
    for (int square = 0; square < 64; ++square) {
        if ((square / 8 + square) % 2 == 0) continue;
        dark += "M" + std::to_string(square % 8) + " " + std::to_string(square / 8) + "h1v1h-1z";
    }
    return "<svg width=\"0\" height=\"0\" style=\"position:absolute\"><symbol id=\"board\" "
           "viewBox=\"0 0 8 8\"><path class=\"light\" d=\"M0 0h8v8h-8z\"/><path class=\"dark\" "
           "d=\"" +
           dark + "\"/></symbol></svg>\n";
}

/// The sign of a man, the same for both colours.
std::string_view signOf(char letter) {
    switch (std::tolower(static_cast<unsigned char>(letter))) {
        case 'k': return "&#9818;&#xfe0e;";
        case 'q': return "&#9819;&#xfe0e;";
        case 'r': return "&#9820;&#xfe0e;";
        case 'b': return "&#9821;&#xfe0e;";
        case 'n': return "&#9822;&#xfe0e;";
        default: return "&#9823;&#xfe0e;";
    }
}

std::string diagram(std::string_view fen) {
    std::string men;
    int column = 0;
    int row = 0;
    for (const char letter : fen.substr(0, fen.find(' '))) {
        if (letter == '/') {
            ++row;
            column = 0;
        } else if (letter >= '1' && letter <= '8') {
            column += letter - '0';
        } else {
            const bool white = std::isupper(static_cast<unsigned char>(letter)) != 0;
            men += std::string("<text class=\"") + (white ? "w" : "b") + "\" x=\"" +
                   std::to_string(column) + ".5\" y=\"" + std::to_string(row) + ".86\">" +
                   std::string(signOf(letter)) + "</text>";
            ++column;
        }
    }
    return "<svg class=\"board\" viewBox=\"0 0 8 8\" role=\"img\" aria-label=\"" + escaped(fen) +
           "\"><use href=\"#board\"/>" + men + "</svg>";
}

}  // namespace

MarkdownPage::MarkdownPage(std::string_view title, std::string itsPictures)
    : pictures(std::move(itsPictures)), body("# " + std::string(title) + "\n") {}

std::string MarkdownPage::plain(std::string_view text) const {
    std::string result;
    for (const char letter : text) {
        if (letter == '<' || letter == '|' || letter == '*' || letter == '`') result += '\\';
        result += letter;
    }
    return result;
}

std::string MarkdownPage::code(std::string_view text) const {
    return "`" + std::string(text) + "`";
}

std::string MarkdownPage::link(std::string_view heading) const {
    return "[" + std::string(heading) + "](#" + anchorOf(heading) + ")";
}

std::string MarkdownPage::tableLink(std::string_view signature) const { return code(signature); }

void MarkdownPage::section(std::string_view heading) {
    body += "\n## " + std::string(heading) + "\n";
}

void MarkdownPage::paragraph(const std::string& text) { body += "\n" + wrapped(text) + "\n"; }

void MarkdownPage::picture(const Svg& svg, const std::string& fileName) {
    body += "\n![" + svg.title() + "](" + pictures + "/" + fileName + ")\n";
}

void MarkdownPage::grid(const std::vector<Column>& columns, const std::vector<Cells>& rows) {
    std::string head = "|";
    std::string rule = "|";
    for (const Column& column : columns) {
        head += " " + column.head + " |";
        rule += column.align == Align::Right ? " ---: |" : " --- |";
    }
    body += "\n" + head + "\n" + rule + "\n";
    for (const Cells& row : rows) {
        body += "|";
        for (const std::string& cell : row) body += " " + cell + (cell.empty() ? "|" : " |");
        body += "\n";
    }
}

void MarkdownPage::details(std::string_view signature, std::string_view men,
                           const std::vector<ShownPosition>& positions) {
    body += "\n<details><summary><code>" + std::string(signature) + "</code> " + std::string(men) +
            "</summary>\n";
    for (const ShownPosition& shown : positions) {
        body += "\n" + wrapped(shown.heading + ": " + code(shown.fen)) + "\n";
        // Escaped, since a line that begins with "1. " would become a list.
        std::string line = shown.line;
        if (const auto point = line.find('.'); point != std::string::npos) line.insert(point, "\\");
        if (!line.empty()) body += "\n" + wrapped(line) + "\n";
        if (!shown.note.empty()) body += "\n" + wrapped(shown.note) + "\n";
    }
    body += "\n</details>\n";
}

HtmlPage::HtmlPage(std::string_view title)
    : body(
          "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
          "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
          escaped(title) + "</title>\n<style>" + std::string(PageStyle) + std::string(svgStyle()) +
          "</style>\n</head>\n<body>\n" + boardSymbol() + "<h1>" + escaped(title) + "</h1>\n") {}

std::string HtmlPage::plain(std::string_view text) const { return escaped(text); }

std::string HtmlPage::code(std::string_view text) const {
    return "<code>" + escaped(text) + "</code>";
}

std::string HtmlPage::link(std::string_view heading) const {
    return "<a href=\"#" + anchorOf(heading) + "\">" + escaped(heading) + "</a>";
}

std::string HtmlPage::tableLink(std::string_view signature) const {
    return "<a href=\"#" + std::string(signature) + "\">" + code(signature) + "</a>";
}

void HtmlPage::section(std::string_view heading) {
    body += "<h2 id=\"" + anchorOf(heading) + "\">" + escaped(heading) + "</h2>\n";
}

void HtmlPage::paragraph(const std::string& text) { body += "<p>" + wrapped(text) + "</p>\n"; }

void HtmlPage::picture(const Svg& svg, const std::string&) { body += svg.inlined(); }

void HtmlPage::grid(const std::vector<Column>& columns, const std::vector<Cells>& rows) {
    const auto classOf = [&](std::size_t column) {
        return columns[column].align == Align::Right ? " class=\"right\"" : "";
    };
    body += "<div class=\"wide\"><table>\n<thead><tr>";
    for (std::size_t i = 0; i < columns.size(); ++i) {
        body += std::string("<th") + classOf(i) + ">" + escaped(columns[i].head) + "</th>";
    }
    body += "</tr></thead>\n<tbody>\n";
    for (const Cells& row : rows) {
        body += row.front().empty() ? "<tr>" : "<tr class=\"first\">";
        for (std::size_t i = 0; i < row.size(); ++i) {
            body += std::string("<td") + classOf(i) + ">" + row[i] + "</td>";
        }
        body += "</tr>\n";
    }
    body += "</tbody></table></div>\n";
}

void HtmlPage::details(std::string_view signature, std::string_view men,
                       const std::vector<ShownPosition>& positions) {
    body += "<details id=\"" + std::string(signature) + "\"><summary>" + code(signature) +
            " <span>" + escaped(men) + "</span></summary>\n";
    for (const ShownPosition& shown : positions) {
        body += "<figure>" + diagram(shown.fen) + "<figcaption><p><b>" + escaped(shown.heading) +
                "</b></p><p>" + code(shown.fen) + "</p>";
        if (!shown.line.empty()) body += "<p>" + wrapped(escaped(shown.line)) + "</p>";
        if (!shown.note.empty()) body += "<p>" + escaped(shown.note) + "</p>";
        body += "</figcaption></figure>\n";
    }
    body += "</details>\n";
}

std::string HtmlPage::text() const {
    // A link to a table opens its details.
    return body + R"(<script>
  const show = () => {
    const part = document.getElementById(location.hash.slice(1));
    if (part && part.tagName === "DETAILS") { part.open = true; part.scrollIntoView(); }
  };
  addEventListener("hashchange", show);
  show();
</script>
</body>
</html>
)";
}

}  // namespace brivok::tables
