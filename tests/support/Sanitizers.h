#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define SM_UNDER_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SM_UNDER_ADDRESS_SANITIZER 1
#endif
#endif
#ifndef SM_UNDER_ADDRESS_SANITIZER
#define SM_UNDER_ADDRESS_SANITIZER 0
#endif

/// True when the tests run under the address sanitizer, which makes them five to twenty times slower: those that take
/// seconds do fewer rounds then.
inline constexpr bool IS_SANITIZED = SM_UNDER_ADDRESS_SANITIZER != 0;

/// How many random samples of one kind are checked: all of them, or a tenth under the sanitizers. Those look for faults
/// of memory, which show in the first samples; the optimised build judges the numbers. Never for cases that differ.
template <class Count>
constexpr Count repetitions(Count full) {
    return IS_SANITIZED ? full / 10 : full;
}
