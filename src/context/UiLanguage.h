#pragma once
// The one process-wide value: which of its two languages the launcher speaks. Code without
// a LaunchContext at hand (messages deep in a tool run, say) reads it at the moment of use.

#include "foundation/Text.h"

#include <atomic>
#include <cstdint>

namespace korvane {

// 0 English, 1 Simplified Chinese. Written only by atomic exchange, read without a lock.
extern std::atomic<std::int32_t> UiLanguageFlag;

bool IsChineseUi() noexcept;
// Stores 1 exactly when `languageCode` is "zh-Hans" (case respected), else 0.
void SetUiLanguage(TextView languageCode) noexcept;
bool IsChineseLanguageCode(TextView languageCode) noexcept;

// A user-visible text in both of the launcher's languages.
struct LocalizedText {
    const wchar_t* english;
    const wchar_t* chinese;

    // A text that exists in English only has no Chinese form and keeps its English one.
    Text In(bool useChinese) const { return useChinese && chinese != nullptr ? chinese : english; }
    // The form for the language of this moment.
    Text Now() const { return In(IsChineseUi()); }
};

}  // namespace korvane
