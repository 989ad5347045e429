#include "KelvoControl/detail/LensName.h"

namespace KelvoControlDetail {

LensName LensName::of(const std::wstring& first, const std::wstring& second) {
    const std::size_t colon = first.find(L':');
    if (!second.empty() || colon == std::wstring::npos) {
        return {first, second};
    }
    return {first.substr(0, colon), first.substr(colon + 1)};
}

}  // namespace KelvoControlDetail
