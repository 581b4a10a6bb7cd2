#include "foundation/Json.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <stdexcept>
#include <vector>

namespace korvane {
namespace {

// The message ParseJson throws, or "" when it parses.
std::string FailureOf(BytesView document)
{
    try {
        ParseJson(document);
        return "";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

const struct Refusal {
    const char* document;
    const char* message;
} kRefusals[] = {
    {"", "empty JSON"}, {" \t\r\n", "empty JSON"}, {"\xEF\xBB\xBF", "empty JSON"}, {"[", "empty JSON"},
    {"[1,", "empty JSON"}, {"{\"a\":", "empty JSON"}, {"{\"a\" :", "empty JSON"},
    {"[\"a\xFF\"]", "empty JSON"},  // malformed UTF-8 refuses the whole document
    {"[1", "truncated JSON"}, {"{", "truncated JSON"}, {"{\"a\"", "truncated JSON"}, {"\"\\", "truncated JSON"},
    {"\"\\u12", "truncated JSON"}, {"\"abc", "truncated JSON"}, {"\"", "truncated JSON"},
    {"{,}", "invalid JSON"}, {"{a:1}", "invalid JSON"}, {"{\"a\" 1}", "invalid JSON"}, {"{\"a\"}", "invalid JSON"},
    {"{\"a\":1,}", "invalid JSON"}, {"[1,]", "invalid JSON token"}, {"[1,,2]", "invalid JSON token"},
    {"]", "invalid JSON token"}, {"[1 2]", "invalid JSON separator"}, {"[1}", "invalid JSON separator"},
    {"{\"a\":1,\"a\":1}", "duplicate JSON key"},
    {"{\"a\":1,\"a\":[}", "invalid JSON token"},  // the second value fails before the key is compared
    {"1 2", "trailing JSON"}, {"{} x", "trailing JSON"}, {"\xEF\xBB\xBF\xEF\xBB\xBF{}", "trailing JSON"},
    {"\"a\tb\"", "invalid JSON string"}, {"\"a\nb\"", "invalid JSON string"},
    {"\"\\x\"", "invalid JSON escape"}, {"\"\\u12G4\"", "invalid Unicode"},
    {"[1\xC2\xA0" "2]", "invalid JSON separator"},  // a space ends a token, so it cannot hide inside one
};

TEST(ParseJson, RefusesEachMalformedDocumentWithItsMessage)
{
    for (const Refusal& refusal : kRefusals) {
        EXPECT_EQ(FailureOf(refusal.document), refusal.message) << "document: " << refusal.document;
    }
}

TEST(ParseJson, KeepsScalarsAsSourceTextAndDecodesStringsUnitByUnit)
{
    EXPECT_TRUE(ParseJson("true").kind == JsonKind::Scalar && ParseJson("tru").kind == JsonKind::Scalar);
    EXPECT_EQ(ParseJson("null").kind, JsonKind::Null);
    const JsonValue array = ParseJson("[tru, 01, +1, 1.2.3, NaN, a\"b:c[, 1.0, null]");
    const wchar_t* const texts[] = {L"tru", L"01", L"+1", L"1.2.3", L"NaN", L"a\"b:c[", L"1.0", L"null"};
    ASSERT_EQ(array.items.size(), std::size(texts));
    for (size_t i = 0; i < std::size(texts); ++i) {
        EXPECT_EQ(array.items[i].text, texts[i]);
    }

    const std::pair<const char*, Text> strings[] = {
        {"\"\\ud83d\\ude00\"", Text{0xD83D, 0xDE00}}, {"\"\\ud83d\"", Text{0xD83D}},
        {"\"a\\u0000b\"", Text{L'a', 0, L'b'}}, {"12abc", L"12abc"},
        {"\"\\\"\\\\\\/\\b\\f\\n\\r\\t\\u00E9\\u00e9\"", L"\"\\/\b\f\n\r\t\x00E9\x00E9"},
        {"\"\x7F\xE4\xB8\xAD\"", L"\x007F\x4E2D"},
        // Only one byte-order mark is skipped, and U+FEFF is no space: a second one starts a token.
        {"\xEF\xBB\xBF\xEF\xBB\xBF" "1", L"\xFEFF" L"1"},
    };
    for (const auto& [document, text] : strings) {
        EXPECT_EQ(ParseJson(document).text, text) << document;
    }
    EXPECT_EQ(ParseJson("\xEF\xBB\xBF{\"a\":\"b\"}").members.size(), 1u);
    EXPECT_EQ(ParseJson("{\"a\":1,\"A\":2}").members.size(), 2u) << "keys differing in case are no duplicates";
}

TEST(ParseJson, WhiteSpaceIsTheListedUnitsThenTheSystemsSpaces)
{
    for (wchar_t unit = 0; unit < 0x100; ++unit) {
        const bool listed = (unit >= 0x09 && unit <= 0x0D) || unit == 0x20 || unit == 0x85 || unit == 0xA0;
        EXPECT_EQ(IsJsonWhiteSpace(unit), listed) << "U+" << std::hex << static_cast<int>(unit);
    }
    EXPECT_TRUE(IsJsonWhiteSpace(0x3000) && IsJsonWhiteSpace(0x2003));
    EXPECT_FALSE(IsJsonWhiteSpace(0xFEFF) || IsJsonWhiteSpace(0xFFFF));
    // The reader uses the same table between tokens.
    const JsonValue value = ParseJson("\xC2\xA0[\xC2\x85" "1,\xE3\x80\x80" "2\xE2\x80\x83]\x0B\x0C");
    ASSERT_EQ(value.items.size(), 2u);
    EXPECT_EQ(value.items[1].text, L"2");
}

TEST(ParseJson, AcceptsSixtyFiveLevelsAndRefusesSixtySix)
{
    const auto nested = [](int levels) { return Bytes(levels, '[') + Bytes(levels, ']'); };
    EXPECT_EQ(FailureOf(nested(65)), "");
    EXPECT_EQ(FailureOf(nested(66)), "JSON nesting");
    EXPECT_EQ(FailureOf(Bytes(100000, '[')), "JSON nesting");  // no stack overflow on deep input
    Bytes objects;
    for (int i = 0; i < 66; ++i) {
        objects += "{\"k\":";
    }
    EXPECT_EQ(FailureOf(objects + "1" + Bytes(66, '}')), "JSON nesting");
}

TEST(FindJsonMember, GivesAnEmptyNullForAnythingMissing)
{
    const JsonValue document = ParseJson("{\"gameInfo\":{\"displayName\":\"Title\"},\"n\":null,\"list\":[1]}");
    EXPECT_EQ(FindJsonMember(FindJsonMember(document, L"gameInfo"), L"displayName").text, L"Title");
    EXPECT_EQ(FindJsonMember(document, L"n").text, L"null");
    const JsonValue seven = ParseJson("7");
    for (const JsonValue* missing : {&FindJsonMember(FindJsonMember(document, L"absent"), L"x"),
             &FindJsonMember(FindJsonMember(document, L"list"), L"0"), &FindJsonMember(seven, L"x"),
             &FindJsonMember(document, L"GAMEINFO")}) {
        EXPECT_TRUE(missing->kind == JsonKind::Null && missing->text.empty() && missing->items.empty());
    }
}

TEST(ParseJson, ReadsTheFilesRealEnginesWrote)
{
    const wchar_t* const samples[][3] = {
        {L"modules\\ue4.18_engine_KevinTKnight__FortniteProto\\UE4Editor.modules", L"BuildId",
            L"c613a200-6d43-40c0-8f25-7caead03a40b"},
        {L"modules\\ue4.20_plugin_1runeberg__RunebergVRPlugin\\UE4Editor.modules", L"BuildId", L"4135216"},
        {L"uproject\\guid_iniside__ActionRPGGame\\ActionRPGGame.uproject", L"EngineAssociation",
            L"{A36EBF10-476D-8159-343E-8FA796F9AC8F}"},
        // "Key" : value with a blank before the colon, CRLF, no final newline.
        {L"build_version\\ue4.16.3_sphills__LootTheRoom\\Build.version", L"MajorVersion", L"4"},
    };
    for (const auto& sample : samples) {
        const JsonValue document = ParseJson(testing::ReadRealData(sample[0]));
        EXPECT_EQ(FindJsonMember(document, sample[1]).text, sample[2]) << TextToUtf8(sample[0]);
        EXPECT_GE(document.members.size(), 2u);
    }
    EXPECT_GT(FindJsonMember(ParseJson(testing::ReadRealData(samples[0][0])), L"Modules").members.size(), 300u);
}

// Many thousands of mutated and truncated documents (seeded, so a failure is reproducible) give
// a value or one of the reader's own messages: never a crash, a hang or another exception.
TEST(ParseJsonRobustness, MutatedAndTruncatedDocumentsGiveAValueOrAListedMessage)
{
    std::set<std::string> listed{"JSON nesting"};
    for (const Refusal& refusal : kRefusals) {
        listed.insert(refusal.message);
    }
    const Bytes seeds[] = {
        "\xEF\xBB\xBF {\"schemaVersion\":1,\"gameInfo\":{\"displayName\":\"\xE6\xB8\xB8\"},\"mods\":[{\"id\":\"a \\\"q\\\"\","
        "\"path\":\"C:\\\\a\",\"v\":[\"1.0\",-2.5e10,true,null,\"\\u4e2d\\ud83d\\ude00\",{},[],{\"\":\"\"}]}]}\r\n",
        Bytes(64, '[') + Bytes(64, ']'),
    };
    // Bytes that mean something to the reader, so that mutations reach its interesting paths.
    const char interesting[] = "{}[]\",:\\u0aF \t\r\n\x0B\x85\xA0\xC2\xE3\x80\xEF\xBB\xBFnull1e-";
    std::mt19937 random(0x4B56);
    const auto pick = [&random](size_t size) { return std::uniform_int_distribution<size_t>(0, size - 1)(random); };
    for (int round = 0; round < 60000; ++round) {
        Bytes document = seeds[round % std::size(seeds)];
        for (int step = 0; step <= round % 4 && !document.empty(); ++step) {
            const size_t at = pick(document.size());
            switch (pick(4)) {
            case 0: document[at] = interesting[pick(sizeof(interesting) - 1)]; break;
            case 1: document.insert(at, 1, static_cast<char>(random() & 0xFF)); break;
            case 2: document.resize(at); break;
            default: document.insert(at, document.substr(pick(document.size()), 16)); break;
            }
        }
        try {
            ParseJson(document);
        } catch (const std::runtime_error& error) {
            ASSERT_EQ(listed.count(error.what()), 1u) << "round " << round << ": " << error.what();
        } catch (...) {
            FAIL() << "round " << round << " threw something else";
        }
    }
}

}  // namespace
}  // namespace korvane
