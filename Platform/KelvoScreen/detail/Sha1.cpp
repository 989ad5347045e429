#include "KelvoScreen/detail/Sha1.h"

#include "Common/VeltraniException.h"

#include <openssl/evp.h>

#include <bit>
#include <cstring>

namespace KelvoScreenDetail {

namespace {

void require(int succeeded) {
    if (succeeded != 1) {
        throw VeltraniException(__FILE__, __LINE__, L"SHA-1 is not available: check the OpenSSL configuration");
    }
}

}  // namespace

void Sha1::ContextDeleter::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

Sha1::Sha1() : m_context(EVP_MD_CTX_new()) {
    require(m_context != nullptr && EVP_DigestInit_ex(m_context.get(), EVP_sha1(), nullptr) == 1 ? 1 : 0);
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
        require(EVP_DigestUpdate(m_context.get(), bytes, size));
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
    require(EVP_DigestFinal_ex(m_context.get(), digest.data(), nullptr));
    if (digest == Digest{}) {
        digest.back() = 1;
    }
    return digest;
}

void Sha1::flush() {
    require(EVP_DigestUpdate(m_context.get(), m_pending.data(), m_pendingSize));
    m_pendingSize = 0;
}

}  // namespace KelvoScreenDetail
