#pragma once

#include <functional>

/// Stands between the library and the system where a file is locked (`flock`).
namespace systemLock {

/// Called once, before the next lock is taken. Returns what the system replies: 0 leaves it to the system, any other
/// number is its `errno`.
extern std::function<int()> beforeNext;

}  // namespace systemLock
