#pragma once
// The clock and the statistic that every benchmark reads its figures with.

#include <windows.h>

#include <algorithm>
#include <vector>

namespace korvane::bench {

inline double NowMs()
{
    LARGE_INTEGER frequency{};
    LARGE_INTEGER counter{};
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&counter);
    return 1000.0 * static_cast<double>(counter.QuadPart) / static_cast<double>(frequency.QuadPart);
}

inline double Median(std::vector<double> values)
{
    if (values.empty()) {
        return 0.0;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace korvane::bench
