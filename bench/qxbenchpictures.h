// What the surface benchmarks share: the picture sizes they measure and a
// picture buffer that is faulted in before the clock starts.
#ifndef QXBASE_BENCH_QXBENCHPICTURES_H
#define QXBASE_BENCH_QXBENCHPICTURES_H

#include <cstdint>
#include <cstdlib>
#include <cstring>

struct SResolution {
    unsigned uiWidth;
    unsigned uiHeight;
    const char* pszName;
};
const SResolution kasResolutions[] = {{1920, 1080, "1920x1080"}, {3840, 2160, "3840x2160"}};

// A 64-byte aligned, zeroed (so faulted in) picture with padding after it.
struct SBuffer {
    explicit SBuffer(size_t in_uiBytes)
        : puc(static_cast<uint8_t*>(std::aligned_alloc(64, (in_uiBytes + 64 + 63) / 64 * 64)))
    {
        std::memset(puc, 0, in_uiBytes + 64);
    }
    ~SBuffer() { std::free(puc); }
    SBuffer(const SBuffer&) = delete;
    SBuffer& operator=(const SBuffer&) = delete;
    uint8_t* puc;
};


#endif  // QXBASE_BENCH_QXBENCHPICTURES_H
