#include "Configuration/detail/FolderPath.h"

namespace Veltrani::ConfigurationDetail {

FolderPath FolderPath::ofFile(const std::wstring& fileName) {
    FolderPath folder;
    const std::wstring::size_type slash = fileName.rfind(L'/');
    if (slash != std::wstring::npos) {
        const std::wstring::size_type last = fileName.find_last_not_of(L'/', slash);
        folder.m_folder = last == std::wstring::npos ? L"/" : fileName.substr(0, last + 1);
    }
    return folder;
}

std::wstring FolderPath::resolve(const std::wstring& name) const {
    if (name.empty()) {
        return m_folder;
    }
    if (m_folder.empty() || name.front() == L'/') {
        return name;
    }
    return m_folder.back() == L'/' ? m_folder + name : m_folder + L"/" + name;
}

std::wstring FolderPath::relative(const std::wstring& name) const {
    const std::wstring prefix = m_folder.empty() || m_folder.back() == L'/' ? m_folder : m_folder + L"/";
    if (prefix.empty() || !name.starts_with(prefix)) {
        return name;
    }
    // Any more slashes would make the rest an absolute name.
    const std::wstring::size_type rest = name.find_first_not_of(L'/', prefix.size());
    return rest == std::wstring::npos ? std::wstring() : name.substr(rest);
}

}  // namespace Veltrani::ConfigurationDetail
