// Reading a reference document with 500,000 registrations, beside the floor: pugixml's parse of the same file
// and nothing else. The counter "of floor" is the ratio of the two in the same run; "memory of document" is
// the peak memory that a process of its own needs for the reading beyond what it has before, over the size of
// the document.

#include "bench/support/besidefloor.h"
#include "catalogue/referencereader.h"
#include "catalogue/scramble.h"

#include <fstream>
#include <string>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>
#include <pugixml.hpp>

namespace {

using namespace kst;

constexpr int registrations = 500'000;
constexpr const char* modelCodes[] = {"A320", "B738", "A20N", "C172", "B77W", "E190"};
constexpr const char* airlineCodes[] = {"KLM", "SWR", "DLH", "AFR", "PVT", "BAW"};

/// As an XML writer puts a code into an attribute: the shifted characters include '<' and '>'.
std::string escaped(std::string_view code) {
    std::string text;
    for (const char c : code) {
        text += c == '<' ? "&lt;" : c == '>' ? "&gt;" : std::string(1, c);
    }
    return text;
}

std::string modelSection(const char* section, const char* element, const char* code) {
    return fmt::format("<{0}><{1} types=\"{2}\"/></{0}>\n", section, element, escaped(gf_encodeModel(code)));
}

/// A document as kestrane-data writes it, with all kinds of registrations.
void makeDocument(const std::filesystem::path& path) {
    std::ofstream file(path);
    file << "<?xml version=\"1.0\"?>\n<aircrafts>\n";
    for (const char* code : modelCodes) {
        file << "\t<aircraft types=\"" << escaped(gf_encodeModel(code)) << "\" />\n";
    }
    file << "</aircrafts>\n"
         << modelSection("high_performance", "hpf", "F16") << modelSection("heavy", "hvy", "B77W")
         << modelSection("large", "lar", "A320") << modelSection("buzjet", "bzj", "C56X")
         << modelSection("rotorcraft", "rot", "EC35") << modelSection("cargo_types", "cargo_type", "B77L");
    for (const char* section : {"ICAO_airlines", "cargo_operators"}) {
        file << fmt::format("<{0}><ICAO codes=\"{1}\"/></{0}>\n", section, escaped(gf_encodeAirline("KLM")));
    }
    file << "<simaddonsP3D><simaddonP3D arpts=\"LSZH\"/></simaddonsP3D>\n<dbase>\n";
    for (unsigned i = 0; i < registrations; ++i) {
        const auto letter = [i](unsigned by) { return static_cast<char>('A' + i / by % 26); };
        const std::string regcode = i % 3 == 0 ? fmt::format("N{}", i)
                                               : fmt::format("{}-{}{}{}{}", i % 3 == 1 ? "PH" : "D",
                                                             letter(1), letter(26), letter(676), i / 17576);
        file << fmt::format("\t<db reg=\"{}\" airl=\"{}\" type=\"{}\"", escaped(gf_encodeRegcode(regcode)),
                            escaped(gf_encodeAirline(airlineCodes[i % 6])),
                            escaped(gf_encodeModel(modelCodes[i / 7 % 6])));
        if (i % 50 == 0) {
            file << " cargo=\"true\"";
        }
        file << " />\n";
    }
    file << "</dbase>\n";
}

/// The largest resident size, in bytes, of a child process that does the work.
template <typename Work>
double peakOf(Work work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    rusage usage{};
    int status = 0;
    wait4(child, &status, 0, &usage);
    return status == 0 ? static_cast<double>(usage.ru_maxrss) * 1024.0 : 0.0;
}

void readReference(benchmark::State& state) {
    const WorkFolder folder("reference");
    const std::filesystem::path path = folder.path() / "document.xml";
    makeDocument(path);
    const auto read = [&path] {
        ReferenceTables tables;
        readReferenceFile(path, tables);
        if (tables.regcodeTable.size() != registrations) {
            std::abort();
        }
    };
    const auto parse = [&path] {
        pugi::xml_document document;
        if (!document.load_file(path.c_str())) {
            std::abort();
        }
    };
    const auto size = static_cast<double>(std::filesystem::file_size(path));
    const double before = peakOf([] {});
    state.counters["document MB"] = size / 1e6;
    state.counters["memory of document"] = (peakOf(read) - before) / size;
    state.counters["parse memory of document"] = (peakOf(parse) - before) / size;
    BesideFloor times(state);
    for (auto _ : state) {
        const double taken = processorSeconds(read);
        times.add(taken, processorSeconds(parse));
    }
    times.report("ms", 1e3);
    state.SetItemsProcessed(state.iterations() * registrations);
}
BENCHMARK(readReference)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
