#include "KelvoScreen/detail/Sha1.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>

namespace {

using Veltrani::KelvoScreenDetail::Sha1;

std::string hex(const Sha1::Digest& digest) {
    const char* digits = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : digest) {
        text += {digits[byte >> 4], digits[byte & 15]};
    }
    return text;
}

std::string hexOfBytes(const std::string& bytes) {
    Sha1 sha1;
    sha1.addBytes(bytes.data(), bytes.size());
    return hex(sha1.finish());
}

Sha1::Digest ofNumber(double number) {
    Sha1 sha1;
    sha1.addNumber(number);
    return sha1.finish();
}

// The examples of FIPS 180.
TEST(Sha1, AgreesWithThePublishedExamples) {
    EXPECT_EQ(hexOfBytes(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
    EXPECT_EQ(hexOfBytes("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hexOfBytes("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
    EXPECT_EQ(hexOfBytes(std::string(1000000, 'a')), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST(Sha1, PiecesOfAnySizeGiveTheSameDigest) {
    std::string bytes;
    for (int i = 0; i < 20000; ++i) {
        bytes += static_cast<char>(i * i);
    }
    for (const std::size_t piece : {1U, 7U, 4095U, 4096U, 4097U, 9000U}) {
        Sha1 sha1;
        for (std::size_t at = 0; at < bytes.size(); at += piece) {
            const std::string part = bytes.substr(at, piece);
            sha1.addBytes(part.data(), part.size());
        }
        EXPECT_EQ(hex(sha1.finish()), hexOfBytes(bytes)) << "pieces of " << piece;
    }
}

TEST(Sha1, EveryBitOfANumberCountsButTheSignOfZero) {
    EXPECT_NE(ofNumber(1), ofNumber(1 + std::numeric_limits<double>::epsilon()));
    EXPECT_NE(ofNumber(1), ofNumber(-1));
    EXPECT_NE(ofNumber(0), ofNumber(std::numeric_limits<double>::denorm_min()));
    EXPECT_EQ(ofNumber(0.0), ofNumber(-0.0));
}

TEST(Sha1, NumbersEnterWithTheLeastByteFirst) {
    // 1.0 is 3ff0000000000000.
    EXPECT_EQ(hex(ofNumber(1.0)), hexOfBytes(std::string("\0\0\0\0\0\0\xf0\x3f", 8)));
}

TEST(Sha1, TextsDoNotRunTogether) {
    Sha1 first;
    first.addText("ab");
    first.addText("c");
    Sha1 second;
    second.addText("a");
    second.addText("bc");
    EXPECT_NE(first.finish(), second.finish());
}

}  // namespace
