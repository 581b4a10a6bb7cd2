// Throughput of the launcher's JSON reader against nlohmann::json on the same bytes, in the
// same run: an sdk-preview-shaped document of 8 MiB and a deeply nested one.
#include "BenchTiming.h"
#include "foundation/Json.h"
#include "foundation/Text.h"

#include <nlohmann/json.hpp>

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using korvane::bench::Median;
using korvane::bench::NowMs;

using korvane::Bytes;

std::string Hex32(unsigned seed)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    unsigned state = seed * 2654435761u + 12345u;
    for (int index = 0; index < 32; ++index) {
        state = state * 1103515245u + 12345u;
        text += digits[(state >> 16) & 15u];
    }
    return text;
}

// Thousands of Mod objects with paths, versions and Chinese names, as sdk-preview answers.
Bytes MakePreviewDocument(std::size_t targetBytes)
{
    Bytes out = "{\"ok\":true,\"sdk\":{\"title\":\"Starfall Outpost SDK\",\"titleZh\":\"星落前哨 SDK\","
                "\"gameVersion\":\"1.8.2\",\"engineVersion\":\"5.6.1\",\"editorBuildId\":\"37670630\"},\"mods\":[";
    for (unsigned index = 0; out.size() < targetBytes; ++index) {
        if (index != 0) {
            out += ',';
        }
        const std::string number = std::to_string(index);
        out += "{\"id\":\"mod." + Hex32(index) + "\",\"name\":\"Outpost Expansion " + number +
               "\",\"nameZh\":\"前哨扩展包 " + number + "（测试版）\",\"author\":\"Studio \\\"North\\\" " + number +
               "\",\"version\":\"1." + std::to_string(index % 17) + ".0\",\"supportedVersions\":[\"1.7\",\"1.8\"],"
               "\"package\":\"C:\\\\Users\\\\Author\\\\Documents\\\\Korvane\\\\Mods\\\\Outpost" + number +
               "\\\\Outpost" + number + ".umod\",\"cover\":\"Mods/Outpost" + number + "/Cover.png\","
               "\"icon\":\"Mods/Outpost" + number + "/Icon.png\",\"size\":" + std::to_string(1048576 + index * 31) +
               ",\"enabled\":" + (index % 3 == 0 ? "false" : "true") + ",\"notes\":null,\"escaped\":\"\\u00e9\\ud83d\\ude00\\n\"}";
    }
    out += "]}";
    return out;
}

// Arrays and objects nested to the reader's limit, repeated side by side.
Bytes MakeNestedDocument(std::size_t targetBytes)
{
    Bytes one;
    for (int depth = 0; depth < 30; ++depth) {
        one += "{\"k\":[";
    }
    one += "1";
    for (int depth = 0; depth < 30; ++depth) {
        one += "]}";
    }
    Bytes out = "[";
    while (out.size() < targetBytes) {
        if (out.size() > 1) {
            out += ',';
        }
        out += one;
    }
    out += "]";
    return out;
}

template <typename Parse>
double BestMs(int rounds, Parse parse)
{
    double best = 1e300;
    for (int round = 0; round < rounds; ++round) {
        const double start = NowMs();
        parse();
        best = std::min(best, NowMs() - start);
    }
    return best;
}

void Compare(const char* label, const Bytes& document)
{
    const int rounds = 5;
    std::size_t sink = 0;
    const double ours = BestMs(rounds, [&] {
        const korvane::JsonValue value = korvane::ParseJson(document);
        sink += value.items.size() + value.members.size();
    });
    const double theirs = BestMs(rounds, [&] {
        const nlohmann::json value = nlohmann::json::parse(document);
        sink += value.size();
    });
    const double decode = BestMs(rounds, [&] { sink += korvane::Utf8ToText(document).size(); });
    std::printf("  (UTF-8 to UTF-16 alone: %.1f ms)\n", decode);
    const double megabytes = static_cast<double>(document.size()) / 1048576.0;
    std::printf("%-10s %6.2f MiB  ParseJson %7.1f ms (%6.1f MB/s)  nlohmann %7.1f ms (%6.1f MB/s)  "
                "time ratio ours/nlohmann %.2f  [sink %zu]\n",
        label, megabytes, ours, megabytes * 1000.0 / ours, theirs, megabytes * 1000.0 / theirs, ours / theirs, sink);
}

}  // namespace

int wmain()
{
    std::printf("best of 5 rounds each, same bytes, same process; ratio < 1 means ParseJson is faster\n");
    Compare("preview", MakePreviewDocument(8u * 1048576u));
    Compare("nested", MakeNestedDocument(8u * 1048576u));
    return 0;
}
