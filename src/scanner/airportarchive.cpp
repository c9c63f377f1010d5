#include "scanner/airportarchive.h"

#include "catalogue/referencetables.h"
#include "core/files.h"
#include "parking/airportfile.h"
#include "platform/paths.h"
#include "scanner/scanreport.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

#include <fmt/format.h>

namespace kst {

std::atomic<bool> scanFoundAirports{false};

namespace {

namespace fs = std::filesystem;

constexpr std::string_view simaddon = "simaddon";
constexpr std::string_view unknownPublisher = "unknown";
constexpr std::size_t identifierLength = 4;

/// Which task wrote each file last, so that of several files with one airport the same one wins in every
/// scan, whichever thread is faster. A file's shelf is locked while it is written; files of other shelves are
/// written at the same time.
class LastWriters {
public:
    void clear() {
        for (Shelf& shelf : shelves_) {
            const std::lock_guard guard(shelf.lock);
            shelf.orders.clear();
        }
    }

    /// Writes unless a later one has been here. Returns what `write` does, true when it is not needed.
    bool write(const fs::path& file, std::size_t order, const std::function<bool()>& write) {
        const std::string name = platform::utf8FromPath(file);
        Shelf& shelf = shelves_[std::hash<std::string>{}(name) % shelves_.size()];
        const std::lock_guard guard(shelf.lock);
        std::size_t& last = shelf.orders[name];
        if (last > order) {
            return true;
        }
        last = order;
        return write();
    }

private:
    struct Shelf {
        std::mutex lock;
        std::unordered_map<std::string, std::size_t> orders;
    };
    std::array<Shelf, 16> shelves_;
};

LastWriters lastWriters;
std::mutex linkLock; ///< held while an airport is looked up in the archive and linked

bool writeLink(const fs::path& folder, const std::string& icao, const std::string& archivePath,
               std::size_t order) {
    const fs::path file = folder / (icao + ".txt");
    const bool written =
        lastWriters.write(file, order, [&] { return writeTextFile(archivePath, file, true); });
    if (!written) {
        lf_scanLogLine(fmt::format("{}Writing {} did not succeed", "===> ", platform::utf8FromPath(file)));
    }
    return written;
}

bool lf_linkSimaddon(const AirportFile& airport, std::size_t order) {
    if (!referenceTables().simaddonAirports.contains(airport.icao)) {
        lf_scanLogLine(fmt::format("{} does not exist as simaddon", airport.icao));
        return false;
    }
    const std::string archivePath = fmt::format("archive/simaddon/{}.xml", airport.icao);
    if (!writeLink(folders::myOrbx, airport.icao, archivePath, order)) {
        return false;
    }
    lf_scanLogLine(fmt::format("{} airport {} linked to {}", simaddon, airport.icao, archivePath));
    return true;
}

/// The number of stands in the archived file; nothing when the publisher has no such airport there.
std::optional<int> archivedStands(const std::string& publisher, const std::string& icao) {
    for (const auto& [name, items] : referenceTables().thirdPartyAirports) {
        if (name != publisher) {
            continue;
        }
        for (const std::string& item : items) {
            if (item.starts_with(icao)) {
                int count = 0;
                std::from_chars(item.data() + identifierLength, item.data() + item.size(), count);
                return count;
            }
        }
    }
    return std::nullopt;
}

bool lf_linkThirdParty(const std::string& publisher, const AirportFile& airport, int& archivedCount,
                       std::size_t order) {
    const auto stands = archivedStands(publisher, airport.icao);
    if (!stands) {
        lf_scanLogLine(fmt::format("thirdparty {} {} does not exist", publisher, airport.icao));
        return false;
    }
    archivedCount = *stands;
    std::string folder;
    for (const char character : publisher) {
        folder += character == ' ' ? std::string("%20") : std::string(1, character);
    }
    const std::string archivePath = fmt::format("archive/thirdparty/{}/{}.xml", folder, airport.icao);
    if (!writeLink(folders::myThirdparty, airport.icao, archivePath, order)) {
        return false;
    }
    lf_scanLogLine(fmt::format("thirdparty airport {} linked to {}", airport.icao, archivePath));
    return true;
}

void lf_generateApf(AirportFile& airport, std::size_t order) {
    const std::size_t count = airport.stands.size();
    if (count == 0) {
        return;
    }
    const fs::path folder = airport.publisher == simaddon ? folders::myOrbx : folders::myThirdparty;
    const std::string name = airport.icao + ".xml";
    std::string line = fmt::format("Generated {}: {} position{}", name, count, count > 1 ? "s" : "");
    if (const auto helipads = std::count_if(airport.stands.begin(), airport.stands.end(),
                                            [](const ParkPos& stand) { return stand.heli; });
        helipads > 0) {
        line += fmt::format(", of which {} helipad{}", helipads, helipads == 1 ? "" : "s");
    }
    lf_scanLogLine(line);
    std::sort(airport.stands.begin(), airport.stands.end(),
              [](const ParkPos& a, const ParkPos& b) { return a.id < b.id; });
    fs::create_directories(folder);
    const fs::path file = folder / name;
    if (!lastWriters.write(file, order, [&] { return gf_saveApf(airport, file, ApfMode::Archive); })) {
        lf_scanLogLine(fmt::format("{}Generating {} did not succeed", "===> ", platform::utf8FromPath(file)));
        return;
    }
    scanFoundAirports = true;
}

} // namespace

void beginArchive() {
    lastWriters.clear();
}

bool lf_linkArchived(AirportFile& airport, int& archivedCount, const SceneryFile& file) {
    const std::lock_guard guard(linkLock);
    archivedCount = 0;
    airport.BGLpath = file.path;
    airport.publisher = file.publisher;
    if (airport.publisher == unknownPublisher) {
        return false;
    }
    const bool linked = airport.publisher == simaddon
                            ? lf_linkSimaddon(airport, file.order)
                            : lf_linkThirdParty(airport.publisher, airport, archivedCount, file.order);
    if (linked) {
        scanFoundAirports = true;
    }
    return linked;
}

void lf_finishScannedAirport(AirportFile& airport, bool linked, int archivedCount, std::size_t order) {
    const auto count = static_cast<std::int64_t>(airport.stands.size());
    const bool isSimaddon = airport.publisher == simaddon;
    if (count > archivedCount && !isSimaddon) {
        lf_scanLogLine(fmt::format("{}{} has {} parkpos while archived one has {}", "===> ", airport.icao,
                                   count, archivedCount));
    }
    if (!linked || (count > archivedCount && !isSimaddon)) {
        lf_generateApf(airport, order);
    }
}

} // namespace kst
