#pragma once

namespace Veltrani {

/// To be called where a function of OpenSSL has failed, before that is reported: throws `std::bad_alloc` when lack of
/// memory is the cause. Empties the list of errors that OpenSSL keeps for the thread.
void throwIfOpensslLacksMemory();

}  // namespace Veltrani
