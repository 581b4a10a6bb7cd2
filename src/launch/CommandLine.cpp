#include "launch/EntryOptions.h"

#include "context/LaunchContext.h"
#include "context/UiLanguage.h"
#include "language/LanguageChoice.h"

#include <cwchar>
#include <iterator>

namespace korvane {

bool ParseDecimal(TextView text, std::uint32_t& value) noexcept
{
    if (text.empty()) {
        return false;
    }
    std::uint64_t result = 0;
    for (const wchar_t unit : text) {
        if (unit < L'0' || unit > L'9') {
            return false;
        }
        result = result * 10 + static_cast<std::uint64_t>(unit - L'0');
        if (result > 0xFFFFFFFFull) {
            return false;
        }
    }
    value = static_cast<std::uint32_t>(result);
    return true;
}

namespace {

enum class Match {
    Exact,         // whole argument, case-sensitive
    Prefix,        // begins with the text; the remainder, possibly empty, is the value
    NocasePrefix,  // strictly longer than the text and begins with it, A to Z folded
};

using Apply = void (*)(TextView value, EntryOptions& options, LaunchContext& context);

struct OptionRow {
    const wchar_t* text;
    Match match;
    Apply apply;
};

void StoreDpi(TextView value, std::uint32_t& target)
{
    std::uint32_t dpi = 0;
    if (ParseDecimal(value, dpi) && (dpi == 96 || dpi == 144 || dpi == 192)) {
        target = dpi;
    }
}

void StorePreviewTime(TextView value, std::uint32_t& target)
{
    std::uint32_t milliseconds = 0;
    if (ParseDecimal(value, milliseconds) && milliseconds >= 250 && milliseconds <= 60000) {
        target = milliseconds;
    }
}

// The options that a plain match decides, in the order they are tried. The `-sdk` look-ahead,
// a positional .kvsdk, a .uproject and the pass-through words need more than a match and are
// handled in ParseEntryArguments, at their places in the order: `-KorvaneModFile=` is tried
// after the first two.
constexpr OptionRow kLeadingRows[] = {
    {L"-KorvaneEmptyHost", Match::Exact, [](TextView, EntryOptions& o, LaunchContext&) { o.emptyHost = true; }},
    {L"-KorvaneResolveHostContext", Match::Exact,
        [](TextView, EntryOptions& o, LaunchContext&) {
            o.resolveHostContext = true;
            o.headless = true;
        }},
    {L"-KorvaneHostContextReport=", Match::Prefix,
        [](TextView v, EntryOptions& o, LaunchContext&) { o.hostContextReportPath = v; }},
    {L"-KorvanePickerPreview", Match::Exact, [](TextView, EntryOptions&, LaunchContext& c) { c.pickerPreview = true; }},
    {L"-KorvanePickerPreviewHidden", Match::Exact,
        [](TextView, EntryOptions&, LaunchContext& c) { c.pickerPreviewHidden = true; }},
    {L"-KorvanePickerSnapshot=", Match::Prefix, [](TextView v, EntryOptions&, LaunchContext& c) { c.pickerSnapshot = v; }},
    {L"-KorvanePickerFixture=", Match::Prefix, [](TextView v, EntryOptions&, LaunchContext& c) { c.pickerFixture = v; }},
    {L"-KorvanePickerReport=", Match::Prefix, [](TextView v, EntryOptions&, LaunchContext& c) { c.pickerReport = v; }},
    {L"-KorvanePickerPreviewMs=", Match::Prefix,
        [](TextView v, EntryOptions&, LaunchContext& c) { StorePreviewTime(v, c.pickerPreviewMs); }},
    {L"-KorvanePickerPreviewDpi=", Match::Prefix,
        [](TextView v, EntryOptions&, LaunchContext& c) { StoreDpi(v, c.previewDpi); }},
    {L"-KorvanePickerPreviewLanguage=", Match::Prefix,
        [](TextView v, EntryOptions&, LaunchContext& c) {
            c.language = ResolveLanguage(c.languages, v);
            SetUiLanguage(c.language);
        }},
    {L"-KorvaneStartupPreview", Match::Exact, [](TextView, EntryOptions& o, LaunchContext&) { o.startupPreview = true; }},
    {L"-KorvaneStartupPreviewNoBackground", Match::Exact,
        [](TextView, EntryOptions& o, LaunchContext&) { o.startupPreviewOptions.noBackground = true; }},
    {L"-KorvaneStartupPreviewLanguage=", Match::Prefix,
        [](TextView v, EntryOptions& o, LaunchContext&) { o.startupPreviewOptions.chinese = EqualsIgnoringCase(v, L"zh-Hans"); }},
    {L"-KorvaneStartupPreviewDpi=", Match::Prefix,
        [](TextView v, EntryOptions& o, LaunchContext&) { StoreDpi(v, o.startupPreviewOptions.dpi); }},
    {L"-KorvaneStartupPreviewMs=", Match::Prefix,
        [](TextView v, EntryOptions& o, LaunchContext&) { StorePreviewTime(v, o.startupPreviewOptions.durationMs); }},
    {L"-KorvaneStartupReport=", Match::Prefix, [](TextView v, EntryOptions& o, LaunchContext&) { o.startupPreviewOptions.reportPath = v; }},
    {L"-KorvaneStartupPhase=", Match::Prefix, [](TextView v, EntryOptions& o, LaunchContext&) { o.startupPreviewOptions.phaseText = v; }},
    {L"-KorvaneLauncherCheck", Match::Exact, [](TextView, EntryOptions& o, LaunchContext&) { o.headless = true; }},
    {L"-KorvaneInstanceCheck", Match::Exact,
        [](TextView, EntryOptions& o, LaunchContext&) {
            o.instanceCheck = true;
            o.headless = true;
        }},
    {L"-KorvaneWaitForEditorPid=", Match::Prefix,
        [](TextView v, EntryOptions& o, LaunchContext&) {
            // wcstoul, base 10: unparsable text gives 0, a leading number is taken.
            o.waitForEditorPid = static_cast<std::uint32_t>(std::wcstoul(Text(v).c_str(), nullptr, 10));
        }},
    {L"-KorvaneGameDir=", Match::NocasePrefix,
        [](TextView v, EntryOptions& o, LaunchContext&) { o.requestedGameDirectory = v; }},
    {L"-sdk=", Match::NocasePrefix, [](TextView v, EntryOptions&, LaunchContext& c) { c.requestedSdk = v; }},
    {L"-KorvaneSelectedMod=", Match::NocasePrefix, [](TextView v, EntryOptions&, LaunchContext& c) { c.selectedMod = v; }},
};

constexpr OptionRow kModFileRow = {
    L"-KorvaneModFile=", Match::Prefix, [](TextView v, EntryOptions&, LaunchContext& c) { c.modFile = v; }};

// Gives the value when `argument` matches `row`.
bool MatchRow(const OptionRow& row, TextView argument, TextView& value)
{
    const TextView text(row.text);
    switch (row.match) {
    case Match::Exact:
        if (argument == text) {
            value = {};
            return true;
        }
        return false;
    case Match::Prefix:
        if (argument.starts_with(text)) {
            value = argument.substr(text.size());
            return true;
        }
        return false;
    case Match::NocasePrefix:
        if (argument.size() > text.size() && StartsWithIgnoringCase(argument, text)) {
            value = argument.substr(text.size());
            return true;
        }
        return false;
    }
    return false;
}

bool ApplyFirstMatch(const OptionRow* first, const OptionRow* last, TextView argument, EntryOptions& options,
    LaunchContext& context)
{
    for (const OptionRow* row = first; row != last; ++row) {
        TextView value;
        if (MatchRow(*row, argument, value)) {
            row->apply(value, options, context);
            return true;
        }
    }
    return false;
}

}  // namespace

ArgumentsOutcome ParseEntryArguments(const std::vector<Text>& arguments, EntryOptions& options, LaunchContext& context)
{
    for (size_t index = 0; index < arguments.size(); ++index) {
        const TextView argument(arguments[index]);
        if (ApplyFirstMatch(std::begin(kLeadingRows), std::end(kLeadingRows), argument, options, context)) {
            continue;
        }
        // `-sdk` takes the next argument without testing it; as the last argument it falls
        // through to the tests below and ends as a pass-through word.
        if (EqualsIgnoringCase(argument, L"-sdk") && index + 1 < arguments.size()) {
            context.requestedSdk = arguments[++index];
            continue;
        }
        if (EndsWithIgnoringCase(argument, L".kvsdk")) {
            context.requestedSdk = argument;
            continue;
        }
        if (ApplyFirstMatch(&kModFileRow, &kModFileRow + 1, argument, options, context)) {
            continue;
        }
        if (EndsWithIgnoringCase(argument, L".uproject")) {
            return ArgumentsOutcome::ProjectFileGiven;
        }
        context.passThroughArguments.emplace_back(argument);
    }
    return ArgumentsOutcome::Complete;
}

}  // namespace korvane
