#include "sections.h"

#include "facts.h"

#include <fmt/format.h>

namespace kst::made {

namespace {

constexpr const char* invalidAirlines = "InvalidAirlineCodes.txt";

void goodAirline(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "KLM");
    s.becomes("KLM", "");
}

void markedAirline(MadeSection& s) {
    s.begin();
    s.key("ATC_Parking_Codes", "DLHX");
    s.becomes("DLH", "");
}

void cargoMarkedAirline(MadeSection& s) {
    s.begin();
    s.key(" atc_parking_codes ", "\tSWRC ");
    s.becomes("SWR", "");
}

void knownRegistration(MadeSection& s) {
    s.begin();
    s.key("atc_id", "PHBXA");
    s.becomes("KLM", "PHBXA");
}

void knownOperator(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "AFR");
    s.key("atc_id", "D-AIUA");
    s.becomes("AFR", "D-AIUA");
}

void knownFreighter(MadeSection& s) {
    s.begin();
    s.key("atc_id", "N123UP");
    s.becomes("UPS", "N123UP");
}

void unknownAirline(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "QQQ");
    s.key("atc_id", "PH-BXA");
    s.report(invalidAirlines, fmt::format("QQQ          in {}", s.place()));
    s.becomes("KLM", "PH-BXA");
}

void airlineList(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "KLM, DLH");
    s.key("atc_id", "PH-BXA");
    s.report(invalidAirlines, fmt::format("KLM,DLH      in {}", s.place()));
    s.becomes("KLM", "PH-BXA");
}

void retired(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "RFO");
}

void twoTitles(MadeSection& s) {
    s.begin();
    s.key("title", "another");
    s.incomplete("has more than one title key");
}

void twoAirlines(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "KLM");
    s.key("atc_parking_codes", "DLH");
    s.incomplete("has more than one atc_parking_codes key");
}

void twoParkingTypes(MadeSection& s) {
    s.begin();
    s.key("atc_parking_types", "GATE");
    s.key("atc_parking_types", "RAMP");
    s.incomplete("has more than one atc_parking_types key");
}

void twoRegistrations(MadeSection& s) {
    s.begin();
    s.key("atc_id", "PH-ONE");
    s.key("atc_id", "PH-TWO");
    s.report("IncompleFltsimSections.txt",
             fmt::format("{}, {}, has more than one atc_id key", s.file().path, s.header()));
}

void commentedRegistration(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "KLM");
    s.key("atc_id", "PH-ABC;the first of them");
    s.becomes("KLM", "PH-ABC");
}

/// With a value of atc_id that leaves the livery without a registration.
void noRegistration(MadeSection& s, const char* value) {
    s.begin();
    s.key("atc_parking_codes", "BAW");
    s.key("atc_id", value);
    s.becomes("BAW", "");
}

void longRegistration(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "BAW");
    s.key("atc_id", "G-4567890123");
    s.becomes("BAW", "G-4567890123");
}

void missingPart(MadeSection& s, const char* part) {
    s.begin(s.title(), part);
    s.key("atc_parking_codes", "KLM");
    s.incomplete("does not exist");
}

void noTitle(MadeSection& s) {
    s.begin("");
    s.key("atc_parking_codes", "KLM");
    s.incomplete("misses title");
}

void unwantedTitle(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "KLM");
    s.leaveOut(s.title());
}

void generic(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "ZZZ");
    s.key("atc_id", "PH-BXA");
    s.becomes("ZZZ", "");
}

void freighter(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "UPS");
    s.key("atc_parking_types", "ramp, cargo");
    s.becomes("UPS", "", true);
}

void passenger(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "UPS");
    s.key("atc_parking_types", "GATE");
    s.becomes("UPS", "");
}

void stub(MadeSection& s) {
    s.key("atc_parking_codes", "QQQ");
    s.begin(s.title() + "_STUB");
    s.key("title", "second title");
}

void titleTaken(MadeSection& s) {
    const std::string taken = s.takenTitle();
    if (taken.empty()) {
        return goodAirline(s);
    }
    s.begin(taken);
    s.key("atc_parking_codes", "KLM");
    s.incomplete(fmt::format("title \"{}\" already exists", taken));
}

void bracketFarAlong(MadeSection& s) {
    s.begin();
    s.line("description=\"see [the notes]\"");
    s.key("atc_parking_codes", "AFR");
    s.becomes("AFR", "");
}

void otherSectionBehind(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "AFR");
    s.line(" [effects]");
    s.key("title", "no title of the section before");
    s.becomes("AFR", "");
}

void commentsAtItsEnd(MadeSection& s) {
    s.begin();
    s.key("atc_parking_codes", "AFR");
    s.line("");
    s.line("//atc_parking_codes=KLM");
    s.line("// end");
    s.becomes("AFR", "");
}

void accentedTitle(MadeSection& s) {
    s.setTitle(s.title() + " Z\xC3\xBCrich \xE2\x9C\x88");
    s.begin();
    s.key("atc_parking_codes", "SWR");
    s.becomes("SWR", "");
}

void veryLongTitle(MadeSection& s) {
    constexpr std::size_t length = 10'000;
    s.setTitle(s.title() + std::string(length - s.title().size(), 'x'));
    goodAirline(s);
}

void nothingKnown(MadeSection& s) {
    s.begin();
    s.report("IncompleFltsimSections.txt",
             fmt::format("\"{}\" \"{}\" has no airline and no regcode info", s.place(), s.title()));
}

void unknownRegistration(MadeSection& s) {
    s.begin();
    s.key("atc_id", "PH-OLD");
    s.report("IncompleFltsimSections.txt",
             fmt::format("\"{}\" \"{}\" has no airline and its regcode is not in my dbase (very old liv?)",
                         s.place(), s.title()));
}

