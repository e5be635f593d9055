#pragma once

#include <algorithm>
#include <cstdint>

// When the inbox is read next. Times are milliseconds of one clock.
class ReadSchedule {
public:
    using Time = unsigned long long;
    static constexpr Time kNever = ~0ull;

    // Something changed: changes are gathered for half a second, and reading takes a fifth of the
    // time at most, so that whoever writes has the file for himself.
    void Changed(Time now) { mDue = std::min(mDue, std::max(now + kGathered, mEnded + 4 * mTook)); }
    // Look again in a moment: what was seen may be half written.
    void Again(Time now) { mDue = std::min(mDue, now + kGathered); }
    // Look again later, where nobody tells of changes.
    void Later(Time now) { mDue = std::min(mDue, now + kPolled); }

    // Nothing is read until then, kNever without an end.
    void Pause(Time until) { mPausedUntil = until; }
    void Resume() { mPausedUntil = 0; }
    bool IsPaused() const { return mPausedUntil != 0; }
    Time PausedUntil() const { return mPausedUntil; }

    // When there is something to do: to read, or to end a pause.
    Time Due() const { return IsPaused() ? mPausedUntil : mDue; }

    void Began() { mDue = kNever; }
    void Ended(Time began, Time now) {
        mEnded = now;
        mTook = now - began;
    }

private:
    static constexpr Time kGathered = 500;
    static constexpr Time kPolled = 5000;

    Time mDue = kNever;
    Time mPausedUntil = 0;
    Time mEnded = 0;
    Time mTook = 0;
};
