#include "tool/PrepareStage.h"

#include "context/UiLanguage.h"

#include <iterator>

namespace korvane {
namespace {

struct StageRow {
    const wchar_t* word;
    LocalizedText text;
};

constexpr StageRow kStages[] = {
    {L"sdkMetadata", {L"Reading SDK metadata…", L"读取 SDK 元数据…"}},
    {L"sdkVerify", {L"Verifying SDK payload integrity…", L"校验 SDK 内容完整性…"}},
    {L"sdkHash", {L"Computing the SDK content revision…", L"计算 SDK 内容版本…"}},
    {L"cacheVerify", {L"Verifying the local SDK cache…", L"校验本地 SDK 缓存…"}},
    {L"materialize", {L"Preparing local SDK files…", L"准备本地 SDK 文件…"}},
    {L"sourceInspect", {L"Verifying the Mod source…", L"校验 Mod 源码…"}},
    {L"workspacePrepare", {L"Preparing the Mod workspace…", L"准备 Mod 工作区…"}},
    {L"pluginsApply", {L"Applying SDK plugins…", L"应用 SDK 插件…"}},
    {L"complete", {L"Workspace preparation complete…", L"工作区准备完成…"}},
};

constexpr LocalizedText kGeneralStage{L"Preparing the Mod…", L"正在准备 Mod…"};

}  // namespace

Text StageText(TextView stage)
{
    for (const StageRow& row : kStages) {
        if (stage == row.word) {
            return row.text.Now();
        }
    }
    return kGeneralStage.Now();
}

}  // namespace korvane
