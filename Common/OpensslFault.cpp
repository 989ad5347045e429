#include "Common/OpensslFault.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>

#include <memory>
#include <new>

namespace Veltrani {

namespace {

/// A digest that was found has nothing to initialise but its memory, and does not report that as the reason.
bool namesMemory(unsigned long error) {
    return ERR_GET_REASON(error) == ERR_R_MALLOC_FAILURE ||
           (ERR_GET_LIB(error) == ERR_LIB_EVP && ERR_GET_REASON(error) == EVP_R_INITIALIZATION_ERROR);
}

struct ContextDeleter {
    void operator()(OSSL_LIB_CTX* context) const { OSSL_LIB_CTX_free(context); }
};

std::unique_ptr<OSSL_LIB_CTX, ContextDeleter> newContext() {
    std::unique_ptr<OSSL_LIB_CTX, ContextDeleter> context(OSSL_LIB_CTX_new());
    if (context == nullptr) {
        throw std::bad_alloc();
    }
    return context;
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

ossl_lib_ctx_st* opensslContext() {
    static const auto CONTEXT = newContext();
    return CONTEXT.get();
}

evp_md_st* fetchDigest(const char* name) {
    if (EVP_MD* const found = EVP_MD_fetch(opensslContext(), name, nullptr)) {
        return found;
    }
    const auto another = newContext();
    if (EVP_MD* const found = EVP_MD_fetch(another.get(), name, nullptr)) {
        EVP_MD_free(found);
        ERR_clear_error();
        throw std::bad_alloc();
    }
    return nullptr;
}

}  // namespace Veltrani
