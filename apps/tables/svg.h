#pragma once

#include <string>
#include <string_view>

/// Pictures in SVG that suit light and dark pages: a shape has a class, and the style gives classes
/// their colours.
namespace brivok::tables {

/// "&amp;" for "&" and so on, for HTML and SVG.
[[nodiscard]] std::string escaped(std::string_view text);

/// The rules of all pictures, for a page that has them in its text.
[[nodiscard]] std::string_view svgStyle();

enum class Anchor { Start, Middle, End };

/// A picture on a rounded sheet. Lengths are in pixels from the upper left corner.
class Svg {
public:
    /// The title says what the picture shows to those who cannot see it.
    Svg(double itsWidth, double itsHeight, std::string itsTitle);

    /// Classes are "win", "draw" and "loss"; "outline" in the colour of losses, and "grid" for thin
    /// lines.
    void rect(double x, double y, double width, double height, std::string_view itsClass,
              double opacity = 1);
    void line(double x1, double y1, double x2, double y2, std::string_view itsClass);
    /// `data` is in the language of SVG paths.
    void path(const std::string& data, std::string_view itsClass);
    /// Classes are "" for usual text, "title", "note" and "code".
    void text(double x, double y, std::string_view words, std::string_view itsClass = "",
              Anchor anchor = Anchor::Start);

    [[nodiscard]] const std::string& title() const { return name; }

    /// The picture as a file of its own.
    [[nodiscard]] std::string file() const { return withStyle(svgStyle()); }

    /// The picture for a page with svgStyle().
    [[nodiscard]] std::string inlined() const { return withStyle(""); }

private:
    [[nodiscard]] std::string withStyle(std::string_view style) const;

    double width;
    double height;
    std::string name;
    std::string shapes;
};

/// A number with at most one decimal, as in the files.
[[nodiscard]] std::string coordinate(double value);

}  // namespace brivok::tables
