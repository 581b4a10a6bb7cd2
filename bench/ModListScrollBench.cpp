// Scrolling a 10,000-Mod list by the wheel in a shown picker: the time from one wheel notch
// to the end of the repaint it causes, per frame. Target: well under a 60 Hz frame (16.7 ms).
#include "BenchTiming.h"
#include "PickerInProcess.h"

#include <cstdio>

using namespace korvane;
using korvane::bench::Median;
using korvane::bench::NowMs;

int wmain()
{
    bench::InProcessPicker picker(10000);
    if (picker.window == nullptr) {
        return 1;
    }
    const HWND list = picker.context->picker.modList;
    RECT box{};
    GetWindowRect(list, &box);
    const LPARAM at = MAKELPARAM((box.left + box.right) / 2, (box.top + box.bottom) / 2);
    constexpr int kNotches = 300;
    std::vector<double> frames;
    for (int notch = 0; notch < kNotches; ++notch) {
        // Down for the first half, up again for the second: covers and letter tiles alike come by.
        const short delta = notch < kNotches / 2 ? -WHEEL_DELTA : WHEEL_DELTA;
        const double start = NowMs();
        SendMessageW(list, WM_MOUSEWHEEL, MAKEWPARAM(0, delta), at);
        UpdateWindow(list);
        frames.push_back(NowMs() - start);
        bench::InProcessPicker::Pump();
    }
    const LRESULT top = SendMessageW(list, LB_GETTOPINDEX, 0, 0);
    std::printf("wheel scroll of a 10,000-Mod list: %.2f ms per frame median, %.2f ms slowest of %d notches "
                "(target well under 16.7 ms; top row back at %ld)\n",
        Median(frames), *std::max_element(frames.begin(), frames.end()), kNotches, static_cast<long>(top));
    return 0;
}
