#pragma once

#include "Common/Point.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

struct evp_md_ctx_st;

namespace Veltrani::KelvoScreenDetail {

/// A running SHA-1 digest over bytes and numbers.
///
/// Numbers enter with a fixed width and byte order, so that a digest is the same on every machine. Descriptions that
/// compare equal have equal digests: -0.0 enters as 0.0, since the two compare equal and place the same surface; every
/// other change of a number, however small, changes the bytes. Texts and lists enter with their length, so that no two
/// sequences of calls run together.
class Sha1 {
public:
    using Digest = std::array<unsigned char, 20>;

    Sha1();
    ~Sha1();
    Sha1(const Sha1&) = delete;
    Sha1& operator=(const Sha1&) = delete;

    /// The bytes as they are, without their length.
    void addBytes(const void* bytes, std::size_t size);
    /// The length and the characters.
    void addText(std::string_view text);
    void addNumber(double number);
    void addCount(std::uint64_t count);
    template <std::size_t N>
    void addPoint(const Point<double, N>& point) {
        for (std::size_t i = 0; i < N; ++i) {
            addNumber(point[i]);
        }
    }

    /// Returns the digest of everything added; ends the use of the object. Never all zero: twenty zero bytes mean "no
    /// screen" to the callers.
    [[nodiscard]] Digest finish();

private:
    struct ContextDeleter {
        void operator()(evp_md_ctx_st* context) const;
    };

    void flush();

    std::unique_ptr<evp_md_ctx_st, ContextDeleter> m_context;
    std::array<unsigned char, 4096> m_pending{};  ///< small additions, collected to save calls
    std::size_t m_pendingSize = 0;
};

}  // namespace Veltrani::KelvoScreenDetail
