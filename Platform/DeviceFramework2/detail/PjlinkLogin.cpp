#include "DeviceFramework2/detail/PjlinkLogin.h"

#include "Common/OpensslFault.h"
#include "DeviceFramework2/DeviceException.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <array>

namespace Veltrani::DeviceFramework2 {

std::string pjlinkLoginDigest(const std::string& seed, const std::string& password) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    std::string text = seed + password;
    const bool done = EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_md5(), nullptr) == 1;
    OPENSSL_cleanse(text.data(), text.size());
    if (!done) {
        throwIfOpensslLacksMemory();
        throw DeviceException(__FILE__, __LINE__, L"the login needs MD5, which this machine refuses");
    }
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string hex;
    for (unsigned int i = 0; i < size; ++i) {
        hex += DIGITS[digest[i] / 16];
        hex += DIGITS[digest[i] % 16];
    }
    return hex;
}

}  // namespace Veltrani::DeviceFramework2
