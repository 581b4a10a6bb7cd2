// Feeds the reader many thousands of mutated and truncated documents. Whatever comes in, it
// must either give a value or throw one of its own messages: never crash, hang or throw
// anything else.
#include "foundation/Json.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <stdexcept>
#include <string>

namespace korvane {
namespace {

const std::set<std::string> kMessages = {"empty JSON", "trailing JSON", "JSON nesting", "truncated JSON",
    "invalid JSON", "invalid JSON token", "invalid JSON separator", "duplicate JSON key", "invalid JSON string",
    "invalid JSON escape", "invalid Unicode"};

const char* const kSeeds[] = {
    "{\"schemaVersion\":1,\"gameInfo\":{\"displayName\":\"\xE6\xB8\xB8\xE6\x88\x8F\"},\"mods\":[{\"id\":"
    "\"mod.0123456789abcdef0123456789abcdef\",\"name\":\"A \\\"quoted\\\" name\",\"modProject\":"
    "\"C:\\\\Mods\\\\a.umod\",\"supportedGameVersions\":[\"1.0\",\"1.1\"]}],\"requiresEditorBuildBinding\":false}",
    "[1, -2.5e10, true, false, null, \"\\u4e2d\\ud83d\\ude00\", {}, [], {\"\":\"\"}]",
    "\xEF\xBB\xBF  {\"stage\" : \"sdkVerify\" , \"cacheHit\" : true }\r\n",
    "{\"BuildId\":\"27405482\",\"Modules\":{\"KorvaneRuntime\":\"UnrealEditor-KorvaneRuntime.dll\"}}",
    "[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[[]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]]",
};

// Bytes that mean something to the reader, so mutations reach its interesting paths.
const char kInteresting[] = "{}[]\",:\\u0aF \t\r\n\x0B\x0C\x85\xA0\xC2\xE3\x80\xEF\xBB\xBFnull1e-";

Bytes Mutate(Bytes document, std::mt19937& random)
{
    std::uniform_int_distribution<int> operation(0, 5);
    const int steps = std::uniform_int_distribution<int>(1, 4)(random);
    for (int step = 0; step < steps && !document.empty(); ++step) {
        std::uniform_int_distribution<size_t> position(0, document.size() - 1);
        const char interesting = kInteresting[std::uniform_int_distribution<size_t>(0, sizeof(kInteresting) - 2)(random)];
        switch (operation(random)) {
        case 0: document[position(random)] = interesting; break;
        case 1: document.insert(position(random), 1, interesting); break;
        case 2: document.erase(position(random), 1); break;
        case 3: document.resize(position(random)); break;  // truncation
        case 4: document[position(random)] = static_cast<char>(random() & 0xFF); break;
        case 5: {
            const size_t from = position(random);
            const size_t length = std::min<size_t>(document.size() - from, 16);
            document.insert(position(random), document.substr(from, length));
            break;
        }
        }
    }
    return document;
}

TEST(ParseJsonRobustness, MutatedAndTruncatedDocumentsGiveAValueOrAListedMessage)
{
    std::mt19937 random(0x4B56);  // fixed seed: a failure is reproducible
    int parsed = 0;
    int refused = 0;
    std::set<std::string> seenMessages;
    for (int round = 0; round < 60000; ++round) {
        const Bytes seed = kSeeds[round % std::size(kSeeds)];
        const Bytes document = Mutate(seed, random);
        try {
            ParseJson(document);
            ++parsed;
        } catch (const std::runtime_error& error) {
            ASSERT_EQ(kMessages.count(error.what()), 1u) << "round " << round << ": " << error.what();
            seenMessages.insert(error.what());
            ++refused;
        } catch (...) {
            FAIL() << "round " << round << " threw something else";
        }
    }
    // The mutations must actually reach both outcomes and most refusals.
    EXPECT_GT(parsed, 1000);
    EXPECT_GT(refused, 10000);
    EXPECT_GE(seenMessages.size(), 9u);
}

TEST(ParseJsonRobustness, EveryPrefixOfAValidDocumentIsHandled)
{
    const Bytes document = kSeeds[0];
    for (size_t length = 0; length < document.size(); ++length) {
        try {
            ParseJson(document.substr(0, length));
        } catch (const std::runtime_error& error) {
            ASSERT_EQ(kMessages.count(error.what()), 1u) << "prefix " << length << ": " << error.what();
        }
    }
}

}  // namespace
}  // namespace korvane
