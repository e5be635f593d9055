#pragma once

#include <iosfwd>

#include "resident/core/jx_api.h"

// The count of the owners of a shared record. Whoever takes the count to zero deletes the record.
class JX_API RbRefCounter {
public:
    // Begins with `initial` owners.
    explicit RbRefCounter(long initial);
    RbRefCounter(const RbRefCounter& other) = default;
    RbRefCounter& operator=(const RbRefCounter& other) = default;
    virtual ~RbRefCounter();

    // Reports "(mlCount+1) > 0" when the count is negative or the largest there is; adds 1.
    void Increment();
    // Reports "mlCount >= 1" when there is no owner left; takes 1 off. Returns 1 when the count has
    // reached zero, else 0.
    int Decrement();

    // Write and read the count as decimal text.
    friend JX_API std::ostream& operator<<(std::ostream& out, const RbRefCounter& counter);
    friend JX_API std::istream& operator>>(std::istream& in, RbRefCounter& counter);

protected:
    long mlCount;
};
