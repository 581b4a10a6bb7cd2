#include "language/EditorSettingsFile.h"

namespace korvane {

Text ReadEditorLanguageSetting(TextView /*path*/)
{
    return {};
}

bool SaveEditorLanguageSetting(TextView /*path*/, TextView /*languageCode*/)
{
    return false;
}

}  // namespace korvane
