#include "Common/OpensslFault.h"

#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/evp.h>

#include <new>

namespace {

using Veltrani::throwIfOpensslLacksMemory;

TEST(OpensslFault, AMissingAlgorithmIsNoLackOfMemory) {
    ASSERT_EQ(EVP_MD_fetch(nullptr, "no such digest", nullptr), nullptr);
    EXPECT_NO_THROW(throwIfOpensslLacksMemory());
    EXPECT_EQ(ERR_peek_error(), 0U) << "the list is empty afterwards";
}

TEST(OpensslFault, MemoryIsFoundAmongItsConsequences) {
    ERR_raise(ERR_LIB_CRYPTO, ERR_R_MALLOC_FAILURE);
    ASSERT_EQ(EVP_MD_fetch(nullptr, "no such digest", nullptr), nullptr);
    EXPECT_THROW(throwIfOpensslLacksMemory(), std::bad_alloc);
    EXPECT_EQ(ERR_peek_error(), 0U);
}

TEST(OpensslFault, ADigestThatCannotBeginHadNoMemoryForItsState) {
    ERR_raise(ERR_LIB_EVP, EVP_R_INITIALIZATION_ERROR);
    EXPECT_THROW(throwIfOpensslLacksMemory(), std::bad_alloc);
}

TEST(OpensslFault, AFailureWithoutAReasonHadNoMemoryForOne) {
    EXPECT_THROW(throwIfOpensslLacksMemory(), std::bad_alloc);
}

TEST(OpensslContext, IsOneOfItsOwnThatKnowsTheDigests) {
    ASSERT_NE(Veltrani::opensslContext(), nullptr);
    EXPECT_EQ(Veltrani::opensslContext(), Veltrani::opensslContext());
    EXPECT_NE(Veltrani::opensslContext(), OSSL_LIB_CTX_get0_global_default());
    for (const char* digest : {"SHA1", "SHA256", "MD5"}) {
        EVP_MD* const found = EVP_MD_fetch(Veltrani::opensslContext(), digest, nullptr);
        EXPECT_NE(found, nullptr) << digest;
        EVP_MD_free(found);
    }
}

TEST(OpensslContext, FetchesWhatThereIs) {
    EVP_MD* const found = Veltrani::fetchDigest("SHA256");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(EVP_MD_get_size(found), 32);
    EVP_MD_free(found);
    EXPECT_EQ(Veltrani::fetchDigest("no such digest"), nullptr);
    EXPECT_NO_THROW(throwIfOpensslLacksMemory()) << "it is no lack of memory";
}

}  // namespace
