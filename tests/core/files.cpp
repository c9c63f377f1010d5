#include "core/files.h"

#include "core/corescene.h"
#include "core/xmlmeta.h"
#include "support/virtualtime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kst {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using namespace std::string_literals;

class FilesTest : public test::CoreScene {};

TEST_F(FilesTest, ReadsEveryEncodingIntoLines) {
    struct Case {
        const char* name;
        std::string content;
        TextEncoding encoding;
        std::vector<std::string> lines;
    };
    const Case cases[] = {
        {"empty", "", TextEncoding::NoMark, {}},
        {"one byte", "\xFF", TextEncoding::NoMark, {"\xFF"}},
        {"plain bytes", "one\ntwo\xE9\n", TextEncoding::NoMark, {"one", "two\xE9"}},
        {"no line end at the end", "one\n\ntwo", TextEncoding::NoMark, {"one", "", "two"}},
        {"line ends of Windows", "one\r\ntwo\r\n", TextEncoding::NoMark, {"one", "two"}},
        {"carriage return within", "o\rne\r\r\n", TextEncoding::NoMark, {"o\rne\r"}},
        {"zero bytes", "a\0b\n"s, TextEncoding::NoMark, {"a\0b"s}},
        {"utf-8 mark", "\xEF\xBB\xBFone\ntwo\n", TextEncoding::UTF8_with_BOM, {"one", "two"}},
        {"two bytes of the mark", "\xEF\xBBone\ntwo", TextEncoding::UTF8_with_BOM, {"ne", "two"}},
        {"nothing but the mark", "\xEF\xBB", TextEncoding::UTF8_with_BOM, {""}},
        {"mark before a line end", "\xEF\xBB\nabc", TextEncoding::UTF8_with_BOM, {"", "abc"}},
        {"utf-16", "\xFF\xFEo\0k\0\r\0\n\0\xE9\0"s, TextEncoding::Unicode, {"ok", "\xC3\xA9"}},
        {"utf-16, other order",
         "\xFE\xFF\0k\0\n\0\xE9"s,
         TextEncoding::Unicode_big_endian,
         {"k", "\xC3\xA9"}},
        {"utf-16 mark alone", "\xFF\xFE", TextEncoding::Unicode, {}},
        {"utf-16 cut within a unit", "\xFF\xFEo\0k"s, TextEncoding::Unicode, {"o"}},
        {"utf-16 pair", "\xFF\xFE\x3D\xD8\xE9\xDE\n\0"s, TextEncoding::Unicode, {"\xF0\x9F\x9B\xA9"}},
        {"utf-16, a half is a line end",
         "\xFF\xFE\x0A\x01\n\0x\0"s,
         TextEncoding::Unicode,
         {"\xC4\x8A", "x"}},
    };
    for (const Case& c : cases) {
        const auto path = folder.write("text.txt", c.content);
        std::vector<std::string> lines = {"from before"};
        EXPECT_EQ(detectEncoding(path), c.encoding) << c.name;
        EXPECT_TRUE(gf_readExtTextFileToStringVector(path, lines)) << c.name;
        EXPECT_EQ(lines, c.lines) << c.name;
    }
}

TEST_F(FilesTest, BrokenUtf16IsShownAndRefused) {
    for (const std::string& content : {"\xFF\xFE"s + "a\0\n\0"s + "\x00\xD8x\0"s, "\xFE\xFF\xDC\x00"s,
                                       "\xFF\xFE\x3D\xD8"s, "\xFF\xFE\x3D\xD8\n\0\xE9\xDE"s}) {
        resetDisplay();
        const auto path = folder.write("text.txt", content);
        std::vector<std::string> lines;
        EXPECT_FALSE(gf_readExtTextFileToStringVector(path, lines));
        EXPECT_THAT(messageLine().message,
                    testing::StartsWith("conversion from error from utf16 to utf8: Invalid UTF-16"));
    }
    EXPECT_THROW(decodeTextLines("\x00\xDC"s, TextEncoding::Unicode), std::runtime_error);
}

TEST_F(FilesTest, APairOfUtf16StaysTogetherWhereverItStandsInALongFile) {
    std::string content = "\xFF\xFE" + std::string("x\0", 2);
    std::string expected = "x";
    for (int i = 0; i < 70'000; ++i) {
        content += "\x3D\xD8\xE9\xDE";
        expected += "\xF0\x9F\x9B\xA9";
    }
    std::string text;
    EXPECT_EQ(readTextFile(folder.write("long.txt", content), text), TextRead::Done);
    EXPECT_TRUE(text == expected);
}

