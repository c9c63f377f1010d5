#include "scanner/bglfile.h"

#include <array>
#include <fstream>
#include <vector>

namespace kst {

namespace {

constexpr std::size_t headerBytes = 56;
constexpr std::size_t headerWords = headerBytes / BglWords::bytesPerWord;
constexpr std::size_t smallestFile = 15;
constexpr std::size_t smallestFileWords = 15;
constexpr std::size_t headerSizeAt = 1;
constexpr std::size_t sectionCountAt = 5;

constexpr std::size_t sectionBytes = 20;
constexpr std::size_t sectionWords = sectionBytes / BglWords::bytesPerWord;
constexpr std::uint32_t airportSection = 3;

constexpr std::uint32_t usualSubsectionBytes = 16;

constexpr std::uint16_t airportRecord = 60;
constexpr std::uint16_t extendedAirportRecord = 171;
constexpr std::size_t identifierAt = 10;

/// A head of this size holds the section table of nearly every file, and costs no more than a shorter one.
constexpr std::size_t headBytes = 4096;

bool holdsAirports(const BglWords& words, std::size_t firstSection, std::size_t sections) {
    for (std::size_t i = 0; i < sections; ++i) {
        if (words.word(firstSection + i * sectionWords) == airportSection) {
            return true;
        }
    }
    return false;
}

/// Reads what there is, at most as much as `bytes` holds.
std::span<const std::byte> readUpTo(std::ifstream& file, std::span<std::byte> bytes) {
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return bytes.first(static_cast<std::size_t>(file.gcount()));
}

/// A section table that goes on beyond the head, piece by piece: its length is what the file says.
bool laterSectionsHoldAirports(std::ifstream& file, std::size_t sections) {
    file.clear();
    file.seekg(0, std::ios::end);
    const auto fileBytes = static_cast<std::uint64_t>(static_cast<std::streamoff>(file.tellg()));
    if (fileBytes <= headerBytes + std::uint64_t{sectionBytes} * sections) {
        return false;
    }
    file.seekg(headerBytes);
    std::vector<std::byte> piece(sectionBytes * (64 * 1024 / sectionBytes));
    while (sections > 0) {
        const auto read =
            readUpTo(file, std::span(piece).first(std::min(piece.size(), sectionBytes * sections)));
        const std::size_t whole = read.size() / sectionBytes;
        if (whole == 0) {
            return false;
        }
        if (holdsAirports(BglWords(read), 0, whole)) {
            return true;
        }
        sections -= whole;
    }
    return false;
}

void decodeSection(const BglWords& d, std::size_t o, std::string_view path, const BglOutput& output,
                   BglBudget& budget) {
    while (o < d.size()) {
        budget.spend();
        const std::uint16_t id = d.recordId(o);
        const std::size_t words = d.recordSize(o) / BglWords::bytesPerWord;
        if (id == airportRecord || id == extendedAirportRecord) {
            if (const auto icao = lf_decodeIdentifierOrRegionCode(d.word(o + identifierAt))) {
                lf_readBglAirport(d, {o, words, id == extendedAirportRecord}, *icao, path, output, budget);
            }
        }
        if (words == 0) {
            return;
        }
        o += words;
    }
}

/// Nothing for a section that has no airports, or whose subsections have the longer form.
bool isReadable(const BglWords& d, std::size_t section) {
    constexpr std::uint32_t longerFlag = 0x10000;
    constexpr std::uint32_t baseFlag = 0x40000;
    constexpr unsigned shift = 14;
    const std::uint32_t subsectionBytes = ((d.word(section + 1) & longerFlag) | baseFlag) >> shift;
    return d.word(section) == airportSection && subsectionBytes == usualSubsectionBytes;
}

} // namespace

bool lf_bglHasAirports(const std::filesystem::path& path) {
    std::array<char, headBytes> buffer;
    std::ifstream file;
    file.rdbuf()->pubsetbuf(buffer.data(), buffer.size());
    file.open(path, std::ios::binary);
    // Fills the buffer by one call to the system, which is what this look costs beside the opening.
    if (!file.is_open() || file.peek() == std::ifstream::traits_type::eof()) {
        return false;
    }
    std::array<std::byte, headBytes> copy;
    const auto available = static_cast<std::size_t>(std::max<std::streamsize>(file.rdbuf()->in_avail(), 0));
    const auto head = readUpTo(file, std::span(copy).first(std::min(available, copy.size())));
    const BglWords words(head);
    const std::size_t sections = words.size() > sectionCountAt ? words.word(sectionCountAt) : 0;
    const std::uint64_t tableEnd = headerBytes + std::uint64_t{sectionBytes} * sections;
    if (head.size() < smallestFile || sections == 0) {
        return false;
    }
    return tableEnd < head.size() ? holdsAirports(words, headerWords, sections)
                                  : laterSectionsHoldAirports(file, sections);
}

void decodeBgl(const BglWords& d, std::string_view path, const BglOutput& output) {
    if (d.size() < smallestFileWords || d.word(headerSizeAt) != headerBytes) {
        return;
    }
    BglBudget budget(d.size());
    const std::size_t sections = d.word(sectionCountAt);
    for (std::size_t i = 0; i < sections; ++i) {
        const std::size_t section = headerWords + i * sectionWords;
        if (isReadable(d, section)) {
            const std::size_t subsection = d.word(section + 3) / BglWords::bytesPerWord;
            const std::size_t records = d.word(subsection + 2) / BglWords::bytesPerWord;
            decodeSection(d, records, path, output, budget);
        }
    }
}

} // namespace kst
