#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "svg.h"

namespace brivok::tables {

/// A position that a report shows.
struct ShownPosition {
    std::string heading;  ///< "White to move wins in 12 moves"
    std::string fen;
    std::string line;  ///< numbered moves
    std::string note;  ///< may be empty
};

/// A page that is written from top to bottom. Cells and paragraphs are made of what code(), link()
/// and plain() return.
class ReportPage {
public:
    enum class Align { Left, Right };
    struct Column {
        std::string head;
        Align align = Align::Right;
    };
    using Cells = std::vector<std::string>;

    ReportPage() = default;
    ReportPage(const ReportPage&) = delete;
    ReportPage& operator=(const ReportPage&) = delete;
    virtual ~ReportPage() = default;

    [[nodiscard]] virtual std::string plain(std::string_view text) const = 0;
    [[nodiscard]] virtual std::string code(std::string_view text) const = 0;
    /// To a section by its heading.
    [[nodiscard]] virtual std::string link(std::string_view heading) const = 0;
    /// To the details of a table, where the page can.
    [[nodiscard]] virtual std::string tableLink(std::string_view signature) const = 0;

    virtual void section(std::string_view heading) = 0;
    virtual void paragraph(const std::string& text) = 0;
    virtual void picture(const Svg& svg, const std::string& fileName) = 0;
    virtual void grid(const std::vector<Column>& columns, const std::vector<Cells>& rows) = 0;
    /// A part that opens on demand.
    virtual void details(std::string_view signature, std::string_view men,
                         const std::vector<ShownPosition>& positions) = 0;

    /// The whole page.
    [[nodiscard]] virtual std::string text() const = 0;
};

/// Markdown, with the pictures in files of a folder.
class MarkdownPage : public ReportPage {
public:
    /// `pictures` is the way from the page to the folder: "tables".
    MarkdownPage(std::string_view title, std::string itsPictures);

    [[nodiscard]] std::string plain(std::string_view text) const override;
    [[nodiscard]] std::string code(std::string_view text) const override;
    [[nodiscard]] std::string link(std::string_view heading) const override;
    [[nodiscard]] std::string tableLink(std::string_view signature) const override;
    void section(std::string_view heading) override;
    void paragraph(const std::string& text) override;
    void picture(const Svg& svg, const std::string& fileName) override;
    void grid(const std::vector<Column>& columns, const std::vector<Cells>& rows) override;
    void details(std::string_view signature, std::string_view men,
                 const std::vector<ShownPosition>& positions) override;
    [[nodiscard]] std::string text() const override { return body; }

private:
    std::string pictures;
    std::string body;
};

/// HTML that needs no other file, with diagrams of the positions.
class HtmlPage : public ReportPage {
public:
    explicit HtmlPage(std::string_view title);

    [[nodiscard]] std::string plain(std::string_view text) const override;
    [[nodiscard]] std::string code(std::string_view text) const override;
    [[nodiscard]] std::string link(std::string_view heading) const override;
    [[nodiscard]] std::string tableLink(std::string_view signature) const override;
    void section(std::string_view heading) override;
    void paragraph(const std::string& text) override;
    void picture(const Svg& svg, const std::string& fileName) override;
    void grid(const std::vector<Column>& columns, const std::vector<Cells>& rows) override;
    void details(std::string_view signature, std::string_view men,
                 const std::vector<ShownPosition>& positions) override;
    [[nodiscard]] std::string text() const override;

private:
    std::string body;
};

}  // namespace brivok::tables
