#include "startup/CacheStatus.h"

#include "context/UiLanguage.h"

namespace korvane {

Text CacheStatusText(std::int32_t cacheHit, bool verified, bool chinese)
{
    static constexpr LocalizedText kHitVerifying{L"SDK cache hit, verifying", L"SDK 缓存命中，正在校验"};
    static constexpr LocalizedText kHitVerified{L"SDK cache hit, fully verified", L"SDK 缓存命中，已完整校验"};
    static constexpr LocalizedText kCreating{L"Creating the SDK cache", L"正在从 SDK 创建缓存"};
    static constexpr LocalizedText kCreated{L"SDK cache created and verified", L"SDK 缓存已创建并校验"};
    static constexpr LocalizedText kUnknown{L"Checking the SDK cache state", L"正在确定 SDK 缓存状态"};

    if (cacheHit < 0) {
        return kUnknown.In(chinese);
    }
    if (cacheHit == 0) {
        return (verified ? kCreated : kCreating).In(chinese);
    }
    return (verified ? kHitVerified : kHitVerifying).In(chinese);
}

}  // namespace korvane
