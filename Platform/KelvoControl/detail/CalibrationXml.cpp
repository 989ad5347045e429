#include "KelvoControl/detail/CalibrationContent.h"

#include "Common/FileFault.h"
#include "Common/HardenedXml.h"
#include "Common/QuotedText.h"

#include <libxml/tree.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace Veltrani::KelvoControlDetail {

namespace {

constexpr const char* ROOT = "opencv_storage";
constexpr const char* REMEDY = "write the calibration file again";
constexpr std::string_view BLANKS = " \t\r\n";

int lineOf(const xmlNode* node) {
    return static_cast<int>(std::max(xmlGetLineNo(node), 1L));
}

std::string nameOf(const xmlNode* node) {
    return node->name != nullptr ? reinterpret_cast<const char*>(node->name) : "";
}

std::string withoutBlanks(const std::string& text) {
    const std::size_t first = text.find_first_not_of(BLANKS);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(BLANKS) + 1 - first);
}

class Reader {
public:
    explicit Reader(const std::string& document) : m_document(document) {}

    [[nodiscard]] CalibrationContent read(const xmlDoc* document) const {
        const xmlNode* const root = xmlDocGetRootElement(document);
        if (nameOf(root) != ROOT) {
            Veltrani::throwFault(m_document, {lineOf(root), "file", "the element " + Veltrani::inQuotes(nameOf(root)),
                                              std::string("the element ") + ROOT, "name an OpenCV calibration file"});
        }
        CalibrationContent content;
        for (const xmlNode* child = root->children; child != nullptr; child = child->next) {
            if (child->type == XML_ELEMENT_NODE) {
                readEntry(child, content);
            }
        }
        return content;
    }

private:
    void readEntry(const xmlNode* element, CalibrationContent& content) const {
        const std::string name = nameOf(element);
        if (name == IMAGE_WIDTH) {
            readValue(element, content.imageWidth);
        } else if (name == IMAGE_HEIGHT) {
            readValue(element, content.imageHeight);
        } else if (name == CAMERA_MATRIX) {
            readMatrix(element, content.cameraMatrix);
        } else if (name == DISTORTION_COEFFICIENTS) {
            readMatrix(element, content.distortion);
        }
    }

    template <class Entry>
    void requireNew(const xmlNode* element, const std::optional<Entry>& entry) const {
        if (entry) {
            Veltrani::throwFault(m_document, {lineOf(element), nameOf(element), "a second element of this name", "one",
                                              "remove one of them"});
        }
    }

    /// Returns the text of an element that holds nothing else.
    [[nodiscard]] std::string textOf(const xmlNode* element) const {
        std::string text;
        for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
            if (child->type == XML_TEXT_NODE || child->type == XML_CDATA_SECTION_NODE) {
                text += reinterpret_cast<const char*>(child->content);
            } else if (child->type != XML_COMMENT_NODE) {
                Veltrani::throwFault(m_document, {lineOf(child), nameOf(element), Veltrani::inQuotes(nameOf(child)),
                                                  "text alone", REMEDY});
            }
        }
        return text;
    }

    void readValue(const xmlNode* element, std::optional<CalibrationValue>& into) const {
        requireNew(element, into);
        into = CalibrationValue{withoutBlanks(textOf(element)), lineOf(element)};
    }

    void readMatrix(const xmlNode* element, std::optional<CalibrationMatrix>& into) const {
        requireNew(element, into);
        requireMatrix(element);
        CalibrationMatrix& matrix = into.emplace();
        matrix.line = lineOf(element);
        for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
            if (child->type == XML_ELEMENT_NODE) {
                readPart(child, matrix);
            }
        }
    }

    void requireMatrix(const xmlNode* element) const {
        const std::unique_ptr<xmlChar, decltype(xmlFree)> type(
            xmlGetNoNsProp(element, reinterpret_cast<const xmlChar*>("type_id")), xmlFree);
        if (type == nullptr || std::string_view(reinterpret_cast<const char*>(type.get())) != MATRIX_TYPE) {
            Veltrani::throwFault(m_document, {lineOf(element), nameOf(element), "an element that is no matrix",
                                              "a matrix (type_id=\"opencv-matrix\")", REMEDY});
        }
    }

    void readPart(const xmlNode* element, CalibrationMatrix& matrix) const {
        const std::string name = nameOf(element);
        if (name == "rows") {
            readValue(element, matrix.rows);
        } else if (name == "cols") {
            readValue(element, matrix.cols);
        } else if (name == "dt") {
            readValue(element, matrix.dt);
        } else if (name == "data") {
            readData(element, matrix);
        }
    }

    void readData(const xmlNode* element, CalibrationMatrix& matrix) const {
        if (std::exchange(matrix.hasData, true)) {
            Veltrani::throwFault(
                m_document, {lineOf(element), "data", "a second element of this name", "one", "remove one of them"});
        }
        const std::string text = textOf(element);
        int line = lineOf(element);
        std::size_t counted = 0;
        for (std::size_t first = text.find_first_not_of(BLANKS); first != std::string::npos;) {
            const std::size_t end = std::min(text.find_first_of(BLANKS, first), text.size());
            line += static_cast<int>(std::count(text.begin() + static_cast<std::ptrdiff_t>(counted),
                                                text.begin() + static_cast<std::ptrdiff_t>(first), '\n'));
            counted = first;
            if (matrix.data.size() == MOST_ELEMENTS) {
                Veltrani::throwFault(
                    m_document,
                    {line, "data", "more than " + std::to_string(MOST_ELEMENTS) + " numbers", "at most 14", REMEDY});
            }
            matrix.data.push_back({text.substr(first, end - first), line});
            first = text.find_first_not_of(BLANKS, end);
        }
    }

    const std::string& m_document;
};

}  // namespace

CalibrationContent calibrationFromXml(std::string_view text, const std::string& document) {
    Veltrani::HardenedXml::FirstFault fault(false);
    const Veltrani::HardenedXml::Tree tree = Veltrani::HardenedXml::read(text, {}, fault);
    if (!fault.text().empty()) {
        Veltrani::throwFault(
            document, {std::max(fault.line(), 1), "text", "broken XML (" + Veltrani::inQuotes(fault.text()) + ")",
                       "XML as OpenCV writes it", REMEDY});
    }
    CalibrationContent content = Reader(document).read(tree.get());
    content.lastLine = static_cast<int>(std::count(text.begin(), text.end(), '\n')) + 1;
    return content;
}

}  // namespace Veltrani::KelvoControlDetail
