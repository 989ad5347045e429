#pragma once

struct evp_md_st;
struct ossl_lib_ctx_st;

namespace Veltrani {

/// To be called where a function of OpenSSL has failed, before that is reported: throws `std::bad_alloc` when lack of
/// memory is the cause. Empties the list of errors that OpenSSL keeps for the thread.
void throwIfOpensslLacksMemory();

/// Returns the library context that digests are fetched from, made on the first call and kept until the process ends.
/// Throws `std::bad_alloc` where it cannot be made, and tries again on the next call.
///
/// OpenSSL makes the context of the process by itself, once. When memory runs out on the way, every later call uses it
/// half made, and crashes (OpenSSL 3.0).
[[nodiscard]] ossl_lib_ctx_st* opensslContext();

/// Returns a digest of that context, to be freed by the caller; null where OpenSSL has none of that name, with its list
/// of errors filled.
///
/// Throws `std::bad_alloc` where another context has it: one in which memory was short while it looked its algorithms
/// up reports that there are none, then and later (OpenSSL 3.0).
[[nodiscard]] evp_md_st* fetchDigest(const char* name);

}  // namespace Veltrani