void privateAircraft(MadeSection& s) {
    s.begin();
    s.becomes("PVT", "");
}

void privateRegistration(MadeSection& s) {
    s.begin();
    s.key("atc_id", "HB-XYZ");
    s.becomes("PVT", "HB-XYZ");
}

void registrationInTitle(MadeSection& s) {
    s.setTitle(s.title() + " N1X");
    s.begin();
    s.becomes("PVT", "N1X");
}

// --- the model sets ---

void beginIvao(MadeSection& s, const std::string& behindModel) {
    s.setTitle(fmt::format("{} {}{}", s.title(), s.file().model, behindModel));
    s.begin();
}

void ivaoAirline(MadeSection& s) {
    beginIvao(s, " KLM");
    s.key("atc_parking_codes", "DLH");
    s.key("atc_parking_types", "CARGO");
    s.becomes("KLM", "");
}

void ivaoUnknownAirline(MadeSection& s) {
    beginIvao(s, " QQQ");
    s.report(invalidAirlines, fmt::format("QQQ          in {}", s.place()));
}

void ivaoGeneric(MadeSection& s) {
    beginIvao(s, "ZZZ");
    s.key("atc_id", "PH-BXA");
    s.becomes("ZZZ", "");
}

void ivaoRegistration(MadeSection& s) {
    beginIvao(s, "");
    s.key("atc_id", "PH-BXA");
    s.becomes("KLM", "PH-BXA");
}

void ivaoUnknownRegistration(MadeSection& s) {
    beginIvao(s, "");
    s.key("atc_id", "PH-OLD");
    s.incomplete(fmt::format("misses airlinecode in title: {}, and regcode unknown", s.title()));
}

void ivaoNothing(MadeSection& s) {
    beginIvao(s, "");
    s.incomplete(fmt::format("misses airlinecode in title: {}, and no regcode", s.title()));
}

void ivaoTitleTaken(MadeSection& s) {
    const std::string taken = s.takenTitle();
    if (taken.find(s.file().model + " KLM") == std::string::npos) {
        return ivaoAirline(s);
    }
    s.begin(taken);
    s.incomplete(fmt::format("title already exists: {}", taken));
}

void ivaoBracketEnds(MadeSection& s) {
    beginIvao(s, " BAW");
    s.line("description=see [the notes]");
    s.key("atc_id", "PH-BXA");
    s.becomes("BAW", "");
}

} // namespace

const std::vector<SectionKind>& sectionKinds() {
    static const std::vector<SectionKind> kinds = {
        {"airline", For::Any, goodAirline},
        {"airline with X", For::Any, markedAirline},
        {"airline with C", For::Any, cargoMarkedAirline},
        {"known registration", For::Any, knownRegistration},
        {"known operator", For::Any, knownOperator},
        {"known freighter", For::Any, knownFreighter},
        {"unknown airline", For::Any, unknownAirline},
        {"airline list", For::Any, airlineList},
        {"RFO", For::Any, retired},
        {"two titles", For::Any, twoTitles},
        {"two airlines", For::Any, twoAirlines},
        {"two parking types", For::Any, twoParkingTypes},
        {"two registrations", For::Any, twoRegistrations},
        {"commented registration", For::Any, commentedRegistration},
        {"several registrations", For::Any, [](MadeSection& s) { noRegistration(s, "G-A,G-B"); }},
        {"empty registration", For::Any, [](MadeSection& s) { noRegistration(s, "G-A,"); }},
        {"only a comment", For::Any, [](MadeSection& s) { noRegistration(s, ";x"); }},
        {"wild card", For::Any, [](MadeSection& s) { noRegistration(s, "G-*"); }},
        {"long registration", For::Any, longRegistration},
        {"too long registration", For::Any, [](MadeSection& s) { noRegistration(s, "G-45678901234"); }},
        {"no model folder", For::Any, [](MadeSection& s) { missingPart(s, "model"); }},
        {"no texture folder", For::Any, [](MadeSection& s) { missingPart(s, "texture"); }},
        {"no air file", For::Any, [](MadeSection& s) { missingPart(s, "sim"); }},
        {"no title", For::Any, noTitle},
        {"unwanted title", For::Any, unwantedTitle},
        {"generic", For::Any, generic},
        {"cargo", For::Any, freighter},
        {"gate", For::Any, passenger},
        {"stub", For::Any, stub},
        {"title taken", For::Any, titleTaken},
        {"bracket far along", For::Any, bracketFarAlong},
        {"other section behind", For::Any, otherSectionBehind},
        {"comments at its end", For::Any, commentsAtItsEnd},
        {"accented title", For::Any, accentedTitle},
        {"nothing known", For::Airliners, nothingKnown},
        {"unknown registration", For::Airliners, unknownRegistration},
        {"private", For::Others, privateAircraft},
        {"private registration", For::Others, privateRegistration},
        {"registration in title", For::Others, registrationInTitle},
        {"very long title", For::Others, veryLongTitle},
    };
    return kinds;
}

const std::vector<SectionKind>& ivaoSectionKinds() {
    static const std::vector<SectionKind> kinds = {
        {"IVAO airline", For::Any, ivaoAirline},
        {"IVAO title taken", For::Any, ivaoTitleTaken},
        {"IVAO unknown airline", For::Any, ivaoUnknownAirline},
        {"IVAO generic", For::Any, ivaoGeneric},
        {"IVAO registration", For::Any, ivaoRegistration},
        {"IVAO unknown registration", For::Any, ivaoUnknownRegistration},
        {"IVAO nothing known", For::Any, ivaoNothing},
        {"IVAO bracket", For::Any, ivaoBracketEnds},
    };
    return kinds;
}

} // namespace kst::made
