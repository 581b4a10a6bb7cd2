#pragma once
// A real picker window made in the benchmark's own process, with a large generated catalogue:
// what one keystroke and one wheel notch cost is measured on the product's own window
// procedure and drawing, without a process boundary in the clock.

#include "context/LaunchContext.h"
#include "foundation/GdiplusSession.h"
#include "picker/Picker.h"
#include "picker/PickerCommands.h"

#include <objidl.h>
#include <gdiplus.h>

#include <cstdio>
#include <memory>

namespace korvane::bench {

// Names in Latin and Chinese by turns; every 50th Mod has a 512 x 288 cover, the rest show their
// letter tile.
inline std::vector<ModEntry> GeneratedCatalogue(std::size_t count)
{
    static constexpr const wchar_t* kLatin[] = {L"Lantern Festival", L"Harbor Lights", L"Sky Garden", L"Iron Road"};
    static constexpr const wchar_t* kChinese[] = {L"\u4E91\u6D77\u706F\u4F1A", L"\u6E2F\u53E3\u706F\u706B",
        L"\u7A7A\u4E2D\u82B1\u56ED", L"\u94C1\u8DEF"};
    std::vector<ModEntry> mods;
    mods.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        ModEntry mod;
        const Text number = DecimalText(index);
        mod.name = Text(index % 2 == 0 ? kLatin[index % 4] : kChinese[index % 4]) + L" " + number;
        mod.authorName = index % 3 == 0 ? L"\u82CF\u6674" : L"Mei Lin";
        wchar_t id[40] = {};
        std::swprintf(id, 40, L"mod.%032zx", index * 2654435761u);
        mod.id = id;
        mod.modProject = L"C:\\Games\\Skyhaven\\Mods\\Mod" + number + L".umod";
        mod.supportedGameVersions = L"1.3, 1.4";
        if (index % 50 == 0) {
            Gdiplus::DllExports::GdipCreateBitmapFromScan0(512, 288, 0, PixelFormat32bppPARGB, nullptr, mod.cover.Put());
        }
        mods.push_back(std::move(mod));
    }
    return mods;
}

// A shown picker of `count` Mods, loaded and listed.
struct InProcessPicker {
    explicit InProcessPicker(std::size_t count)
    {
        context->pickerPreview = true;  // the DPI given, nothing saved
        window = CreatePickerWindow(*context);
        if (window == nullptr) {
            std::printf("the picker window could not be made\n");
            return;
        }
        context->picker.sdkLoaded = true;
        context->picker.mods = GeneratedCatalogue(count);
        RebuildModList(*context, L"");
        Pump();
    }
    ~InProcessPicker()
    {
        if (window != nullptr) {
            DestroyWindow(window);
        }
    }
    InProcessPicker(const InProcessPicker&) = delete;
    InProcessPicker& operator=(const InProcessPicker&) = delete;

    // Handles what is waiting, painting included.
    static void Pump()
    {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }

    GdiplusSession gdiplus;
    std::unique_ptr<LaunchContext> context = std::make_unique<LaunchContext>();
    HWND window = nullptr;
};

}  // namespace korvane::bench
