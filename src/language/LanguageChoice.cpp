#include "language/LanguageChoice.h"

namespace korvane {

std::vector<LanguageRow> ListEditorLanguages(TextView /*editorRoot*/, TextView /*version*/)
{
    return {LanguageRow{L"en", L"English"}};
}

Text ResolveLanguage(const std::vector<LanguageRow>& /*languages*/, TextView /*requested*/)
{
    return L"en";
}

Text EditorSettingsPath(TextView /*editorRoot*/)
{
    return {};
}

}  // namespace korvane
