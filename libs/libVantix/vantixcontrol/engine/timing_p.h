#ifndef VANTIXCONTROL_TIMING_P_H
#define VANTIXCONTROL_TIMING_P_H

#include <QtGlobal>

namespace VantixControl {

/// The console commands' figures of time, stated once for them, their help and their tests.
namespace Timing {

/// A ramp takes one step per this many ms, or one per whole number on the way when that is fewer.
constexpr int RampStepMs = 100;
/// The longest ramp: a day, well past any scenario, short of holding a session for weeks.
constexpr qint64 MaxRampMs = qint64(24) * 60 * 60 * 1000;
/// How often "expect ... within" looks again; properties need not announce their changes.
constexpr int ExpectPollMs = 10;
/// The most rows a feed's file may hold: a day at more than one row a second, a few MB of memory.
constexpr int MaxFeedRows = 100000;
/// The largest file a feed reads, whole, before anything is played.
constexpr qint64 MaxFeedBytes = qint64(4) * 1024 * 1024;
/// The latest time a feed's row may name: as long as the longest ramp.
constexpr qint64 MaxFeedMs = MaxRampMs;
/// A pause shorter than this before a recorded command is typing speed, not part of the story.
constexpr qint64 MinimumRecordedWaitMs = 10;

} // namespace Timing
} // namespace VantixControl

#endif
