#pragma once

#include <functional>

// How many blocks of memory and handles each further turn of `step` leaves behind, once all that
// lasts has been made.
long LeftBehind(const std::function<void()>& step);
