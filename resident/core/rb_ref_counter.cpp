#include "resident/core/rb_ref_counter.h"

#include <climits>
#include <istream>
#include <ostream>

#include "resident/runtime/check.h"

static constexpr Reporter kReports("JXRESIDT\\RBCOUNTR.CPP");

RbRefCounter::RbRefCounter(long initial) : mlCount(initial) {}

RbRefCounter::~RbRefCounter() = default;

void RbRefCounter::Increment() {
    const bool counts = mlCount >= 0 && mlCount != LONG_MAX;
    kReports.CheckAt(67, counts, "(mlCount+1) > 0");
    mlCount = static_cast<long>(static_cast<unsigned long>(mlCount) + 1);
}

int RbRefCounter::Decrement() {
    kReports.CheckAt(77, mlCount >= 1, "mlCount >= 1");
    mlCount = static_cast<long>(static_cast<unsigned long>(mlCount) - 1);
    return mlCount == 0;
}

std::ostream& operator<<(std::ostream& out, const RbRefCounter& counter) {
    return out << counter.mlCount;
}

std::istream& operator>>(std::istream& in, RbRefCounter& counter) { return in >> counter.mlCount; }
