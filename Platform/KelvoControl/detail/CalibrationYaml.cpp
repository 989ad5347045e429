#include "KelvoControl/detail/CalibrationContent.h"

#include "Common/FileFault.h"

#include <yaml.h>

#include <algorithm>
#include <new>
#include <utility>

namespace Veltrani::KelvoControlDetail {

namespace {

constexpr std::string_view DIRECTIVE = "%YAML";

/// "!!opencv-matrix" in full.
constexpr std::string_view MATRIX_TAG = "tag:yaml.org,2002:opencv-matrix";

constexpr const char* REMEDY = "write the calibration file again";

/// The parser's work for a token grows with the depth that it is at: a megabyte of brackets would keep it for an hour.
constexpr int DEEPEST_NESTING = 100;

const char* nameOf(yaml_event_type_t type) {
    switch (type) {
        case YAML_SCALAR_EVENT:
            return "a value";
        case YAML_SEQUENCE_START_EVENT:
            return "a list";
        case YAML_MAPPING_START_EVENT:
            return "a group of entries";
        case YAML_ALIAS_EVENT:
            return "an alias";
        case YAML_DOCUMENT_START_EVENT:
            return "another document";
        case YAML_NO_EVENT:
        case YAML_STREAM_START_EVENT:
        case YAML_STREAM_END_EVENT:
        case YAML_DOCUMENT_END_EVENT:
        case YAML_SEQUENCE_END_EVENT:
        case YAML_MAPPING_END_EVENT:
            break;
    }
    return "the end";
}

/// Walks the events of the parser, one at a time. Nothing is recursive: no nesting can exhaust the stack.
class Reader {
public:
    Reader(std::string_view text, const std::string& document) : m_text(text), m_document(document) {
        if (yaml_parser_initialize(&m_parser) == 0) {
            throw std::bad_alloc();
        }
        if (m_text.compare(0, DIRECTIVE.size(), DIRECTIVE) == 0) {
            m_text.front() = '#';  // as a comment the line keeps its number
        }
        yaml_parser_set_encoding(&m_parser, YAML_UTF8_ENCODING);
        yaml_parser_set_input_string(&m_parser, reinterpret_cast<const unsigned char*>(m_text.data()), m_text.size());
    }
    ~Reader() {
        yaml_event_delete(&m_event);
        yaml_parser_delete(&m_parser);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    [[nodiscard]] CalibrationContent read() {
        expect(YAML_STREAM_START_EVENT, "file", "a text");
        expect(YAML_DOCUMENT_START_EVENT, "file", "a calibration");
        expect(YAML_MAPPING_START_EVENT, "file", "entries such as image_width: 1920");
        CalibrationContent content;
        while (nextEntry()) {
            readEntry(content);
        }
        expect(YAML_DOCUMENT_END_EVENT, "file", "the end of the calibration");
        expect(YAML_STREAM_END_EVENT, "file", "nothing behind the calibration");
        content.lastLine = line();
        return content;
    }

private:
    void next() {
        yaml_event_delete(&m_event);
        if (yaml_parser_parse(&m_parser, &m_event) == 0) {
            failAtParser();
        }
    }

    [[nodiscard]] int line() const { return static_cast<int>(m_event.start_mark.line) + 1; }

    [[nodiscard]] CalibrationValue value() const {
        const auto& scalar = m_event.data.scalar;
        return {{reinterpret_cast<const char*>(scalar.value), scalar.length}, line()};
    }

    [[nodiscard]] bool isMatrix() const {
        const auto* const tag = m_event.data.mapping_start.tag;
        return tag != nullptr && std::string_view(reinterpret_cast<const char*>(tag)) == MATRIX_TAG;
    }

    void require(yaml_event_type_t type, const std::string& element, const std::string& expected) const {
        if (m_event.type != type) {
            Veltrani::throwFault(m_document, {line(), element, nameOf(m_event.type), expected, REMEDY});
        }
    }

    void expect(yaml_event_type_t type, const std::string& element, const std::string& expected) {
        next();
        require(type, element, expected);
    }

    [[noreturn]] void failAtParser() const {
        if (m_parser.error == YAML_MEMORY_ERROR) {
            throw std::bad_alloc();
        }
        auto line = static_cast<int>(m_parser.problem_mark.line) + 1;
        if (m_parser.error == YAML_READER_ERROR) {
            const auto end =
                m_text.begin() + static_cast<std::ptrdiff_t>(std::min(m_parser.problem_offset, m_text.size()));
            line = static_cast<int>(std::count(m_text.begin(), end, '\n')) + 1;
        }
        const std::string problem = m_parser.problem != nullptr ? m_parser.problem : "not readable";
        Veltrani::throwFault(m_document,
                             {line, "text", "broken YAML (" + problem + ")", "YAML as OpenCV writes it", REMEDY});
    }

    /// Moves to the key of the next entry; returns false at the end of the group.
    [[nodiscard]] bool nextEntry() {
        next();
        if (m_event.type == YAML_MAPPING_END_EVENT) {
            return false;
        }
        require(YAML_SCALAR_EVENT, "entry", "its name");
        return true;
    }

    void readEntry(CalibrationContent& content) {
        const CalibrationValue key = value();
        if (key.text == IMAGE_WIDTH) {
            readValue(key, content.imageWidth);
        } else if (key.text == IMAGE_HEIGHT) {
            readValue(key, content.imageHeight);
        } else if (key.text == CAMERA_MATRIX) {
            readMatrix(key, content.cameraMatrix);
        } else if (key.text == DISTORTION_COEFFICIENTS) {
            readMatrix(key, content.distortion);
        } else {
            skip(key);
        }
    }

    template <class Entry>
    void requireNew(const CalibrationValue& key, const std::optional<Entry>& entry) const {
        if (entry) {
            Veltrani::throwFault(m_document,
                                 {key.line, key.text, "a second entry of this name", "one", "remove one of them"});
        }
    }

    void readValue(const CalibrationValue& key, std::optional<CalibrationValue>& into) {
        requireNew(key, into);
        expect(YAML_SCALAR_EVENT, key.text, "one value");
        into = value();
    }

    void readMatrix(const CalibrationValue& key, std::optional<CalibrationMatrix>& into) {
        requireNew(key, into);
        expect(YAML_MAPPING_START_EVENT, key.text, "a matrix (!!opencv-matrix)");
        if (!isMatrix()) {
            Veltrani::throwFault(m_document, {line(), key.text, "a group of entries that is no matrix",
                                              "a matrix (!!opencv-matrix)", REMEDY});
        }
        CalibrationMatrix& matrix = into.emplace();
        matrix.line = key.line;
        while (nextEntry()) {
            readPart(matrix);
        }
    }

    void readPart(CalibrationMatrix& matrix) {
        const CalibrationValue key = value();
        if (key.text == "rows") {
            readValue(key, matrix.rows);
        } else if (key.text == "cols") {
            readValue(key, matrix.cols);
        } else if (key.text == "dt") {
            readValue(key, matrix.dt);
        } else if (key.text == "data") {
            readData(key, matrix);
        } else {
            skip(key);
        }
    }

    void readData(const CalibrationValue& key, CalibrationMatrix& matrix) {
        if (std::exchange(matrix.hasData, true)) {
            Veltrani::throwFault(m_document,
                                 {key.line, key.text, "a second entry of this name", "one", "remove one of them"});
        }
        expect(YAML_SEQUENCE_START_EVENT, key.text, "a list of numbers");
        for (next(); m_event.type != YAML_SEQUENCE_END_EVENT; next()) {
            require(YAML_SCALAR_EVENT, key.text, "a number");
            if (matrix.data.size() == MOST_ELEMENTS) {
                Veltrani::throwFault(m_document,
                                     {line(), key.text, "more than " + std::to_string(MOST_ELEMENTS) + " numbers",
                                      "at most 14", REMEDY});
            }
            matrix.data.push_back(value());
        }
    }

    /// Skips the value of an entry of another program, whatever it is.
    void skip(const CalibrationValue& key) {
        int depth = 0;
        do {
            next();
            if (depth > DEEPEST_NESTING) {
                Veltrani::throwFault(m_document, {line(), key.text,
                                                  "lists or groups, one within the other, more than " +
                                                      std::to_string(DEEPEST_NESTING) + " deep",
                                                  "an entry of a calibration file", "remove the entry"});
            }
            const bool opens = m_event.type == YAML_MAPPING_START_EVENT || m_event.type == YAML_SEQUENCE_START_EVENT;
            const bool closes = m_event.type == YAML_MAPPING_END_EVENT || m_event.type == YAML_SEQUENCE_END_EVENT;
            depth += (opens ? 1 : 0) - (closes ? 1 : 0);
        } while (depth > 0);
    }

    yaml_parser_t m_parser{};
    yaml_event_t m_event{};
    std::string m_text;
    const std::string& m_document;
};

}  // namespace

CalibrationContent calibrationFromYaml(std::string_view text, const std::string& document) {
    return Reader(text, document).read();
}

}  // namespace Veltrani::KelvoControlDetail