TEST_F(FilesTest, WhatIsNoTextFileIsRefusedWithAWord) {
    std::vector<std::string> lines = {"from before"};
    EXPECT_FALSE(gf_readExtTextFileToStringVector("missing.txt", lines));
    EXPECT_THAT(log(), HasSubstr("cannot open file missing.txt for character encoding, err: 2\n"));
    EXPECT_TRUE(lines.empty());

    EXPECT_FALSE(gf_readExtTextFileToStringVector("docs", lines));
    EXPECT_THAT(log(), AnyOf(HasSubstr("gf_readExtTextFileToStringVector docs: "),
                             HasSubstr("cannot open file docs for character encoding, err: 13\n")));

    folder.write("huge.txt", "x");
    std::filesystem::resize_file("huge.txt", largestTextFile + 1);
    EXPECT_FALSE(gf_readExtTextFileToStringVector("huge.txt", lines));
    EXPECT_THAT(log(), HasSubstr("gf_readExtTextFileToStringVector huge.txt: "));
}

TEST_F(FilesTest, ReadFileGivesAllBytesOrAnError) {
    const std::string bytes = std::string(200'000, 'x') + "\0\r\n\x1A"s;
    std::string content;
    EXPECT_FALSE(readFile(folder.write("a", bytes), content, bytes.size()));
    EXPECT_TRUE(content == bytes);
    EXPECT_EQ(readFile("a", content, bytes.size() - 1), std::errc::file_too_large);
    EXPECT_EQ(content, "");
    EXPECT_EQ(readFile("missing", content, 10), std::errc::no_such_file_or_directory);
    EXPECT_EQ(readFile("docs", content, 10), std::errc::is_a_directory);
}

TEST_F(FilesTest, FoldersAreMadeAndAStartTwiceIsNoError) {
    folder.write("airports/learned/stock/LSZH.xml", "keep");
    lf_createFolders();
    lf_createFolders();
    for (const char* name :
         {"input/my_regcodes", "output/info", "output/errors", "airports/my_ORBX", "airports/my_thirdparty",
          "airports/learned/stock", "airports/learned/simaddon", "airports/learned/thirdparty"}) {
        EXPECT_TRUE(std::filesystem::is_directory(folder.path() / name)) << name;
    }
    EXPECT_EQ(folder.read("airports/learned/stock/LSZH.xml"), "keep");
    std::filesystem::remove_all("output");
    folder.write("output", "a file");
    EXPECT_THROW(lf_createFolders(), std::filesystem::filesystem_error);
}

TEST_F(FilesTest, TextFilesAreWrittenAsGiven) {
    EXPECT_TRUE(writeTextFile("a\nb", "report.txt", true));
    EXPECT_EQ(folder.read("report.txt"), "a\nb\n");
    EXPECT_TRUE(writeTextFile("c", "report.txt", false));
    EXPECT_EQ(folder.read("report.txt"), "c");
    EXPECT_FALSE(writeTextFile("c", "no such folder/report.txt", false));
}

TEST_F(FilesTest, CountsOnlyFilesDirectlyInTheFolder) {
    EXPECT_EQ(countFiles("airports"), 0U);
    folder.write("airports/a.xml", "");
    folder.write("airports/b.xml", "");
    folder.write("airports/below/c.xml", "");
    EXPECT_EQ(countFiles("airports"), 2U);
    EXPECT_EQ(countFiles("airports/a.xml"), 0U);
}

TEST_F(FilesTest, SavedXmlReadsBackAndIsLogged) {
    pugi::xml_document document;
    document.append_child("root").append_attribute("name").set_value("<&\xC3\xA9\n");
    EXPECT_TRUE(saveXml(document, "a.xml"));
    EXPECT_THAT(log(), HasSubstr("\"a.xml\" saved\n"));
    pugi::xml_document again;
    ASSERT_TRUE(again.load_file("a.xml"));
    EXPECT_STREQ(again.child("root").attribute("name").value(), "<&\xC3\xA9\n");
    EXPECT_FALSE(saveXml(document, "no such folder/a.xml"));
    EXPECT_THAT(log(), HasSubstr("\ncould not save to \"no such folder/a.xml\"\n"));
}

TEST_F(FilesTest, MetaBlockStandsInFrontAndWhatIsMissingIsTold) {
    const test::VirtualTime time;
    pugi::xml_document document;
    document.append_child("liveries").append_child("liv");
    addXmlMeta(document);
    addXmlMeta(document);
    EXPECT_TRUE(checkXmlMeta(document));
    EXPECT_STREQ(document.first_child().name(), "meta");
    std::vector<std::string> infos;
    for (const pugi::xml_node info : document.child("meta").children("info")) {
        infos.push_back(std::string(info.attribute("name").value()) + "=" + info.attribute("value").value());
    }
    EXPECT_THAT(infos, ElementsAre("author=Kestrane_P3D", "version=" + std::string(programVersionText()),
                                   "date=2024-03-04", testing::StartsWith("copyright=C")));
    EXPECT_EQ(log().find("meta data"), std::string::npos);
    for (const char* missing : {"author", "date", "version"}) {
        addXmlMeta(document);
        pugi::xml_node meta = document.child("meta");
        meta.remove_child(meta.find_child_by_attribute("info", "name", missing));
        EXPECT_FALSE(checkXmlMeta(document)) << missing;
    }
    EXPECT_THAT(log(), HasSubstr("meta data incorrect?\n"));
}

} // namespace
} // namespace kst
