#include "context/UiLanguage.h"

namespace korvane {

std::atomic<std::int32_t> UiLanguageFlag{0};

bool IsChineseUi() noexcept
{
    return UiLanguageFlag.load(std::memory_order_seq_cst) == 1;
}

bool IsChineseLanguageCode(TextView languageCode) noexcept
{
    return languageCode == L"zh-Hans";
}

void SetUiLanguage(TextView languageCode) noexcept
{
    UiLanguageFlag.exchange(IsChineseLanguageCode(languageCode) ? 1 : 0, std::memory_order_seq_cst);
}

}  // namespace korvane
