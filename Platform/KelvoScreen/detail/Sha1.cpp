#include "KelvoScreen/detail/Sha1.h"

#include "Common/OpensslFault.h"
#include "Common/VeltraniException.h"

#include <openssl/evp.h>

#include <bit>
#include <cstring>
#include <memory>
#include <new>

namespace Veltrani::KelvoScreenDetail {

namespace {

void require(bool succeeded) {
    if (!succeeded) {
        Veltrani::throwIfOpensslLacksMemory();
        throw VeltraniException(__FILE__, __LINE__, L"SHA-1 is not available: check the OpenSSL configuration");
    }
}

struct AlgorithmDeleter {
    void operator()(EVP_MD* algorithm) const { EVP_MD_free(algorithm); }
};

/// Looked up once, which is more work than most digests are.
const EVP_MD* algorithm() {
    static const std::unique_ptr<EVP_MD, AlgorithmDeleter> instance = [] {
        std::unique_ptr<EVP_MD, AlgorithmDeleter> fetched(fetchDigest("SHA1"));
        require(fetched != nullptr);
        return fetched;
    }();
    return instance.get();
}

}  // namespace

void Sha1::ContextDeleter::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

Sha1::Sha1() : m_context(EVP_MD_CTX_new()) {
    if (m_context == nullptr) {
        throw std::bad_alloc();
    }
    require(EVP_DigestInit_ex(m_context.get(), algorithm(), nullptr) == 1);
}

Sha1::~Sha1() = default;

void Sha1::addBytes(const void* bytes, std::size_t size) {
    if (size == 0) {
        return;
    }
    if (size > m_pending.size() - m_pendingSize) {
        flush();
    }
    if (size > m_pending.size()) {
        require(EVP_DigestUpdate(m_context.get(), bytes, size) == 1);
        return;
    }
    std::memcpy(m_pending.data() + m_pendingSize, bytes, size);
    m_pendingSize += size;
}

void Sha1::addText(std::string_view text) {
    addCount(text.size());
    addBytes(text.data(), text.size());
}

void Sha1::addNumber(double number) {
    addCount(std::bit_cast<std::uint64_t>(number == 0 ? 0.0 : number));
}

void Sha1::addCount(std::uint64_t count) {
    std::array<unsigned char, 8> littleEndian{};
    for (std::size_t i = 0; i < littleEndian.size(); ++i) {
        littleEndian[i] = static_cast<unsigned char>(count >> (8 * i));
    }
    addBytes(littleEndian.data(), littleEndian.size());
}

Sha1::Digest Sha1::finish() {
    flush();
    Digest digest{};
    require(EVP_DigestFinal_ex(m_context.get(), digest.data(), nullptr) == 1);
    if (digest == Digest{}) {
        digest.back() = 1;
    }
    return digest;
}

void Sha1::flush() {
    require(EVP_DigestUpdate(m_context.get(), m_pending.data(), m_pendingSize) == 1);
    m_pendingSize = 0;
}

}  // namespace Veltrani::KelvoScreenDetail
