// How the time-stamp counter is calibrated against the real-time clock,
// written over injectable clock and counter reads so that the tests can
// drive it with counters that misbehave.
#ifndef QXBASE_SYNC_QXCALIBRATION_H
#define QXBASE_SYNC_QXCALIBRATION_H

#include <stdint.h>
#include <time.h>

// One measurement: ticks per microsecond (the counter's frequency in MHz).
// in_fnClock fills a timespec from the real-time clock, in_fnCounter reads
// the counter. A measurement is repeated when no microsecond passed or when
// the counter advanced fewer ticks than microseconds: a usable counter runs
// at 1 MHz or more.
template <class FClock, class FCounter>
uint64_t qxMeasureTicksPerMicrosecond(FClock in_fnClock, FCounter in_fnCounter)
{
    for (;;) {
        timespec sStart, sEnd;
        in_fnClock(&sStart);
        uint64_t ui64Start = in_fnCounter();
        uint64_t ui64Ticks;
        do {
            ui64Ticks = in_fnCounter() - ui64Start;
        } while (ui64Ticks <= 9999999);
        in_fnClock(&sEnd);
        int64_t i64Micros = static_cast<int64_t>(sEnd.tv_sec - sStart.tv_sec) * 1000000 +
                            static_cast<int64_t>(sEnd.tv_nsec - sStart.tv_nsec) / 1000;
        if (i64Micros <= 0 || ui64Ticks < static_cast<uint64_t>(i64Micros)) continue;
        return ui64Ticks / static_cast<uint64_t>(i64Micros);
    }
}

// The speed in ticks per millisecond from up to 8 pairs of measurements
// that must agree within 4 MHz; 1 when no pair agreed (a later call then
// calibrates again).
template <class FMeasure>
uint64_t qxCalibrateTicksPerMillisecond(FMeasure in_fnMeasure)
{
    uint64_t ui64First = 0, ui64Difference = 0;
    for (int iAttempt = 0; iAttempt < 8; ++iAttempt) {
        ui64First = in_fnMeasure();
        uint64_t ui64Second = in_fnMeasure();
        ui64Difference = ui64First > ui64Second ? ui64First - ui64Second : ui64Second - ui64First;
        if (ui64Difference <= 4) break;
    }
    return ui64Difference < 5 ? ui64First * 1000 : 1;
}

#endif  // QXBASE_SYNC_QXCALIBRATION_H
