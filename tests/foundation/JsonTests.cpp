#include "foundation/Json.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
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

TEST(ParseJson, RefusesEachMalformedDocumentWithItsMessage)
{
    const struct {
        const char* document;
        const char* message;
    } refusals[] = {
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
    for (const auto& refusal : refusals) {
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

TEST(ParseJson, OrdersMembersByCodeUnitsAndKeepsKeysExact)
{
    const JsonValue value = ParseJson("{\"b\":1,\"a\":2,\"A\":3,\"ab\":4,\"\xE4\xB8\xAD\":5,\"\xC3\xA9\":6}");
    std::vector<Text> keys;
    for (const auto& [key, member] : value.members) {
        keys.push_back(key);
    }
    EXPECT_EQ(keys, (std::vector<Text>{L"A", L"a", L"ab", L"b", L"\x00E9", L"\x4E2D"}));
}

TEST(FindJsonMember, GivesTheSharedEmptyValueMadeOnceForAnythingMissing)
{
    const JsonValue document = ParseJson("{\"gameInfo\":{\"displayName\":\"Title\"},\"n\":null,\"list\":[1]}");
    EXPECT_EQ(FindJsonMember(FindJsonMember(document, L"gameInfo"), L"displayName").text, L"Title");
    EXPECT_EQ(FindJsonMember(document, L"n").text, L"null");
    std::vector<const JsonValue*> seen(8, nullptr);
    {
        std::vector<std::jthread> threads;  // the first lookups of anything missing race here
        for (size_t i = 0; i < seen.size(); ++i) {
            threads.emplace_back([&, i] { seen[i] = &FindJsonMember(FindJsonMember(document, L"absent"), L"x"); });
        }
    }
    const JsonValue& missing = *seen[0];
    EXPECT_TRUE(missing.kind == JsonKind::Null && missing.text.empty() && missing.items.empty());
    for (const JsonValue* value : seen) {
        EXPECT_EQ(value, &missing);
    }
    EXPECT_EQ(&FindJsonMember(FindJsonMember(document, L"list"), L"0"), &missing);
    EXPECT_EQ(&FindJsonMember(ParseJson("7"), L"x"), &missing);
    EXPECT_EQ(&FindJsonMember(document, L"GAMEINFO"), &missing);
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

// Feeds the reader many thousands of mutated and truncated documents (seeded, so a failure is
// reproducible): it must give a value or throw one of its own messages, never crash or hang.
const char* const kSeeds[] = {
    "{\"schemaVersion\":1,\"gameInfo\":{\"displayName\":\"\xE6\xB8\xB8\xE6\x88\x8F\"},\"mods\":[{\"id\":"
    "\"mod.0123456789abcdef0123456789abcdef\",\"name\":\"A \\\"quoted\\\" name\",\"modProject\":"
    "\"C:\\\\Mods\\\\a.umod\",\"supportedGameVersions\":[\"1.0\",\"1.1\"]}],\"requiresEditorBuildBinding\":false}",
    "[1, -2.5e10, true, false, null, \"\\u4e2d\\ud83d\\ude00\", {}, [], {\"\":\"\"}]",
    "\xEF\xBB\xBF  {\"stage\" : \"sdkVerify\" , \"cacheHit\" : true }\r\n",
    "{\"BuildId\":\"27405482\",\"Modules\":{\"KorvaneRuntime\":\"UnrealEditor-KorvaneRuntime.dll\"}}",
    "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[["
    "]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]",
};

// Bytes that mean something to the reader, so mutations reach its interesting paths.
const char kInteresting[] = "{}[]\",:\\u0aF \t\r\n\x0B\x0C\x85\xA0\xC2\xE3\x80\xEF\xBB\xBFnull1e-";

Bytes Mutate(Bytes document, std::mt19937& random)
{
    const int steps = std::uniform_int_distribution<int>(1, 4)(random);
    for (int step = 0; step < steps && !document.empty(); ++step) {
        const size_t at = std::uniform_int_distribution<size_t>(0, document.size() - 1)(random);
        const size_t from = std::uniform_int_distribution<size_t>(0, document.size() - 1)(random);
        const char interesting = kInteresting[random() % (sizeof(kInteresting) - 1)];
        switch (std::uniform_int_distribution<int>(0, 5)(random)) {
        case 0: document[at] = interesting; break;
        case 1: document.insert(at, 1, interesting); break;
        case 2: document.erase(at, 1); break;
        case 3: document.resize(at); break;
        case 4: document[at] = static_cast<char>(random() & 0xFF); break;
        default: document.insert(at, document.substr(from, 16)); break;
        }
    }
    return document;
}

TEST(ParseJsonRobustness, MutatedAndTruncatedDocumentsGiveAValueOrAListedMessage)
{
    const std::set<std::string> listed = {"empty JSON", "trailing JSON", "JSON nesting", "truncated JSON",
        "invalid JSON", "invalid JSON token", "invalid JSON separator", "duplicate JSON key", "invalid JSON string",
        "invalid JSON escape", "invalid Unicode"};
    std::vector<Bytes> documents;
    for (const Bytes seed : kSeeds) {
        for (size_t length = 0; length < seed.size(); ++length) {
            documents.push_back(seed.substr(0, length));
        }
    }
    std::mt19937 random(0x4B56);
    for (int round = 0; round < 60000; ++round) {
        documents.push_back(Mutate(kSeeds[round % std::size(kSeeds)], random));
    }
    int parsed = 0;
    int refused = 0;
    std::set<std::string> seen;
    for (size_t index = 0; index < documents.size(); ++index) {
        try {
            ParseJson(documents[index]);
            ++parsed;
        } catch (const std::runtime_error& error) {
            ASSERT_EQ(listed.count(error.what()), 1u) << "document " << index << ": " << error.what();
            seen.insert(error.what());
            ++refused;
        } catch (...) {
            FAIL() << "document " << index << " threw something else";
        }
    }
    // The mutations must actually reach both outcomes and most refusals.
    EXPECT_GT(parsed, 1000);
    EXPECT_GT(refused, 10000);
    EXPECT_GE(seen.size(), 9u);
}

}  // namespace
}  // namespace korvane
