#include "tool/SelectionFile.h"

#include "foundation/Paths.h"
#include "foundation/UniqueResource.h"

#include <windows.h>

namespace korvane {
namespace {

constexpr std::size_t kModIdLength = 36;

void AddLine(BytesView line, std::vector<Text>& lines)
{
    if (line.empty()) {
        return;
    }
    Text text = Utf8ToText(line);
    if (!text.empty()) {
        lines.push_back(std::move(text));
    }
}

}  // namespace

std::vector<Text> SelectionFileLines(BytesView content)
{
    std::vector<Text> lines;
    std::size_t begin = 0;
    for (std::size_t end = content.find('\n'); end != BytesView::npos; end = content.find('\n', begin)) {
        BytesView line = content.substr(begin, end - begin);
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        AddLine(line, lines);
        begin = end + 1;
    }
    AddLine(content.substr(begin), lines);
    return lines;
}

std::optional<WorkspaceSelection> JudgeSelectionFile(BytesView content, TextView selectedMod)
{
    if (content.size() < kSelectionFileMinimum || content.size() >= kSelectionFileReadSize) {
        return std::nullopt;
    }
    std::vector<Text> lines = SelectionFileLines(content);
    if (lines.size() != 3) {
        return std::nullopt;
    }
    WorkspaceSelection selection{std::move(lines[0]), std::move(lines[1]), std::move(lines[2])};
    if (!EndsWithIgnoringCase(selection.modProjectFile, L"\\Mod.kmodproject")
        || !IsRegularFile(selection.modProjectFile)) {
        return std::nullopt;
    }
    if (!EndsWithIgnoringCase(selection.editorProject, L"\\KorvaneSDK.uproject")
        || !IsRegularFile(selection.editorProject)) {
        return std::nullopt;
    }
    if (selection.modId.size() != kModIdLength || !selection.modId.starts_with(L"mod.")) {
        return std::nullopt;
    }
    if (!selectedMod.empty() && selection.modId != selectedMod) {
        return std::nullopt;
    }
    return selection;
}

Bytes ReadSelectionFile(TextView path)
{
    const Text ownPath(path);
    const UniqueFileHandle file(
        CreateFileW(ownPath.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        return {};
    }
    Bytes content(kSelectionFileReadSize, '\0');
    DWORD read = 0;
    if (!ReadFile(file.Get(), content.data(), kSelectionFileReadSize, &read, nullptr)) {
        return {};
    }
    content.resize(read);
    return content;
}

}  // namespace korvane
