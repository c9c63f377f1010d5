#include "installation.h"

#include "facts.h"
#include "sections.h"
#include "textforms.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include <fmt/format.h>

namespace kst::made {

namespace {

namespace fs = std::filesystem;

constexpr const char* invalidFiles = "InvalidAircraftCfgFiles.txt";
/// Every so many files one has a fault of its own, another belongs to a model set.
constexpr std::size_t faultEvery = 8;
constexpr std::size_t modelSetEvery = 12;

void write(const fs::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("could not write " + path.string());
    }
}

std::string pathText(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

/// Makes one configuration file after the other; their folders ascend in the order of a sorted walk.
class Maker {
public:
    Maker(const fs::path& folder, std::size_t sections) : folder_(folder), sections_(sections) {}

    void makeFile();
    void makeWhatIsNotFound() const;
    Expectation takeExpectation() { return std::move(expected_); }

private:
    struct Fault {
        const char* name;
        void (Maker::*make)(MadeFile& file);
    };
    static const std::vector<Fault>& faults();

    MadeFile nextFile(const char* endOfName, const std::string& below);
    std::string goodSections(MadeFile& file, const std::vector<SectionKind>& kinds);
    std::string header(std::size_t number) const;
    void finish(const MadeFile& file, const std::string& text, const char* name = "aircraft.cfg");
    void makeNormal(const std::string& atcModel);
    void makeModelSet();
    void refused(MadeFile& file, const std::string& headers, const std::string& reportLine);
    void count(const std::string& kind) { ++expected_.kinds[kind]; }

    void gap(MadeFile& file);
    void sameNumberTwice(MadeFile& file);
    void firstIsOne(MadeFile& file);
    void withoutNumber(MadeFile& file);
    void numberTooLarge(MadeFile& file);
    void noSections(MadeFile& file);
    void nothingInIt(MadeFile& file);
    void noModel(MadeFile& file);
    void unknownModel(MadeFile& file);
    void binaryJunk(MadeFile& file);
    void brokenUtf16(MadeFile& file);
    void modelOfNoSet(MadeFile& file);

    fs::path folder_;
    std::size_t sections_;
    Expectation expected_;
    std::size_t kindIndex_ = 0;
    std::size_t ivaoKindIndex_ = 0;
    std::size_t faultIndex_ = 0;
};

MadeFile Maker::nextFile(const char* endOfName, const std::string& below) {
    constexpr std::size_t filesPerFolder = 100;
    constexpr std::size_t deepEvery = 10;
    const std::size_t number = expected_.files;
    fs::path folder = folder_ / fmt::format("{:03}", number / filesPerFolder) / "SimObjects" / "Airplanes" /
                      fmt::format("{:06} {}", number, endOfName);
    if (number % deepEvery == 3) {
        folder /= "deep/er/and deeper/Still/and still deeper/below that";
    }
    MadeFile file;
    file.folder = below.empty() ? folder : folder / below;
    const Model& model = models()[number % models().size()];
    file.model = model.code;
    file.airliner = model.airliner;
    file.path = pathText((file.folder / "aircraft.cfg").make_preferred());
    ++expected_.files;
    return file;
}

std::string Maker::header(std::size_t number) const {
    switch (expected_.files % 4) {
    case 1:
        return fmt::format("[FLTSIM.{}]", number);
    case 2:
        return fmt::format("  [FltSim.{:02}]\t", number);
    default:
        return fmt::format("[fltsim.{}]", number);
    }
}

std::string Maker::goodSections(MadeFile& file, const std::vector<SectionKind>& kinds) {
    std::size_t& index = &kinds == &sectionKinds() ? kindIndex_ : ivaoKindIndex_;
    const bool backwards = expected_.files % 3 == 0;
    std::string text;
    for (std::size_t i = 0; i < sections_; ++i) {
        const SectionKind* kind = nullptr;
        do {
            kind = &kinds[index++ % kinds.size()];
        } while (kind->models != For::Any && file.airliner != (kind->models == For::Airliners));
        const std::size_t number = backwards ? sections_ - 1 - i : i;
        MadeSection section(file, expected_, number, header(number));
        kind->make(section);
        text += section.text();
        count(kind->name);
        ++expected_.sections;
    }
    // The same kind shall not always meet the same number.
    ++index;
    return text;
}

void Maker::finish(const MadeFile& file, const std::string& text, const char* name) {
    fs::create_directories(file.folder);
    for (const std::string& part : file.parts) {
        if (part.ends_with(".air")) {
            write(file.folder / part, "air");
        } else {
            fs::create_directory(file.folder / part);
        }
    }
    const auto form = static_cast<TextForm>(expected_.files % textFormCount);
    write(file.folder / name, fileBytes(text, form, expected_.files % 3 == 1));
}

void Maker::makeNormal(const std::string& atcModel) {
    constexpr const char* names[] = {"aircraft.cfg", "sim.cfg", "Aircraft.CFG"};
    const char* const name = names[expected_.files % 3];
    MadeFile file = nextFile("aircraft", {});
    file.path = pathText((file.folder / name).make_preferred());
    std::string value = file.model;
    if (!atcModel.empty()) {
        const auto fix =
            std::find_if(fixes().begin(), fixes().end(), [&](const Fix& f) { return f.wrong == atcModel; });
        file.model = fix->right;
        file.airliner = file.model == "B738";
        value = atcModel;
        expected_.reports["Fixes.txt"].push_back(
            fmt::format("Model fix: {} found in {} changed into {}", value, file.path, file.model));
    }
    const std::string sections = goodSections(file, sectionKinds());
    finish(file, fmt::format("// made\n\n{}[General]\nATC_Model = {} \nperformance=x\n", sections, value),
           name);
}

void Maker::makeModelSet() {
    const std::string model = models()[expected_.files % models().size()].code;
    const char* const wide = expected_.files % 2 == 0 ? "w" : "";
    MadeFile file = nextFile("set", fmt::format("IVAO_MTL/IVAO_{}{}", model, wide));
    file.ofModelSet = true;
    const std::string sections = goodSections(file, ivaoSectionKinds());
    finish(file, "[General]\natc_model=none of these\n" + sections);
}

void Maker::refused(MadeFile& file, const std::string& headers, const std::string& reportLine) {
    if (!reportLine.empty()) {
        expected_.reports[invalidFiles].push_back(fmt::format("{} contains {}", file.path, reportLine));
    }
    finish(file, "[General]\natc_model=" + file.model + "\n" + headers);
}

void Maker::gap(MadeFile& file) {
    refused(file, "[fltsim.0]\ntitle=a\n[fltsim.2]\ntitle=b\n", "non-consecutive [fltsim.x] numbers at .x=2");
}
void Maker::sameNumberTwice(MadeFile& file) {
    refused(file, "[fltsim.0]\n[fltsim.1]\n[fltsim.1]\n", "non-consecutive [fltsim.x] numbers at .x=1");
}
void Maker::firstIsOne(MadeFile& file) {
    refused(file, "[fltsim.2]\n[fltsim.1]\n", "non-consecutive [fltsim.x] numbers at .x=1");
}
void Maker::withoutNumber(MadeFile& file) {
    refused(file, "[fltsim.0]\n[fltsim.]\n", "a [fltsim.] section without a number");
}
void Maker::numberTooLarge(MadeFile& file) {
    refused(file, "[fltsim.0]\n[fltsim.99999999999]\n", {});
}
void Maker::noSections(MadeFile& file) {
    expected_.reports["AircraftCfgWithNoFltsimSection.txt"].push_back(file.path);
    refused(file, "//[fltsim.0]\n//title=x\n", {});
}

void Maker::nothingInIt(MadeFile& file) {
    expected_.reports["AircraftCfgWithNoFltsimSection.txt"].push_back(file.path);
    expected_.reports[invalidFiles].push_back("Line atc_model= is missing in [General] section of " +
                                              file.path);
    fs::create_directories(file.folder);
    write(file.folder / "aircraft.cfg", "");
}

void Maker::noModel(MadeFile& file) {
    expected_.reports[invalidFiles].push_back("Line atc_model= is missing in [General] section of " +
                                              file.path);
    finish(file, "[fltsim.0]\ntitle=x\n[General]\natc_model=\n");
}

void Maker::unknownModel(MadeFile& file) {
    expected_.reports["InvalidAircraftCodes.txt"].push_back(fmt::format("b738             in {}", file.path));
    finish(file, "[fltsim.0]\ntitle=x\n[General]\natc_model=b738\n");
}

void Maker::binaryJunk(MadeFile& file) {
    expected_.reports["AircraftCfgWithNoFltsimSection.txt"].push_back(file.path);
    expected_.reports[invalidFiles].push_back("Line atc_model= is missing in [General] section of " +
                                              file.path);
    std::string bytes = "junk";
    for (unsigned i = 0; i < 20'000; ++i) {
        // No line of it begins like a key: letters are left out.
        bytes.push_back(static_cast<char>(i * 37 % 61));
    }
    fs::create_directories(file.folder);
    write(file.folder / "aircraft.cfg", bytes);
}

void Maker::brokenUtf16(MadeFile& file) {
    fs::create_directories(file.folder);
    write(file.folder / "aircraft.cfg", std::string("\xFF\xFE[\0\x00\xD8x\0", 8));
}

void Maker::modelOfNoSet(MadeFile& file) {
    file.folder /= "ivao_x-csl/B738";
    const std::string path = pathText((file.folder / "aircraft.cfg").make_preferred());
    expected_.reports["InvalidAircraftCodes.txt"].push_back(fmt::format("{:16} in {}", "", path));
    finish(file, "[fltsim.0]\ntitle=B738 KLM\n[General]\natc_model=B738\n");
}

const std::vector<Maker::Fault>& Maker::faults() {
    static const std::vector<Fault> all = {{"gap", &Maker::gap},
                                           {"same number twice", &Maker::sameNumberTwice},
                                           {"first is one", &Maker::firstIsOne},
                                           {"section without number", &Maker::withoutNumber},
                                           {"number too large", &Maker::numberTooLarge},
                                           {"no sections", &Maker::noSections},
                                           {"empty file", &Maker::nothingInIt},
                                           {"no model", &Maker::noModel},
                                           {"unknown model", &Maker::unknownModel},
                                           {"binary junk", &Maker::binaryJunk},
                                           {"broken UTF-16", &Maker::brokenUtf16},
                                           {"model of no set", &Maker::modelOfNoSet}};
    return all;
}

void Maker::makeFile() {
    if (expected_.files % faultEvery == 1) {
        const std::size_t index = faultIndex_++ % (faults().size() + fixes().size());
        if (index < faults().size()) {
            count(faults()[index].name);
            MadeFile file = nextFile("faulty", {});
            (this->*faults()[index].make)(file);
        } else {
            count("corrected model");
            makeNormal(fixes()[index - faults().size()].wrong);
        }
    } else if (expected_.files % modelSetEvery == 2) {
        makeModelSet();
    } else {
        makeNormal({});
    }
}

/// Folders and files that a scan must pass over.
void Maker::makeWhatIsNotFound() const {
    constexpr std::size_t tooLong = 250;
    const std::string text = "[fltsim.0]\ntitle=must not be found\natc_parking_codes=KLM\n[General]\n"
                             "atc_model=B738\n";
    const fs::path hidden = folder_ / "000";
    const std::size_t room = tooLong - std::min(pathText(hidden).size() + 1, tooLong);
    for (const std::string& name :
         {std::string("my airports"), std::string(std::max<std::size_t>(room, 1), 'z')}) {
        const fs::path folder = hidden / name;
        fs::create_directories(folder / "model");
        fs::create_directories(folder / "texture");
        write(folder / ".air", "air");
        write(folder / "aircraft.cfg", text);
    }
    write(hidden / "aircraft.cfg.old", text);
    write(hidden / "my aircraft.cfg", text);
    fs::create_directory(hidden / "sim.cfg");
}

} // namespace

std::string ExpectedLivery::text() const {
    return fmt::format("{}\t{}\t{}\t{}\t{}", airline, model, title, regcode, cargo);
}

Expectation makeInstallation(const fs::path& folder, std::size_t files, std::size_t sections) {
    Maker maker(folder, sections);
    for (std::size_t i = 0; i < files; ++i) {
        maker.makeFile();
    }
    maker.makeWhatIsNotFound();
    return maker.takeExpectation();
}

void writeExpectation(const Expectation& expected, const fs::path& folder) {
    auto lists = expected.reports;
    for (const ExpectedLivery& livery : expected.liveries) {
        lists["LiveriesScanned.txt"].push_back(livery.text());
    }
    fs::create_directories(folder);
    for (auto& [name, lines] : lists) {
        std::sort(lines.begin(), lines.end());
        std::string text;
        for (const std::string& line : lines) {
            text += line + "\n";
        }
        write(folder / name, text);
    }
}

} // namespace kst::made
