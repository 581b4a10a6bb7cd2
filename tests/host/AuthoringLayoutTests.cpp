// Where the tool is found, and every way a built-in layout counts as damaged.
#include "HostFixtures.h"
#include "TestSupport.h"

#include "foundation/Paths.h"
#include "host/AuthoringLayout.h"

#include <gtest/gtest.h>

#include <functional>

namespace korvane {
namespace {

using testing::ScratchDirectory;

constexpr wchar_t kLayoutFile[] = L"Engine\\Korvane\\AuthoringLayout.json";
constexpr wchar_t kModuleList[] = L"Engine\\Binaries\\Win64\\UnrealEditor.modules";
constexpr wchar_t kTemplate[] = L"Engine\\Korvane\\Resources\\AuthoringTemplate\\KorvaneSDK.uproject";
constexpr wchar_t kBuiltinTool[] = L"Engine\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe";
constexpr wchar_t kPluginTool[] = L"Plugins\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe";

constexpr char kWholeLayout[] =
    "{\"schemaVersion\":1,\"layout\":\"builtin\",\"resourceRoot\":\"Engine/Korvane\","
    "\"modules\":[\"KorvaneRuntime\",\"KorvaneUI\",\"KorvaneBridge\",\"KorvaneAuthoring\"]}";
constexpr char kWholeModuleList[] =
    "{\"BuildId\":\"27405482\",\"Modules\":{\"Core\":\"UnrealEditor-Core.dll\","
    "\"KorvaneRuntime\":\"UnrealEditor-KorvaneRuntime.dll\",\"KorvaneUI\":\"UnrealEditor-KorvaneUI.dll\","
    "\"KorvaneBridge\":\"UnrealEditor-KorvaneBridge.dll\",\"KorvaneAuthoring\":\"UnrealEditor-KorvaneAuthoring.dll\"}}";

// An install with the built-in layout whose every test passes; the tool itself is absent.
void MakeWholeBuiltinLayout(TextView root)
{
    testing::WriteFileBytes(JoinPath(root, kLayoutFile), kWholeLayout);
    testing::WriteFileBytes(JoinPath(root, kModuleList), kWholeModuleList);
    for (const wchar_t* module : {L"KorvaneRuntime", L"KorvaneUI", L"KorvaneBridge", L"KorvaneAuthoring"}) {
        hosttest::Touch(JoinPath(root, Text(L"Engine\\Binaries\\Win64\\UnrealEditor-") + module + L".dll"));
    }
    testing::WriteFileBytes(JoinPath(root, kTemplate), "{}");
}

// A JSON document padded with blanks inside the object to exactly `size` bytes.
Bytes PaddedTo(BytesView document, size_t size)
{
    Bytes padded(document.substr(0, 1));
    padded.append(size - document.size(), ' ');
    padded.append(document.substr(1));
    return padded;
}

Bytes Replace(BytesView text, BytesView from, BytesView to)
{
    Bytes result(text);
    const size_t at = result.find(from);
    EXPECT_NE(at, Bytes::npos) << from;
    if (at != Bytes::npos) {
        result.replace(at, from.size(), to);
    }
    return result;
}

TEST(ResolveToolPath, WithoutALayoutFileNamesThePluginToolUntested)
{
    ScratchDirectory scratch(L"layout-plugin");
    const Text root = scratch / L"Install";
    testing::MakeDirectories(root);
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kPluginTool)) << "neither the file nor its folder exists";

    // The built-in tool in place does not matter without the layout file.
    hosttest::Touch(JoinPath(root, kBuiltinTool));
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kPluginTool));

    // A folder of the layout file's name is no layout file.
    testing::MakeDirectories(JoinPath(root, kLayoutFile));
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kPluginTool));
}

