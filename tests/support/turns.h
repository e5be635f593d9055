#pragma once

#include <atomic>
#include <string>

// Programs that take turns: a director says which one goes on, and how far, so that an order of
// their steps can be repeated.

// What a director and a program tell each other, in memory that both see.
struct Part {
    char steps[16];             // what the program is to do; none for the end
    char told[2000];            // what it tells of that
    std::atomic<long> finished; // steps
    std::atomic<long> calls; // after so many calls of the system it stops; without an end below 0
};

class Turns {
public:
    // One program's, by a name that director and program share.
    explicit Turns(const std::string& name);
    Turns(const Turns&) = delete;
    Turns& operator=(const Turns&) = delete;
    ~Turns();

    Part& Of() const { return *mPart; }
    Part* operator->() const { return mPart; }

    // The director's: lets the program end; waits until it has stopped; lets it go on, and waits
    // again. False when that takes a minute.
    void End() const;
    bool Stopped() const;
    bool Go(long calls) const;
    // The program's: stops until it may go on; counts a call, which may be the last one.
    void Stop() const;
    void Call() const;

private:
    void* mGo;
    void* mStopped;
    void* mMapping;
    Part* mPart;
};
