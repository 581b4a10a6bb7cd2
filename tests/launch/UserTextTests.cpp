// Every text the launcher shows outside the picker, in both of its languages, against the wording
// the author must see. Each text is made the way the product makes it, in the language of the
// moment, so a text swapped for another or a language mix-up fails here.
#include "TestSupport.h"

#include "context/UiLanguage.h"
#include "host/SdkDiscovery.h"
#include "launch/LaunchErrors.h"
#include "launch/SessionGate.h"
#include "startup/CacheStatus.h"
#include "startup/StartupPaint.h"
#include "startup/StartupTexts.h"
#include "tool/PrepareStage.h"
#include "tool/ToolMessages.h"
#include "tool/ToolOutcome.h"

#include <gtest/gtest.h>

#include <functional>

namespace korvane {
namespace {

struct TextRow {
    const char* use;
    std::function<Text()> make;  // runs in the language of the moment
    const wchar_t* english;
    const wchar_t* chinese;  // null: the text has an English form only
};

auto Fixed(const LocalizedText& text)
{
    return [&text] { return text.Now(); };
}

auto Stage(const wchar_t* word)
{
    return [word] { return StageText(word); };
}

auto Cache(std::int32_t hit, bool verified)
{
    return [hit, verified] { return CacheStatusText(hit, verified, IsChineseUi()); };
}

const TextRow kRows[] = {
    // Entry point and launch flow.
    {"error box title", Fixed(kLaunchErrorTitle), L"Korvane launch error", L"Korvane 启动错误"},
    {"editor missing", Fixed(kEditorNotFoundMessage),
        L"The official Unreal Editor was not found in this Korvane package.", L"此 Korvane 安装中未找到 Unreal Editor。"},
    {"root not ASCII", Fixed(kNonAsciiRootMessage), L"Install the Korvane Editor in a path that uses ASCII characters only.",
        L"请将 Korvane Editor 安装到仅包含 ASCII 字符的路径。"},
    {"bad host configuration", Fixed(kInvalidHostConfigurationMessage), L"Invalid local KorvaneUpdate.config.json",
        nullptr},
    {"KV1830", Fixed(kSessionInUseMessage), L"KV1830: A Mod editor is already open. Close it before opening another.",
        L"KV1830：已经打开一个 Mod 编辑器。请先关闭，再打开另一个。"},
    {"KV4300 project", Fixed(kProjectFileRemovedMessage),
        L"KV4300: Select a .kvsdk file. UE project SDK loading has been removed.",
        L"KV4300: 请选择 .kvsdk 文件。已移除 UE project SDK 加载。"},
    {"KV4300 no SDK", Fixed(kNoSdkSelectedMessage),
        L"KV4300: Select the matching .kvsdk file or the game directory containing its SDK.",
        L"KV4300: 请选择匹配的 .kvsdk 文件，或包含游戏 SDK 的目录。"},
    {"session closing", Fixed(kSessionClosingMessage),
        L"The previous editing session is still closing. Finish saving and close it before retrying.",
        L"上一编辑会话尚未关闭。请完成保存并关闭后重试。"},
    {"launch cancelled", Fixed(kLaunchCancelledMessage), L"Editor launch cancelled.", L"编辑器启动已取消。"},
    {"editor refused", Fixed(kEditorStartRefusedMessage), L"The official Unreal Editor could not be started.",
        L"无法启动 Unreal Editor。"},
    {"start failure", [] { return StartFailureText(3221225477u, L"C:\\W\\Saved\\Logs\\a.log"); },
        L"Editor startup failed (exit code 3221225477). Check the startup log in Saved/Logs.\nC:\\W\\Saved\\Logs\\a.log",
        L"编辑器启动失败（退出码 3221225477）。请查看 Saved/Logs 中的启动日志。\nC:\\W\\Saved\\Logs\\a.log"},
    {"start failure without log", [] { return StartFailureText(0, L""); },
        L"Editor startup failed (exit code 0). Check the startup log in Saved/Logs.",
        L"编辑器启动失败（退出码 0）。请查看 Saved/Logs 中的启动日志。"},

    // Tool runs.
    {"tool cancelled", Fixed(kToolCancelledMessage), L"Operation cancelled.", L"操作已取消。"},
    {"tool missing", Fixed(kToolMissingMessage), L"KV4210: KorvaneTool.exe is missing. Repair the Mod Editor installation.",
        L"KV4210: 缺少 KorvaneTool.exe。请修复完整 Mod 编辑器安装。"},
    {"no output files", Fixed(kToolOutputFilesMessage), L"Could not create tool output files.", L"无法创建工具输出文件。"},
    {"output not opened", Fixed(kToolOutputOpenMessage), L"Could not open tool output.", L"无法打开工具输出。"},
    {"tool timed out", Fixed(kToolTimedOutMessage), L"Preparation timed out. Retry or check the tool log.",
        L"准备超时。请重试或查看工具日志。"},
    {"tool not started", [] { return ToolStartFailedText(193); }, L"Could not start KorvaneTool (Windows error 193).",
        L"无法启动 KorvaneTool（Windows 错误 193)."},
    {"tool failed, top bit set", [] { return ToolFailedText(4294967295u); },
        L"KorvaneTool failed (exit code 4294967295).", L"KorvaneTool 失败（退出码 4294967295)."},

    // Source lookup, preparation and the conflict question.
    {"KV3654 not found", Fixed(kModSourceNotFoundMessage), L"KV3654: The selected Mod's editable source was not found.",
        L"KV3654: 未找到所选 Mod 的可编辑源码。"},
    {"KV3654 listing", Fixed(kInvalidSourceListingMessage), L"KV3654: Invalid Mod source listing.", nullptr},
    {"preparing line", Fixed(kPreparingLine), L"Checking the SDK and preparing the Mod workspace…",
        L"正在校验 SDK 并准备 Mod 工作区…"},
    {"no SDK to prepare", Fixed(kNoSdkMessage), L"Direct editing requires a matching .kvsdk file.",
        L"直接编辑需要匹配的 .kvsdk 文件。"},
    {"KV4210 preparation", Fixed(kPreparationToolMissingMessage),
        L"KV4210: KorvaneTool.exe is missing. Repair the complete Mod Editor installation.",
        L"KV4210: 缺少 KorvaneTool.exe。请修复完整 Mod 编辑器安装。"},
    {"selection file", Fixed(kSelectionFileMessage), L"Could not create a temporary Mod selection file.",
        L"无法创建临时 Mod 选择文件。"},
    {"workspace check", Fixed(kWorkspaceCheckMessage),
        L"Mod workspace check failed. This Mod may not publish editable source, or its game/SDK Contract does not "
        L"match. Run KorvaneTool.exe prepare for details.",
        L"Mod 工作区校验失败。此 Mod 可能没有公开源码，或其游戏/SDK Contract 不匹配。运行 KorvaneTool.exe prepare "
        L"查看详细原因。"},
    {"conflict caption", Fixed(kConflictCaption), L"Mod source conflict", L"Mod 源码冲突"},
    {"conflict body", Fixed(kConflictBody),
        L"The source package changed outside the editor.\n\nYes: write the current workspace edits back to the source "
        L"package.\nNo: reload the source package and discard the workspace edits.\nCancel: keep both and stop this "
        L"operation.",
        L"源码包在编辑器外发生了变化。\n\n是：以当前工作区编辑写回源码包。\n否：重新载入源包并丢弃当前工作区编辑。\n"
        L"取消：保留双方内容，暂不继续。"},
    {"stage sdkMetadata", Stage(L"sdkMetadata"), L"Reading SDK metadata…", L"读取 SDK 元数据…"},
    {"stage sdkVerify", Stage(L"sdkVerify"), L"Verifying SDK payload integrity…", L"校验 SDK 内容完整性…"},
    {"stage sdkHash", Stage(L"sdkHash"), L"Computing the SDK content revision…", L"计算 SDK 内容版本…"},
    {"stage cacheVerify", Stage(L"cacheVerify"), L"Verifying the local SDK cache…", L"校验本地 SDK 缓存…"},
    {"stage materialize", Stage(L"materialize"), L"Preparing local SDK files…", L"准备本地 SDK 文件…"},
    {"stage sourceInspect", Stage(L"sourceInspect"), L"Verifying the Mod source…", L"校验 Mod 源码…"},
    {"stage workspacePrepare", Stage(L"workspacePrepare"), L"Preparing the Mod workspace…", L"准备 Mod 工作区…"},
    {"stage pluginsApply", Stage(L"pluginsApply"), L"Applying SDK plugins…", L"应用 SDK 插件…"},
    {"stage complete", Stage(L"complete"), L"Workspace preparation complete…", L"工作区准备完成…"},
    // Stage words match exactly, with case; anything else is the general line.
    {"stage sdkhash", Stage(L"sdkhash"), L"Preparing the Mod…", L"正在准备 Mod…"},
    {"stage none", Stage(L""), L"Preparing the Mod…", L"正在准备 Mod…"},
    {"cache hit, running", Cache(INT32_MAX, false), L"SDK cache hit, verifying", L"SDK 缓存命中，正在校验"},
    {"cache hit, done", Cache(1, true), L"SDK cache hit, fully verified", L"SDK 缓存命中，已完整校验"},
    {"cache made, running", Cache(0, false), L"Creating the SDK cache", L"正在从 SDK 创建缓存"},
    {"cache made, done", Cache(0, true), L"SDK cache created and verified", L"SDK 缓存已创建并校验"},
    {"cache unknown", Cache(INT32_MIN, true), L"Checking the SDK cache state", L"正在确定 SDK 缓存状态"},

    // The start-up window.
    {"opening phase", Fixed(kOpeningEditorPhase), L"Opening the editor…", L"正在打开编辑器…"},
    {"loading phase", Fixed(kLoadingEditorPhase), L"Loading editor modules and the interface…",
        L"正在加载编辑器模块与界面…"},
    {"cancelling phase", Fixed(kCancellingPhase), L"Cancelling…", L"正在取消…"},
    {"window title", Fixed(kStartupWindowTitle), L"Korvane Editor is starting", L"Korvane 编辑器正在启动"},
    {"subtitle", Fixed(kStartupSubtitle), L"Mod creation environment", L"Mod 创作环境"},
    {"cancel button", Fixed(kCancelButtonText), L"Cancel", L"取消"},
    {"detail line", [] { return StartupDetailText(12999, L"SDK cache hit, verifying", IsChineseUi()); },
        L"Waited 12 s · SDK cache hit, verifying", L"已等待 12 秒 · SDK cache hit, verifying"},
};

TEST(UserTexts, EveryTextInBothLanguagesHasItsWording)
{
    for (const TextRow& row : kRows) {
        for (const bool chinese : {false, true}) {
            const testing::ScopedUiLanguage language(chinese ? L"zh-Hans" : L"en");
            EXPECT_EQ(row.make(), chinese && row.chinese != nullptr ? row.chinese : row.english) << row.use;
        }
    }
}

}  // namespace
}  // namespace korvane
