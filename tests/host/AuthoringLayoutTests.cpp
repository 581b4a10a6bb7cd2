// Where the tool is found, and every way a built-in layout counts as damaged.
#include "HostFixtures.h"

#include "foundation/Paths.h"
#include "host/AuthoringLayout.h"

#include <gtest/gtest.h>

namespace korvane::hosttest {
namespace {

using testing::ScratchDirectory;

constexpr wchar_t kLayoutFile[] = L"Engine\\Korvane\\AuthoringLayout.json";
constexpr wchar_t kModuleList[] = L"Engine\\Binaries\\Win64\\UnrealEditor.modules";
constexpr wchar_t kTemplate[] = L"Engine\\Korvane\\Resources\\AuthoringTemplate\\KorvaneSDK.uproject";
constexpr wchar_t kBuiltinTool[] = L"Engine\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe";
constexpr wchar_t kPluginTool[] = L"Plugins\\Korvane\\Tools\\KorvaneTool\\KorvaneTool.exe";
constexpr wchar_t kRuntimeModule[] = L"Engine\\Binaries\\Win64\\UnrealEditor-KorvaneRuntime.dll";

constexpr char kLayout[] =
    "{\"schemaVersion\":1,\"layout\":\"builtin\",\"resourceRoot\":\"Engine/Korvane\","
    "\"modules\":[\"KorvaneRuntime\",\"KorvaneUI\",\"KorvaneBridge\",\"KorvaneAuthoring\"]}";
constexpr char kModules[] =
    "{\"BuildId\":\"27405482\",\"Modules\":{\"Core\":\"UnrealEditor-Core.dll\","
    "\"KorvaneRuntime\":\"UnrealEditor-KorvaneRuntime.dll\",\"KorvaneUI\":\"UnrealEditor-KorvaneUI.dll\","
    "\"KorvaneBridge\":\"UnrealEditor-KorvaneBridge.dll\",\"KorvaneAuthoring\":\"UnrealEditor-KorvaneAuthoring.dll\"}}";

// An install with the built-in layout whose every test passes; the tool itself is absent. Beside
// it lie stray files that the damaged module entries below point at.
void MakeWholeBuiltinLayout(TextView root)
{
    testing::WriteFileBytes(JoinPath(root, kLayoutFile), kLayout);
    testing::WriteFileBytes(JoinPath(root, kModuleList), kModules);
    testing::WriteFileBytes(JoinPath(root, kTemplate), "{}");
    MakeTree(JoinPath(root, L"Engine\\Binaries"), {L"x.dll", L"Win64\\sub\\x.dll", L"UnrealEditor-KorvaneRuntime.dll"});
    for (const wchar_t* module : {L"Runtime", L"UI", L"Bridge", L"Authoring"}) {
        Touch(JoinPath(root, Text(L"Engine\\Binaries\\Win64\\UnrealEditor-Korvane") + module + L".dll"));
    }
}

// A JSON document padded with blanks inside the object to exactly `size` bytes.
Bytes PaddedTo(BytesView document, size_t size)
{
    return Replace(document, "{", "{" + Bytes(size - document.size(), ' '));
}

TEST(ResolveToolPath, ThePluginToolWithoutALayoutFileAndTheEngineToolWithAWholeOne)
{
    ScratchDirectory scratch(L"layout-whole");
    const Text root = scratch / L"Install";
    testing::MakeDirectories(root);
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kPluginTool)) << "neither the file nor its folder exists";
    // The built-in tool in place, or a folder of the layout file's name, changes nothing.
    MakeTree(root, {kBuiltinTool, Text(kLayoutFile) + L"\\"});
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kPluginTool));

    RemoveDirectoryW(JoinPath(root, kLayoutFile).c_str());
    DeleteFileW(JoinPath(root, kBuiltinTool).c_str());
    MakeWholeBuiltinLayout(root);
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool)) << "whether or not the tool exists";
    MakeTree(root, {kBuiltinTool, kPluginTool});
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool));

    // Byte-order mark, CRLF, unknown keys, a string "1", and other modules that are anything.
    testing::WriteFileBytes(JoinPath(root, kLayoutFile),
        "\xEF\xBB\xBF{\r\n \"schemaVersion\": \"1\",\r\n \"layout\": \"builtin\", \"extra\": [1, {\"a\": null}],\r\n"
        " \"resourceRoot\": \"Engine/Korvane\",\r\n"
        " \"modules\": [\"KorvaneRuntime\", \"KorvaneUI\", \"KorvaneBridge\", \"KorvaneAuthoring\"]\r\n}\r\n");
    testing::WriteFileBytes(JoinPath(root, kModuleList),
        Replace(kModules, "\"Core\":\"UnrealEditor-Core.dll\"", "\"Core\":\"..\\\\..\\\\C:/x\",\"Other\":7"));
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool));

    // Limits hold to the byte: both files exactly at their limits still pass.
    testing::WriteFileBytes(JoinPath(root, kLayoutFile), PaddedTo(kLayout, 65536));
    testing::WriteFileBytes(JoinPath(root, kModuleList), PaddedTo(kModules, 8388608));
    EXPECT_EQ(ResolveToolPath(root), JoinPath(root, kBuiltinTool));
}

