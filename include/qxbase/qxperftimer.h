// The process-wide performance timer: the processor's time-stamp counter
// when the processor declares it invariant, calibrated once at first use,
// else the real-time clock.
//
// Units differ between the two sources, and callers rely on them as they
// are: with an invariant counter the speed is in ticks per millisecond, so
// GetTime() is in milliseconds and GetTimeNano() in nanoseconds; without it
// the speed is the fixed 1000 and the raw count is in nanoseconds, so
// GetTime() is in microseconds and GetTimeNano() in nanoseconds x 1000.
#ifndef QXBASE_QXPERFTIMER_H
#define QXBASE_QXPERFTIMER_H

#include <qxbase/qxdefs.h>

#include <atomic>

// True when the processor reports an invariant time-stamp counter; written
// by the CQxPerfTimer constructor.
QXBASE_API extern bool g_bInvariantTSC;

// The raw time-stamp counter (unserialised rdtsc).
QXBASE_API uint64_t linux_rdtsc();

// Sleeps for the given number of seconds, resuming after signal handlers
// with the time that remained. Returns nanosleep's final status (0 or -1).
QXBASE_API int qxnanosleep(double in_dSeconds);

class QXBASE_API CQxPerfTimer {
public:
    // Detects the invariant counter and calibrates it.
    CQxPerfTimer();

    // The single instance, created on first use.
    static CQxPerfTimer* GetTimerClass();

    // One calibration measurement: counter ticks per microsecond.
    uint64_t InitializeProcessorSpeed();
    // Ticks per millisecond; calibrates when no calibration has succeeded
    // yet. 1000 without an invariant counter.
    uint64_t GetProcessorSpeed();
    // Raw count: counter ticks, or real-time nanoseconds.
    uint64_t GetTickCount();
    // Raw count / speed.
    uint64_t GetTime();
    // Raw count x 1000000 / speed, in 64-bit arithmetic that wraps after
    // some 1.8e13 ticks.
    uint64_t GetTimeNano();
    // Spins until in_ulDuration GetTime() units have passed and returns the
    // elapsed value; with 0, returns the current GetTime() at once.
    uint64_t Wait(unsigned long in_ulDuration);

private:
    CQxPerfTimer(const CQxPerfTimer&) = delete;
    CQxPerfTimer& operator=(const CQxPerfTimer&) = delete;

    // Ticks per millisecond; 1 until a calibration succeeds. Two first
    // callers may both calibrate and store, which is harmless, but the reads
    // and writes must not tear: atomic, relaxed.
    std::atomic<uint64_t> m_ui64Speed;
};

#endif  // QXBASE_QXPERFTIMER_H
