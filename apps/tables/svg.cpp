#include "svg.h"

#include <array>
#include <cmath>
#include <utility>

namespace brivok::tables {
namespace {

constexpr std::string_view Style = R"(
  .chart .paper { fill: #fbfaf7; stroke: #dcd8cf }
  .chart .win { fill: #2f6fb3 }
  .chart .draw { fill: #d5d0c4 }
  .chart .loss { fill: #c9974a }
  .chart .grid { fill: none; stroke: #8a8577; stroke-width: 1 }
  .chart .outline { fill: none; stroke: #c9974a; stroke-width: 1.8 }
  .chart text { font: 13px system-ui, "DejaVu Sans", "Segoe UI", Helvetica, Arial, sans-serif; fill: #1d2733 }
  .chart .title { font-weight: 600; font-size: 14px }
  .chart .note { fill: #4c5561; font-size: 12px }
  .chart .code { font: 13px ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace }
  @media (prefers-color-scheme: dark) {
    .chart .paper { fill: #14181e; stroke: #2e353f }
    .chart .win { fill: #5b9ade }
    .chart .draw { fill: #3d4550 }
    .chart .grid { stroke: #8b94a1 }
    .chart text { fill: #eef2f6 }
    .chart .note { fill: #b4bdc9 }
  }
)";

std::string attribute(std::string_view name, std::string_view value) {
    return value.empty() ? "" : " " + std::string(name) + "=\"" + std::string(value) + "\"";
}

std::string attribute(std::string_view name, double value) {
    return attribute(name, coordinate(value));
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    for (const char letter : text) {
        switch (letter) {
            case '&': result += "&amp;"; break;
            case '<': result += "&lt;"; break;
            case '>': result += "&gt;"; break;
            case '"': result += "&quot;"; break;
            default: result += letter;
        }
    }
    return result;
}

std::string_view svgStyle() { return Style; }

std::string coordinate(double value) {
    const auto tenths = std::llround(value * 10);
    std::string text = std::to_string(tenths / 10);
    if (tenths < 0 && tenths > -10) text.insert(0, "-");
    if (tenths % 10 != 0) text += "." + std::to_string(std::abs(tenths % 10));
    return text;
}

Svg::Svg(double itsWidth, double itsHeight, std::string itsTitle)
    : width(itsWidth), height(itsHeight), name(std::move(itsTitle)) {}

void Svg::rect(double x, double y, double itsWidth, double itsHeight, std::string_view itsClass,
               double opacity) {
    const std::string percent = std::to_string(std::lround(opacity * 100)) + "%";
    const std::string faded = opacity < 1 ? attribute("opacity", percent) : "";
    shapes += "<rect" + attribute("class", itsClass) + attribute("x", x) + attribute("y", y) +
              attribute("width", itsWidth) + attribute("height", itsHeight) + faded + "/>\n";
}

void Svg::line(double x1, double y1, double x2, double y2, std::string_view itsClass) {
    path("M" + coordinate(x1) + " " + coordinate(y1) + "L" + coordinate(x2) + " " + coordinate(y2),
         itsClass);
}

void Svg::path(const std::string& data, std::string_view itsClass) {
    shapes += "<path" + attribute("class", itsClass) + attribute("d", data) + "/>\n";
}

void Svg::text(double x, double y, std::string_view words, std::string_view itsClass,
               Anchor anchor) {
    constexpr std::array<std::string_view, 3> Anchors = {"", "middle", "end"};
    shapes += "<text" + attribute("class", itsClass) + attribute("x", x) + attribute("y", y) +
              attribute("text-anchor", Anchors[static_cast<std::size_t>(anchor)]) + ">" +
              escaped(words) + "</text>\n";
}

std::string Svg::withStyle(std::string_view style) const {
    const std::string w = coordinate(width);
    const std::string h = coordinate(height);
    return R"(<svg xmlns="http://www.w3.org/2000/svg" class="chart" width=")" + w + "\" height=\"" +
           h + "\" viewBox=\"0 0 " + w + " " + h + "\" role=\"img\" aria-label=\"" + escaped(name) +
           "\">\n<title>" + escaped(name) + "</title>\n" +
           (style.empty() ? "" : "<style>" + std::string(style) + "</style>\n") +
           R"(<rect class="paper" x="0.5" y="0.5" width=")" + coordinate(width - 1) +
           "\" height=\"" + coordinate(height - 1) + "\" rx=\"10\"/>\n" + shapes + "</svg>\n";
}

}  // namespace brivok::tables
