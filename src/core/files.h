#pragma once

// Plain file work: the folder layout below the working directory, text files in any encoding, XML documents.

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <pugixml.hpp>

namespace kst {

/// Folders below the working directory, which is the install folder.
namespace folders {
inline const std::filesystem::path docs = "docs";
inline const std::filesystem::path input = "input";
inline const std::filesystem::path myRegcodes = input / "my_regcodes";
inline const std::filesystem::path output = "output";
inline const std::filesystem::path info = output / "info";
inline const std::filesystem::path errors = output / "errors";
inline const std::filesystem::path airports = "airports";
inline const std::filesystem::path myOrbx = airports / "my_ORBX";
inline const std::filesystem::path myThirdparty = airports / "my_thirdparty";
inline const std::filesystem::path learned = airports / "learned";
} // namespace folders

/// Creates every folder that the program writes to, where it is missing. Throws
/// std::filesystem::filesystem_error.
void lf_createFolders();

/// What the first two bytes of a text file say.
enum class TextEncoding : int {
    NoMark = 0,
    Unicode = 1,
    Unicode_big_endian = 2,
    UTF8_with_BOM = 3,
    UTF8_without_BOM = 4, ///< not produced by the detection
    none_found = 5        ///< the file could not be opened
};
TextEncoding detectEncoding(const std::filesystem::path& path);

/// Reads a text file of any of the encodings into lines of UTF-8 (plain bytes where the file has no mark),
/// without their line ends. Returns false on failure, which is logged or shown. `lines` is replaced.
bool gf_readExtTextFileToStringVector(const std::filesystem::path& path, std::vector<std::string>& lines);

enum class TextRead { Done, NotOpened, Failed };
/// The same, but as one text whose lines `takeTextLine` takes off: nothing is copied a second time. `text` is
/// replaced, and empty on failure. Once `stopped` says so, a long conversion ends with what it has.
TextRead readTextFile(const std::filesystem::path& path, std::string& text, bool (*stopped)() = nullptr);
/// Takes the next line off a text that is not empty: without its line end, a view into `rest`.
std::string_view takeTextLine(std::string_view& rest);

/// The decoding itself, for a file's content in memory. Throws std::runtime_error where UTF-16 cannot be
/// converted.
std::vector<std::string> decodeTextLines(std::string_view content, TextEncoding encoding);

/// A text file beyond this size is not read: none that the program knows comes near it.
inline constexpr std::size_t largestTextFile = 32 * 1024 * 1024;

/// Reads a whole regular file into `content`, byte by byte as it is. Gives the error, with `content` empty,
/// when it cannot be read, is no regular file or holds more than `largest` bytes.
std::error_code readFile(const std::filesystem::path& path, std::string& content, std::size_t largest);

/// Creates the file, writes the text, with a line end when `newline` is set. Returns whether it could open
/// the file.
bool writeTextFile(std::string_view text, const std::filesystem::path& path, bool newline);

/// Replaces the file's content as a whole: after a power cut it holds the old or the new content, never half.
/// Returns false, with the old content intact, when the new content could not be written.
bool replaceFile(const std::filesystem::path& path, std::string_view content);

/// The document as it is saved: UTF-8, two blanks of indent unless told otherwise.
std::string xmlText(const pugi::xml_document& document, const char* indent = "  ");

/// Saves the document by `replaceFile` and logs "\"{}\" saved", or "could not save to \"{}\"" and returns
/// false.
bool saveXml(const pugi::xml_document& document, const std::filesystem::path& path);

/// The number of regular files directly in the folder, 0 when the folder is absent.
std::size_t countFiles(const std::filesystem::path& folder);

} // namespace kst
