#pragma once
// Tells game folders from other folders and finds the one SDK (.kvsdk) of a folder. Only
// names, attributes and listings are looked at; no SDK file is opened. A search that could
// mean more than one file has no answer: nothing here chooses by date, size or order.

#include "context/UiLanguage.h"
#include "foundation/Text.h"

namespace korvane {

// A folder that holds the game's executable: any .exe but KorvaneEditor.exe, or
// Binaries\Win64\<folder name>-Win64-Shipping.exe.
bool IsGameInstallDirectory(TextView directory);
// A game's project folder prepared for Mods: Config\DefaultGame.ini,
// Content\Korvane\DA_KorvaneContract.uasset and a .uproject other than KorvaneSDK.uproject.
bool IsGameProjectDirectory(TextView directory);

// With an explicit SDK path: that path, normalised, when it is a .kvsdk file; no search.
// Without one: the SDK of the game directory, or empty.
Text FindSdkFile(TextView gameDirectory, TextView explicitSdk);
// The SDK of the folder, else the one SDK among its direct subfolders; empty when none or
// several.
Text FindSdkBelowDirectory(TextView directory);

// No SDK could be settled from what was asked for.
inline constexpr LocalizedText kNoSdkSelectedMessage{
    L"KV4300: Select the matching .kvsdk file or the game directory containing its SDK.",
    L"KV4300: 请选择匹配的 .kvsdk 文件，或包含游戏 SDK 的目录。"};

// Turns the requested game directory and SDK into the validated pair the run goes on with.
// False with the KV4300 text in `message` when no SDK is settled; the out values keep what
// was found, so the game directory can be set while the SDK is empty.
bool ResolveSdkSelection(TextView requestedGameDirectory, TextView requestedSdk, Text& gameDirectory,
    Text& sdk, Text& message);

}  // namespace korvane
