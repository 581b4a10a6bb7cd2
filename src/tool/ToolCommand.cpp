#include "tool/ToolCommand.h"

#include <span>

namespace korvane {
namespace {

enum class Presence {
    Always,    // quoted, even when empty
    IfGiven,   // left out, word and value, when empty
    BareWord,  // a fixed word of the tool's, not quoted
};

struct ArgumentRule {
    const wchar_t* option;
    TextView ToolArguments::*value;
    Presence presence;
};

constexpr ArgumentRule kSdkPreviewRules[] = {
    {L"--sdk", &ToolArguments::sdk, Presence::Always},
    {L"--game-root", &ToolArguments::gameRoot, Presence::IfGiven},
};
constexpr ArgumentRule kListSourcesRules[] = {
    {L"--sdk", &ToolArguments::sdk, Presence::Always},
    {L"--editor-root", &ToolArguments::editorRoot, Presence::Always},
    {L"--game-root", &ToolArguments::gameRoot, Presence::IfGiven},
};
constexpr ArgumentRule kResolveSourceRules[] = {
    {L"--sdk", &ToolArguments::sdk, Presence::Always},
    {L"--mod-file", &ToolArguments::modFile, Presence::Always},
    {L"--resolution", &ToolArguments::resolution, Presence::BareWord},
};
constexpr ArgumentRule kPrepareRules[] = {
    {L"--sdk", &ToolArguments::sdk, Presence::Always},
    {L"--editor-root", &ToolArguments::editorRoot, Presence::Always},
    {L"--selection-file", &ToolArguments::selectionFile, Presence::Always},
    {L"--game-root", &ToolArguments::gameRoot, Presence::IfGiven},
    {L"--mod-file", &ToolArguments::modFile, Presence::Always},
    // Without a name the run simply goes without live progress or timing.
    {L"--progress-file", &ToolArguments::progressFile, Presence::Always},
    {L"--timing-report", &ToolArguments::timingReport, Presence::Always},
};
constexpr ArgumentRule kCreateRules[] = {
    {L"--sdk", &ToolArguments::sdk, Presence::Always},
    {L"--game-root", &ToolArguments::gameRoot, Presence::IfGiven},
    {L"--editor-root", &ToolArguments::editorRoot, Presence::Always},
    {L"--cover", &ToolArguments::cover, Presence::IfGiven},
    {L"--name", &ToolArguments::name, Presence::Always},
    {L"--author-name", &ToolArguments::authorName, Presence::Always},
    {L"--output-file", &ToolArguments::outputFile, Presence::IfGiven},
};
constexpr ArgumentRule kImportSourceRules[] = {
    {L"--sdk", &ToolArguments::sdk, Presence::Always},
    {L"--game-root", &ToolArguments::gameRoot, Presence::IfGiven},
    {L"--editor-root", &ToolArguments::editorRoot, Presence::Always},
    {L"--mod-file", &ToolArguments::modFile, Presence::Always},
};
constexpr ArgumentRule kSdkInfoRules[] = {
    {L"--sdk", &ToolArguments::sdk, Presence::Always},
    {L"--editor-root", &ToolArguments::editorRoot, Presence::Always},
};

struct CommandRow {
    const wchar_t* words;
    std::span<const ArgumentRule> rules;
};

CommandRow RowOf(ToolCommandKind kind) noexcept
{
    switch (kind) {
    case ToolCommandKind::SdkPreview:
        return {L"sdk-preview", kSdkPreviewRules};
    case ToolCommandKind::ListSources:
        return {L"list-sources", kListSourcesRules};
    case ToolCommandKind::ResolveSource:
        return {L"resolve-source", kResolveSourceRules};
    case ToolCommandKind::Prepare:
        return {L"prepare", kPrepareRules};
    case ToolCommandKind::Create:
        return {L"create", kCreateRules};
    case ToolCommandKind::TranslationsCreate:
        return {L"translations create", kCreateRules};
    case ToolCommandKind::ImportSource:
        return {L"import-source", kImportSourceRules};
    case ToolCommandKind::SdkInfo:
        return {L"sdk-info", kSdkInfoRules};
    }
    return {L"", {}};
}

void AppendArguments(Text& command, std::span<const ArgumentRule> rules, const ToolArguments& arguments)
{
    for (const ArgumentRule& rule : rules) {
        const TextView value = arguments.*rule.value;
        if (rule.presence == Presence::IfGiven && value.empty()) {
            continue;
        }
        command += L' ';
        command += rule.option;
        command += L' ';
        command += rule.presence == Presence::BareWord ? Text(value) : QuoteCommandArgument(value);
    }
}

}  // namespace

Text BuildToolCommand(ToolCommandKind kind, const ToolArguments& arguments)
{
    const CommandRow row = RowOf(kind);
    Text command = row.words;
    AppendArguments(command, row.rules, arguments);
    return command;
}

Text BuildSdkArguments(TextView sdk, TextView gameDirectory)
{
    Text arguments;
    AppendArguments(arguments, kSdkPreviewRules, ToolArguments{.sdk = sdk, .gameRoot = gameDirectory});
    return arguments;
}

}  // namespace korvane
