#pragma once

#include <memory>
#include <string>
#include <string_view>

struct _xmlDoc;  // of libxml2, whose headers only those include who walk through the tree

namespace Veltrani {

/// XML from outside, read by libxml2 in a closed world: nothing is fetched, no document type is allowed, and hence no
/// entities but the five of XML itself. The parser's limits on depth and lengths hold, lines count beyond 65535, and
/// nothing is printed.
class HardenedXml {
public:
    struct FreeTree {
        void operator()(_xmlDoc* tree) const;
    };
    /// An `xmlDoc`.
    using Tree = std::unique_ptr<_xmlDoc, FreeTree>;

    struct Options {
        bool isUtf8 = false;           ///< whatever encoding the text declares
        bool isChanged = false;        ///< the tree will be: each of its names is owned by its node
        bool hasElementLines = false;  ///< `_private` of each element is the line on which its start tag ends
    };

    /// A fault that the parser reports.
    struct Finding {
        int line = 0;
        const char* message = nullptr;  ///< in the words of the parser, usually with a line feed behind; may be null
        std::string_view element;       ///< that is open there; empty outside of all
        bool isFatal = false;           ///< the parser ends here
        bool isOfNamespaces = false;
    };

    /// Receives what is wrong with a text while it is read.
    class Observer {
    public:
        virtual ~Observer() = default;

        /// @return true once a fault of the text is known: too little memory behind it is only how the parser gives up,
        /// for instance on a value that is too long
        virtual bool onFinding(const Finding& finding) = 0;
        /// Reading ends before the first declaration of the document type.
        virtual void onDocumentType(int line, std::string_view name) = 0;
    };

    /// Keeps the first fault.
    class FirstFault : public Observer {
    public:
        /// @param allowsUndeclaredPrefixes the faults of namespaces are none
        explicit FirstFault(bool allowsUndeclaredPrefixes) : m_allowsUndeclaredPrefixes(allowsUndeclaredPrefixes) {}

        bool onFinding(const Finding& finding) override;
        void onDocumentType(int line, std::string_view name) override;

        [[nodiscard]] int line() const { return m_line; }
        /// On one line unless the parser breaks it; empty without a fault.
        [[nodiscard]] const std::string& text() const { return m_text; }

    private:
        bool m_allowsUndeclaredPrefixes;
        int m_line = 0;
        std::string m_text;
    };

    HardenedXml() = delete;

    /// Returns the tree of a text of at most 2^31 - 1 bytes, with its root. Null, or incomplete, when there was a
    /// fault. Throws `std::bad_alloc` where memory ran out before one was known.
    [[nodiscard]] static Tree read(std::string_view text, const Options& options, Observer& observer);
};

}  // namespace Veltrani
