#include "sentlog.h"

#include <fmt/format.h>
#include <stdexcept>

namespace kst::standin {

SentLog::SentLog(const std::filesystem::path& path) : out_(path, std::ios::binary) {
    if (!out_) {
        throw std::runtime_error(fmt::format("cannot write the record {}", path.string()));
    }
    out_ << "time,hexid,callsign,registration,type,lat,lon,alt_ft,gs_kt,track_deg,on_ground\n";
}

void SentLog::add(double wallSeconds, const TrafficReport& report) {
    out_ << fmt::format("{:.3f},{},{},{},{},{:.6f},{:.6f},{:.0f},{:.1f},", wallSeconds, report.hexid,
                        report.callsign, report.registration, report.type, report.position.lat,
                        report.position.lon, report.altFt, report.gsKt);
    if (report.trackDeg) {
        out_ << fmt::format("{:.1f}", *report.trackDeg);
    }
    // Whole lines at once: a test reads along.
    out_ << (report.onGround ? ",1\n" : ",0\n") << std::flush;
}

} // namespace kst::standin
