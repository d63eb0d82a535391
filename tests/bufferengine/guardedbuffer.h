// Test buffers with guard bytes on both sides: a kernel that writes one byte
// outside the bytes it was given is caught by CheckGuards.
#ifndef QXBASE_TESTS_BUFFERENGINE_GUARDEDBUFFER_H
#define QXBASE_TESTS_BUFFERENGINE_GUARDEDBUFFER_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

// A generator seeded from QXBASE_TEST_SEED, or a fixed default so that runs
// repeat; the seed is printed so that a failure can be replayed.
inline std::mt19937 SeededRandom(const char* in_pszWhat)
{
    const char* pszSeed = std::getenv("QXBASE_TEST_SEED");
    const unsigned long ulSeed = pszSeed ? std::strtoul(pszSeed, nullptr, 0) : 20240611ul;
    std::printf("[seed] %s: QXBASE_TEST_SEED=%lu\n", in_pszWhat, ulSeed);
    return std::mt19937(static_cast<std::mt19937::result_type>(ulSeed));
}

class CGuardedBuffer {
public:
    static constexpr size_t kGuard = 64;
    static constexpr unsigned char kGuardByte = 0xA5;

    // in_uOffset shifts the data off its 64-byte alignment.
    explicit CGuardedBuffer(size_t in_uSize, size_t in_uOffset = 0, unsigned char in_ucFill = 0)
        : m_uSize(in_uSize), m_uOffset(in_uOffset)
    {
        m_pucBase = static_cast<unsigned char*>(std::aligned_alloc(64, Total()));
        std::memset(m_pucBase, kGuardByte, Total());
        std::memset(Data(), in_ucFill, m_uSize);
    }
    ~CGuardedBuffer() { std::free(m_pucBase); }
    CGuardedBuffer(const CGuardedBuffer&) = delete;
    CGuardedBuffer& operator=(const CGuardedBuffer&) = delete;

    unsigned char* Data() { return m_pucBase + kGuard + m_uOffset; }
    const unsigned char* Data() const { return m_pucBase + kGuard + m_uOffset; }
    size_t Size() const { return m_uSize; }
    unsigned char& operator[](size_t i) { return Data()[i]; }

    // True when no byte around the data changed.
    bool GuardsIntact() const
    {
        for (size_t i = 0; i < kGuard + m_uOffset; ++i)
            if (m_pucBase[i] != kGuardByte) return false;
        for (size_t i = kGuard + m_uOffset + m_uSize; i < Total(); ++i)
            if (m_pucBase[i] != kGuardByte) return false;
        return true;
    }

    void FillRandom(std::mt19937& io_oRandom)
    {
        for (size_t i = 0; i < m_uSize; ++i) Data()[i] = static_cast<unsigned char>(io_oRandom());
    }

    std::vector<unsigned char> Bytes() const { return std::vector<unsigned char>(Data(), Data() + m_uSize); }

private:
    size_t Total() const { return (kGuard * 2 + m_uOffset + m_uSize + 63) / 64 * 64; }

    size_t m_uSize;
    size_t m_uOffset;
    unsigned char* m_pucBase;
};

#endif  // QXBASE_TESTS_BUFFERENGINE_GUARDEDBUFFER_H