TEST(ResolveToolPath, AWholeBuiltinLayoutNamesTheEngineTool)
{
    ScratchDirectory scratch(L"layout-whole");
    const Text root = scratch / L"Install";
    MakeWholeBuiltinLayout(root);
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool)) << "whether or not the tool exists";
    hosttest::Touch(JoinPath(root, kBuiltinTool));
    hosttest::Touch(JoinPath(root, kPluginTool));
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool));

    // Byte-order mark, CRLF, unknown keys, a string "1", and other modules that are anything.
    testing::WriteFileBytes(JoinPath(root, kLayoutFile),
        "\xEF\xBB\xBF{\r\n \"schemaVersion\": \"1\",\r\n \"layout\": \"builtin\", \"extra\": [1, {\"a\": null}],\r\n"
        " \"resourceRoot\": \"Engine/Korvane\",\r\n"
        " \"modules\": [\"KorvaneRuntime\", \"KorvaneUI\", \"KorvaneBridge\", \"KorvaneAuthoring\"]\r\n}\r\n");
    testing::WriteFileBytes(JoinPath(root, kModuleList),
        Replace(kWholeModuleList, "\"Core\":\"UnrealEditor-Core.dll\"", "\"Core\":\"..\\\\..\\\\C:/x\",\"Other\":7"));
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool));

    // Limits hold to the byte: both files exactly at their limits still pass.
    testing::WriteFileBytes(JoinPath(root, kLayoutFile), PaddedTo(kWholeLayout, 65536));
    testing::WriteFileBytes(JoinPath(root, kModuleList), PaddedTo(kWholeModuleList, 8388608));
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool));
}

struct Damage {
    const char* name;
    std::function<void(TextView root)> apply;
};

void WriteLayout(TextView root, BytesView bytes)
{
    testing::WriteFileBytes(JoinPath(root, kLayoutFile), bytes);
}

void WriteModuleList(TextView root, BytesView bytes)
{
    testing::WriteFileBytes(JoinPath(root, kModuleList), bytes);
}

