#pragma once
// Tells the host's error reporter what loading a document passes over.

#include "platform/xml/Element.h"

#include <string>
#include <string_view>

namespace kv {

/// Each place is told by its path, such as "/Root/Project/Titles/Title[2]/@label". Where there is nothing to tell it
/// costs nothing; of a document that is strange all over, the first places are told and the rest counted.
class LoadReport {
public:
    LoadReport() = default;
    LoadReport(const LoadReport&) = delete;
    LoadReport& operator=(const LoadReport&) = delete;
    ~LoadReport();

    /// `fault` says what is the matter with an element, with what it holds, or with an attribute of it.
    void PassOver(const XmlView& element, std::string_view fault, int line = __builtin_LINE());
    void PassOver(const XmlView& element, std::string_view attribute, std::string_view fault,
                  int line = __builtin_LINE());

    /// A text of any length and content in quotation marks, for one line.
    static std::string Quote(std::string_view text);

private:
    unsigned m_places = 0;
};

} // namespace kv
