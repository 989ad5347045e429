#include "Common/FileFault.h"

#include "Common/QuotedText.h"
#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

namespace Veltrani {

namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

}  // namespace

void throwFault(const std::string& document, const FileFault& fault) {
    std::string text = document + ":" + std::to_string(fault.line) + ": ";
    text += fault.element + ": found " + fault.found + ", expected " + fault.expected + "; " + fault.remedy;
    throw VeltraniParseException(Veltrani::fromUtf8(onOneLine(text)));
}

std::string contentOf(const std::string& utf8Path, std::size_t largest) {
    std::string content = Veltrani::RegularFile(utf8Path).readAll(largest);
    if (content.size() > largest) {
        throwFault(utf8Path, {1, "file", "more than " + std::to_string(largest) + " bytes", "at most that many",
                              "check that this is the file that was meant"});
    }
    if (content.compare(0, BYTE_ORDER_MARK.size(), BYTE_ORDER_MARK) == 0) {
        content.erase(0, BYTE_ORDER_MARK.size());
    }
    return content;
}

}  // namespace Veltrani
