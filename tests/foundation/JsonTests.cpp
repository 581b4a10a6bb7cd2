#include "foundation/Json.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>
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

struct Refusal {
    const char* document;
    const char* message;
};

TEST(ParseJson, RefusesEachMalformedDocumentWithItsMessage)
{
    const Refusal refusals[] = {
        {"", "empty JSON"},
        {" \t\r\n", "empty JSON"},
        {"\xEF\xBB\xBF", "empty JSON"},
        {"[", "empty JSON"},
        {"[1", "truncated JSON"},
        {"[1,", "empty JSON"},
        {"{", "truncated JSON"},
        {"{\"a\"", "truncated JSON"},
        {"{\"a\":", "empty JSON"},
        {"{a:1}", "invalid JSON"},
        {"{\"a\" 1}", "invalid JSON"},
        {"[1,]", "invalid JSON token"},
        {"{\"a\":1,}", "invalid JSON"},
        {"[1 2]", "invalid JSON separator"},
        {"[1}", "invalid JSON separator"},
        {"[1,,2]", "invalid JSON token"},
        {"]", "invalid JSON token"},
        {"{\"a\":1,\"a\":1}", "duplicate JSON key"},
        {"{\"a\":1,\"a\":[}", "invalid JSON token"},  // the second value fails before the key is compared
        {"1 2", "trailing JSON"},
        {"{} x", "trailing JSON"},
        {"\"a\tb\"", "invalid JSON string"},
        {"\"a\nb\"", "invalid JSON string"},
        {"\"\\x\"", "invalid JSON escape"},
        {"\"\\", "truncated JSON"},
        {"\"\\u12", "truncated JSON"},
        {"\"\\u12G4\"", "invalid Unicode"},
        {"\"abc", "truncated JSON"},
        {"\"", "truncated JSON"},
        {"[\"a\xFF\"]", "empty JSON"},  // malformed UTF-8 refuses the whole document
        {"{\"a\" :", "empty JSON"},
        {"{\"a\"}", "invalid JSON"},
        {"{,}", "invalid JSON"},
    };
    for (const Refusal& refusal : refusals) {
        EXPECT_EQ(FailureOf(refusal.document), refusal.message) << "document: " << refusal.document;
    }
}

TEST(ParseJson, KeepsScalarsAsTheirSourceText)
{
    EXPECT_EQ(ParseJson("true").kind, JsonKind::Scalar);
    EXPECT_EQ(ParseJson("12abc").text, L"12abc");
    const JsonValue null = ParseJson("null");
    EXPECT_EQ(null.kind, JsonKind::Null);
    EXPECT_EQ(null.text, L"null");

    const JsonValue array = ParseJson("[tru, 01, +1, 1.2.3, NaN, a\"b:c[, 1.0]");
    ASSERT_EQ(array.kind, JsonKind::Array);
    std::vector<Text> texts;
    for (const JsonValue& item : array.items) {
        EXPECT_EQ(item.kind, JsonKind::Scalar);
        texts.push_back(item.text);
    }
    EXPECT_EQ(texts, (std::vector<Text>{L"tru", L"01", L"+1", L"1.2.3", L"NaN", L"a\"b:c[", L"1.0"}));
}

TEST(ParseJson, DecodesStringsUnitByUnit)
{
    EXPECT_EQ(ParseJson("\"\\ud83d\\ude00\"").text, (Text{0xD83D, 0xDE00}));
    EXPECT_EQ(ParseJson("\"\\ud83d\"").text, (Text{0xD83D}));
    EXPECT_EQ(ParseJson("\"a\\u0000b\"").text, (Text{L'a', 0, L'b'}));
    EXPECT_EQ(ParseJson("\"\\\"\\\\\\/\\b\\f\\n\\r\\t\\u00E9\\u00e9\"").text, L"\"\\/\b\f\n\r\t\x00E9\x00E9");
    EXPECT_EQ(ParseJson("\"\x7F\xE4\xB8\xAD\"").text, L"\x007F\x4E2D");
    EXPECT_EQ(ParseJson("\xEF\xBB\xBF{\"a\":\"b\"}").members.size(), 1u);
    // Only one byte-order mark is skipped, and U+FEFF is no space: a second one starts a token.
    EXPECT_EQ(ParseJson("\xEF\xBB\xBF\xEF\xBB\xBF" "1").text, L"\xFEFF" L"1");
    EXPECT_EQ(FailureOf("\xEF\xBB\xBF\xEF\xBB\xBF{}"), "trailing JSON");
}

