#include "core/xmlsection.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace kst {

namespace {

enum class Markup { Start, End, Empty, Comment, Instruction, Unreadable };

struct Tag {
    Markup kind = Markup::Unreadable;
    std::size_t begin = 0;
    std::size_t end = 0; ///< behind its last character
};

Tag endsWith(std::string_view text, std::size_t begin, std::string_view last, Markup kind) {
    const std::size_t found = text.find(last, begin);
    return found == std::string_view::npos ? Tag{} : Tag{kind, begin, found + last.size()};
}

/// The position of the '>' that ends a tag, outside quotes, looked for character by character.
std::size_t carefulTagEnd(std::string_view text, std::size_t at) {
    for (; at < text.size() && text[at] != '>'; ++at) {
        if (text[at] == '"' || text[at] == '\'') {
            at = text.find(text[at], at + 1);
            if (at == std::string_view::npos) {
                return at;
            }
        }
    }
    return at < text.size() ? at : std::string_view::npos;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// The same at the speed at which nearly every tag lets itself be read. Its first '>' is its end when the
/// last double quote before it closes a value: that one does not follow an equals sign.
std::size_t tagEnd(std::string_view text, std::size_t begin) {
    const std::size_t end = text.find('>', begin);
    if (end == std::string_view::npos) {
        return end;
    }
    const std::string_view inside = text.substr(begin, end - begin);
    if (inside.find('\'') != std::string_view::npos) {
        return carefulTagEnd(text, begin);
    }
    std::size_t at = inside.size();
    while (at > 0 && inside[at - 1] != '"') {
        --at;
    }
    if (at == 0) {
        return end;
    }
    --at;
    while (at > 0 && isBlank(inside[at - 1])) {
        --at;
    }
    return at > 0 && inside[at - 1] == '=' ? carefulTagEnd(text, begin) : end;
}

/// Where the next markup begins, mostly right behind a line end.
std::size_t nextMarkup(std::string_view text, std::size_t at) {
    while (at < text.size() && isBlank(text[at])) {
        ++at;
    }
    return at < text.size() && text[at] == '<' ? at : text.find('<', at);
}

Tag tagAt(std::string_view text, std::size_t begin) {
    const char second = begin + 1 < text.size() ? text[begin + 1] : '\0';
    if (second == '?') {
        return endsWith(text, begin, "?>", Markup::Instruction);
    }
    if (second == '!') {
        return text.substr(begin).starts_with("<!--") ? endsWith(text, begin, "-->", Markup::Comment) : Tag{};
    }
    const std::size_t last = tagEnd(text, begin);
    if (last == std::string_view::npos) {
        return {};
    }
    const Markup kind = second == '/' ? Markup::End : text[last - 1] == '/' ? Markup::Empty : Markup::Start;
    return {kind, begin, last + 1};
}

/// The name in a start tag.
std::string_view nameOf(std::string_view text, const Tag& tag) {
    const std::string_view inside = text.substr(tag.begin + 1, tag.end - tag.begin - 1);
    return inside.substr(0, inside.find_first_of(" \t\r\n/>"));
}

/// A declaration of another encoding than UTF-8.
bool declaresOther(std::string_view instruction) {
    std::string lower(instruction);
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower.find("encoding") != std::string::npos && lower.find("utf-8") == std::string::npos;
}

/// Walks over the tags and remembers where the section lies.
class Walk {
public:
    Walk(std::string_view text, std::string_view name, std::size_t pieceSize)
        : text_(text), name_(name), pieceSize_(pieceSize) {}

    /// False when the walk is at its end: the section is complete, or the text is not for us.
    bool take(const Tag& tag) {
        switch (tag.kind) {
        case Markup::Start:
            if (depth_++ == 0 && nameOf(text_, tag) == name_) {
                open(tag.end);
            }
            return true;
        case Markup::End:
            if (depth_-- == 0) {
                return false;
            }
            if (inside_ && depth_ == 0) {
                close(tag.begin);
                return false;
            }
            childEnded(tag.end);
            return true;
        case Markup::Empty:
            if (depth_ == 0 && nameOf(text_, tag) == name_) {
                open(tag.end);
                close(tag.end);
                return false;
            }
            childEnded(tag.end);
            return true;
        case Markup::Comment:
        case Markup::Instruction:
            return true;
        case Markup::Unreadable:
            break;
        }
        return false;
    }

    std::optional<XmlSection> result() {
        return complete_ ? std::optional(std::move(section_)) : std::nullopt;
    }

private:
    void open(std::size_t at) {
        inside_ = true;
        section_.begin = at;
        section_.cuts.push_back(at);
    }
    void close(std::size_t at) {
        complete_ = true;
        section_.end = at;
        section_.cuts.push_back(at);
    }
    void childEnded(std::size_t at) {
        if (!inside_ || depth_ != 1) {
            return;
        }
        ++section_.children;
        if (at - section_.cuts.back() >= pieceSize_) {
            section_.cuts.push_back(at);
        }
    }

    std::string_view text_;
    std::string_view name_;
    std::size_t pieceSize_;
    std::size_t depth_ = 0;
    bool inside_ = false;
    bool complete_ = false;
    XmlSection section_;
};

} // namespace

std::optional<XmlSection> findXmlSection(std::string_view text, std::string_view name,
                                         std::size_t pieceSize) {
    if (text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    Walk walk(text, name, pieceSize);
    for (std::size_t at = nextMarkup(text, 0); at != std::string_view::npos;) {
        const Tag tag = tagAt(text, at);
        if (tag.kind == Markup::Instruction && declaresOther(text.substr(tag.begin, tag.end - tag.begin))) {
            return std::nullopt;
        }
        if (!walk.take(tag)) {
            break;
        }
        at = nextMarkup(text, tag.end);
    }
    return walk.result();
}

pugi::xml_parse_result parseAroundSection(std::string_view text, const XmlSection& section,
                                          pugi::xml_document& document) {
    std::string around(text.substr(0, section.begin));
    around += text.substr(section.end);
    return document.load_buffer(around.data(), around.size());
}

std::vector<XmlSection> partsOf(const XmlSection& section, std::size_t count) {
    const std::size_t pieces = section.cuts.size() - 1;
    std::vector<XmlSection> parts;
    for (std::size_t i = 0, first = 0; i < count; ++i) {
        const std::size_t last = pieces * (i + 1) / count;
        if (last > first) {
            const auto cut = section.cuts.begin();
            parts.push_back(
                {section.cuts[first],
                 section.cuts[last],
                 {cut + static_cast<std::ptrdiff_t>(first), cut + static_cast<std::ptrdiff_t>(last) + 1},
                 section.children});
            first = last;
        }
    }
    return parts;
}

pugi::xml_parse_result parseSection(std::string& text, const XmlSection& section,
                                    const std::function<void(const pugi::xml_node&)>& take) {
    constexpr unsigned int parsePiece = pugi::parse_default | pugi::parse_fragment;
    pugi::xml_document document;
    pugi::xml_parse_result result;
    result.status = pugi::status_ok;
    for (std::size_t i = 1; i < section.cuts.size() && result; ++i) {
        result = document.load_buffer_inplace(text.data() + section.cuts[i - 1],
                                              section.cuts[i] - section.cuts[i - 1], parsePiece,
                                              pugi::encoding_utf8);
        if (result) {
            take(document);
        }
    }
    return result;
}

} // namespace kst