TEST(ResolveToolPath, AnyDamageToTheBuiltinLayoutGivesTheEmptyTextAndChangesNothing)
{
    const Damage damages[] = {
        {"empty layout file", [](TextView root) { WriteLayout(root, ""); }},
        {"layout file one byte over", [](TextView root) { WriteLayout(root, PaddedTo(kWholeLayout, 65537)); }},
        {"malformed layout", [](TextView root) { WriteLayout(root, Bytes(kWholeLayout).substr(1)); }},
        {"layout is an array", [](TextView root) { WriteLayout(root, "[1]"); }},
        {"duplicate key in layout",
            [](TextView root) { WriteLayout(root, Replace(kWholeLayout, "{", "{\"layout\":\"builtin\",")); }},
        {"schema version 2",
            [](TextView root) { WriteLayout(root, Replace(kWholeLayout, "\"schemaVersion\":1", "\"schemaVersion\":2")); }},
        {"schema version 1.0",
            [](TextView root) { WriteLayout(root, Replace(kWholeLayout, "\"schemaVersion\":1", "\"schemaVersion\":1.0")); }},
        {"schema version missing",
            [](TextView root) { WriteLayout(root, Replace(kWholeLayout, "\"schemaVersion\":1,", "")); }},
        {"layout Builtin",
            [](TextView root) { WriteLayout(root, Replace(kWholeLayout, "\"builtin\"", "\"Builtin\"")); }},
        {"resource root with a backslash",
            [](TextView root) { WriteLayout(root, Replace(kWholeLayout, "Engine/Korvane", "Engine\\\\Korvane")); }},
        {"modules in another order",
            [](TextView root) {
                WriteLayout(root, Replace(kWholeLayout, "\"KorvaneUI\",\"KorvaneBridge\"", "\"KorvaneBridge\",\"KorvaneUI\""));
            }},
        {"a fifth module",
            [](TextView root) { WriteLayout(root, Replace(kWholeLayout, "\"KorvaneAuthoring\"", "\"KorvaneAuthoring\",\"X\"")); }},
        {"three modules",
            [](TextView root) { WriteLayout(root, Replace(kWholeLayout, ",\"KorvaneAuthoring\"", "")); }},
        {"modules is an object",
            [](TextView root) {
                WriteLayout(root, "{\"schemaVersion\":1,\"layout\":\"builtin\",\"resourceRoot\":\"Engine/Korvane\","
                                  "\"modules\":{\"a\":\"KorvaneRuntime\",\"b\":\"KorvaneUI\",\"c\":\"KorvaneBridge\","
                                  "\"d\":\"KorvaneAuthoring\"}}");
            }},
        {"module list missing", [](TextView root) { DeleteFileW(JoinPath(root, kModuleList).c_str()); }},
        {"module list empty", [](TextView root) { WriteModuleList(root, ""); }},
        {"module list one byte over",
            [](TextView root) { WriteModuleList(root, PaddedTo(kWholeModuleList, 8388609)); }},
        {"module list malformed", [](TextView root) { WriteModuleList(root, Bytes(kWholeModuleList) + ","); }},
        {"duplicate key deep in the module list",
            [](TextView root) {
                WriteModuleList(root, Replace(kWholeModuleList, "\"Core\":", "\"KorvaneUI\":\"a.dll\",\"Core\":"));
            }},
        {"BuildId empty",
            [](TextView root) { WriteModuleList(root, Replace(kWholeModuleList, "\"27405482\"", "\"\"")); }},
        {"BuildId missing",
            [](TextView root) { WriteModuleList(root, Replace(kWholeModuleList, "\"BuildId\":\"27405482\",", "")); }},
        {"module entry leaves the folder",
            [](TextView root) {
                hosttest::Touch(JoinPath(root, L"Engine\\Binaries\\x.dll"));
                WriteModuleList(root, Replace(kWholeModuleList, "UnrealEditor-KorvaneBridge.dll", "..\\\\x.dll"));
            }},
        {"module entry with a drive",
            [](TextView root) {
                WriteModuleList(root, Replace(kWholeModuleList, "UnrealEditor-KorvaneBridge.dll", "C:x.dll"));
            }},
        {"module entry with a forward slash",
            [](TextView root) {
                hosttest::Touch(JoinPath(root, L"Engine\\Binaries\\Win64\\sub\\x.dll"));
                WriteModuleList(root, Replace(kWholeModuleList, "UnrealEditor-KorvaneBridge.dll", "sub/x.dll"));
            }},
        {"module entry empty",
            [](TextView root) { WriteModuleList(root, Replace(kWholeModuleList, "UnrealEditor-KorvaneUI.dll", "")); }},
        {"module entry missing",
            [](TextView root) {
                WriteModuleList(root, Replace(kWholeModuleList, "\"KorvaneAuthoring\":", "\"KorvaneAuthoringX\":"));
            }},
        {"module file in another engine folder",
            [](TextView root) {
                const Text moved = JoinPath(root, L"Engine\\Binaries\\Win64\\UnrealEditor-KorvaneRuntime.dll");
                DeleteFileW(moved.c_str());
                hosttest::Touch(JoinPath(root, L"Engine\\Binaries\\UnrealEditor-KorvaneRuntime.dll"));
            }},
        {"module file is a folder",
            [](TextView root) {
                const Text file = JoinPath(root, L"Engine\\Binaries\\Win64\\UnrealEditor-KorvaneAuthoring.dll");
                DeleteFileW(file.c_str());
                testing::MakeDirectories(file);
            }},
        {"authoring template removed",
            [](TextView root) {
                hosttest::Touch(JoinPath(root, kBuiltinTool));
                DeleteFileW(JoinPath(root, kTemplate).c_str());
            }},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.name);
        ScratchDirectory scratch(L"layout-damage");
        const Text root = scratch / L"Install";
        MakeWholeBuiltinLayout(root);
        damage.apply(root);
        const auto before = hosttest::SnapshotTree(scratch.Path());
        EXPECT_EQ(ResolveToolPath(root), L"");
        EXPECT_EQ(hosttest::SnapshotTree(scratch.Path()), before);
    }
}

}  // namespace
}  // namespace korvane