TEST(ParseJson, TreatsTheDefaultLocaleSpacesAsWhiteSpace)
{
    // U+00A0, U+0085, U+3000 and U+2003 between tokens; all of them are iswspace in the default locale.
    const JsonValue value = ParseJson("\xC2\xA0[\xC2\x85" "1,\xE3\x80\x80" "2\xE2\x80\x83]\x0B\x0C");
    ASSERT_EQ(value.items.size(), 2u);
    EXPECT_EQ(value.items[1].text, L"2");
    // A space ends a token, so it cannot hide inside one.
    EXPECT_EQ(FailureOf("[1\xC2\xA0" "2]"), "invalid JSON separator");
    EXPECT_TRUE(IsJsonWhiteSpace(0x0085));
    EXPECT_TRUE(IsJsonWhiteSpace(0x00A0));
    EXPECT_TRUE(IsJsonWhiteSpace(0x3000));
    EXPECT_FALSE(IsJsonWhiteSpace(0xFEFF));
    EXPECT_FALSE(IsJsonWhiteSpace(0xFFFF));
    EXPECT_FALSE(IsJsonWhiteSpace(0x001F));
    EXPECT_FALSE(IsJsonWhiteSpace(L'x'));
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

TEST(ParseJson, OrdersMembersByCodeUnitsAndKeepsKeysExact)
{
    const JsonValue value = ParseJson("{\"b\":1,\"a\":2,\"A\":3,\"ab\":4,\"\xE4\xB8\xAD\":5,\"\xC3\xA9\":6}");
    std::vector<Text> keys;
    for (const auto& [key, member] : value.members) {
        keys.push_back(key);
    }
    EXPECT_EQ(keys, (std::vector<Text>{L"A", L"a", L"ab", L"b", L"\x00E9", L"\x4E2D"}));
}

TEST(FindJsonMember, GivesTheSharedEmptyValueForAnythingMissing)
{
    const JsonValue document = ParseJson("{\"gameInfo\":{\"displayName\":\"Title\"},\"n\":null,\"list\":[1]}");
    EXPECT_EQ(FindJsonMember(FindJsonMember(document, L"gameInfo"), L"displayName").text, L"Title");
    const JsonValue& missing = FindJsonMember(FindJsonMember(document, L"absent"), L"displayName");
    EXPECT_EQ(missing.kind, JsonKind::Null);
    EXPECT_TRUE(missing.text.empty());
    EXPECT_TRUE(missing.items.empty());
    EXPECT_EQ(FindJsonMember(document, L"n").text, L"null");
    EXPECT_EQ(&FindJsonMember(FindJsonMember(document, L"list"), L"0"), &missing);
    EXPECT_EQ(&FindJsonMember(ParseJson("7"), L"x"), &missing);
    EXPECT_TRUE(FindJsonMember(document, L"GAMEINFO").members.empty());
}

TEST(FindJsonMember, SharedEmptyValueIsMadeOnceAcrossThreads)
{
    std::vector<const JsonValue*> seen(8, nullptr);
    std::vector<std::thread> threads;
    const JsonValue number = ParseJson("1");
    for (size_t i = 0; i < seen.size(); ++i) {
        threads.emplace_back([&, i] { seen[i] = &FindJsonMember(number, L"k"); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const JsonValue* value : seen) {
        EXPECT_EQ(value, seen[0]);
    }
}

TEST(ParseJson, ReadsTheFilesRealEnginesWrote)
{
    const JsonValue modules = ParseJson(testing::ReadRealData(L"modules\\ue4.18_engine_KevinTKnight__FortniteProto\\UE4Editor.modules"));
    EXPECT_EQ(FindJsonMember(modules, L"BuildId").text, L"c613a200-6d43-40c0-8f25-7caead03a40b");
    EXPECT_GT(FindJsonMember(modules, L"Modules").members.size(), 300u);

    const JsonValue crlfModules = ParseJson(testing::ReadRealData(L"modules\\ue4.20_plugin_1runeberg__RunebergVRPlugin\\UE4Editor.modules"));
    EXPECT_EQ(FindJsonMember(crlfModules, L"BuildId").text, L"4135216");

    const JsonValue project = ParseJson(testing::ReadRealData(L"uproject\\guid_iniside__ActionRPGGame\\ActionRPGGame.uproject"));
    EXPECT_EQ(FindJsonMember(project, L"EngineAssociation").text, L"{A36EBF10-476D-8159-343E-8FA796F9AC8F}");

    // "Key" : value with a blank before the colon, CRLF, no final newline.
    const JsonValue build = ParseJson(testing::ReadRealData(L"build_version\\ue4.16.3_sphills__LootTheRoom\\Build.version"));
    EXPECT_EQ(FindJsonMember(build, L"MajorVersion").text, L"4");
    EXPECT_EQ(FindJsonMember(build, L"MinorVersion").kind, JsonKind::Scalar);
}

}  // namespace
}  // namespace korvane
