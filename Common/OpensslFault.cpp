#include "Common/OpensslFault.h"

#include <openssl/err.h>
#include <openssl/evp.h>

#include <new>

namespace Veltrani {

namespace {

/// A digest that was found has nothing to initialise but its memory, and does not report that as the reason.
bool namesMemory(unsigned long error) {
    return ERR_GET_REASON(error) == ERR_R_MALLOC_FAILURE ||
           (ERR_GET_LIB(error) == ERR_LIB_EVP && ERR_GET_REASON(error) == EVP_R_INITIALIZATION_ERROR);
}

}  // namespace

void throwIfOpensslLacksMemory() {
    bool isSaid = false;
    bool isMemory = false;
    while (const unsigned long error = ERR_get_error()) {
        isSaid = true;
        isMemory = isMemory || namesMemory(error);
    }
    // Every refusal has its reason on the list, unless there was no memory for the list.
    if (isMemory || !isSaid) {
        throw std::bad_alloc();
    }
}

}  // namespace Veltrani
