#pragma once

// The kinds of sections that an installation is made of.

#include "installation.h"

#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace kst::made {

/// The file that sections are written for.
struct MadeFile {
    std::filesystem::path folder;
    std::string path;            ///< as the scan will name it
    std::string model;           ///< valid model code of its sections
    bool airliner = false;       ///< large or heavy
    bool ofModelSet = false;     ///< of the IVAO model sets
    std::set<std::string> parts; ///< subfolders and, ending in ".air", files that must exist
};

/// One section while it is made: its text, and what it is to come to.
class MadeSection {
public:
    MadeSection(MadeFile& file, Expectation& expected, std::size_t number, std::string header);

    void key(const std::string& name, const std::string& value);
    void line(const std::string& text);
    /// The title, and the keys of parts that exist, or of which one does not.
    void begin(const std::string& title, const std::string& missing = {});
    void begin() { begin(title_); }

    const std::string& title() const { return title_; }
    void setTitle(const std::string& title) { title_ = title; }
    const MadeFile& file() const { return file_; }
    const std::string& header() const { return header_; }
    const std::string& text() const { return text_; }

    /// The section becomes this livery, but for what is known of its registration.
    void becomes(const std::string& airline, const std::string& regcode, bool cargo = false);
    /// The section is reported with "path header text".
    void incomplete(const std::string& text);
    void report(const std::string& file, const std::string& line);
    void leaveOut(const std::string& title) { expected_.unwantedTitles.push_back(title); }
    /// A title that another section before this one has; empty when there is none.
    std::string takenTitle() const;
    /// "path header", as most reports begin.
    std::string place() const;

private:
    MadeFile& file_;
    Expectation& expected_;
    std::size_t number_;
    std::string header_;
    std::string title_;
    std::string text_;
};

enum class For { Any, Airliners, Others };

struct SectionKind {
    const char* name;
    For models;
    void (*make)(MadeSection& section);
};

const std::vector<SectionKind>& sectionKinds();
/// Sections of the IVAO model sets.
const std::vector<SectionKind>& ivaoSectionKinds();

} // namespace kst::made