TEST(ResolveToolPath, AnyDamageToTheBuiltinLayoutGivesTheEmptyTextAndChangesNothing)
{
    constexpr char kRemoved[] = "<removed>";
    const std::pair<const wchar_t*, Bytes> damages[] = {
        {kLayoutFile, ""},
        {kLayoutFile, PaddedTo(kLayout, 65537)},
        {kLayoutFile, Bytes(kLayout).substr(1)},
        {kLayoutFile, "[1]"},
        {kLayoutFile, Replace(kLayout, "{", "{\"layout\":\"builtin\",")},
        {kLayoutFile, Replace(kLayout, "\"schemaVersion\":1", "\"schemaVersion\":2")},
        {kLayoutFile, Replace(kLayout, "\"schemaVersion\":1", "\"schemaVersion\":1.0")},
        {kLayoutFile, Replace(kLayout, "\"schemaVersion\":1,", "")},
        {kLayoutFile, Replace(kLayout, "\"builtin\"", "\"Builtin\"")},
        {kLayoutFile, Replace(kLayout, "Engine/Korvane", "Engine\\\\Korvane")},
        {kLayoutFile, Replace(kLayout, "\"KorvaneUI\",\"KorvaneBridge\"", "\"KorvaneBridge\",\"KorvaneUI\"")},
        {kLayoutFile, Replace(kLayout, "\"KorvaneAuthoring\"", "\"KorvaneAuthoring\",\"X\"")},
        {kModuleList, kRemoved},
        {kModuleList, ""},
        {kModuleList, PaddedTo(kModules, 8388609)},
        {kModuleList, Bytes(kModules) + ","},
        {kModuleList, Replace(kModules, "\"Core\":", "\"KorvaneUI\":\"a.dll\",\"Core\":")},
        {kModuleList, Replace(kModules, "\"27405482\"", "\"\"")},
        {kModuleList, Replace(kModules, "\"BuildId\":\"27405482\",", "")},
        // Module entries that lead out of Engine\Binaries\Win64\ to files that exist, or name nothing.
        {kModuleList, Replace(kModules, "UnrealEditor-KorvaneBridge.dll", "..\\\\x.dll")},
        {kModuleList, Replace(kModules, "UnrealEditor-KorvaneBridge.dll", "C:x.dll")},
        {kModuleList, Replace(kModules, "UnrealEditor-KorvaneBridge.dll", "sub/x.dll")},
        {kModuleList, Replace(kModules, "UnrealEditor-KorvaneUI.dll", "")},
        {kModuleList, Replace(kModules, "\"KorvaneAuthoring\":", "\"KorvaneAuthoringX\":")},
        // A module file only in another engine folder; the template gone while the tool is in place.
        {kRuntimeModule, kRemoved},
        {kTemplate, kRemoved},
    };
    for (const auto& [file, bytes] : damages) {
        SCOPED_TRACE(TextToUtf8(file) + ": " + bytes.substr(0, 200));
        ScratchDirectory scratch(L"layout-damage");
        const Text root = scratch / L"Install";
        MakeWholeBuiltinLayout(root);
        Touch(JoinPath(root, kBuiltinTool));
        if (bytes == kRemoved) {
            DeleteFileW(JoinPath(root, file).c_str());
        } else {
            testing::WriteFileBytes(JoinPath(root, file), bytes);
        }
        const auto before = SnapshotTree(scratch.Path());
        EXPECT_EQ(ResolveToolPath(root), L"");
        EXPECT_EQ(SnapshotTree(scratch.Path()), before);
    }
}

}  // namespace
}  // namespace korvane::hosttest
