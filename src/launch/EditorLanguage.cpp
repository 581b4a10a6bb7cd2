#include "launch/EditorLanguage.h"

namespace korvane {

Text RequestedEditorLanguage(TextView runLanguage, TextView savedLanguage, std::span<const Text> passThroughArguments)
{
    constexpr TextView kCultureOption = L"-culture=";
    constexpr TextView kLanguageOption = L"-language=";
    Text requested(!runLanguage.empty() ? runLanguage : !savedLanguage.empty() ? savedLanguage : TextView(L"en"));
    for (const Text& argument : passThroughArguments) {
        if (StartsWithIgnoringCase(argument, kCultureOption)) {
            requested = argument.substr(kCultureOption.size());
        } else if (StartsWithIgnoringCase(argument, kLanguageOption)) {
            requested = argument.substr(kLanguageOption.size());
        }
    }
    return requested;
}

}  // namespace korvane
