#pragma once
// Parts of a production on the way into a document.

#include "engine/storyboard/PartArchive.h"
#include "platform/xml/XmlBuffer.h"

#include <string_view>
#include <vector>

namespace kv {

/// Writes an element as markup in one line: its attributes first, then what stands in it.
class PartWriter final : public PartArchive {
public:
    /// `rest` is what was read with the element, and is written behind what is ours. `paths` may be null; all have to
    /// outlive the writer.
    PartWriter(XmlBuffer& target, std::string_view name, const Leftovers& rest, IZXEContentPaths* paths)
        : m_target(target), m_name(name), m_rest(&rest), m_paths(paths)
    {
    }

    /// Begins the element; without that it is there when there is something in it.
    void Begin();
    /// Where what stands in the element is written.
    XmlBuffer& Content();
    void End();

    bool IsReading() const override { return false; }
    void Path(const char* name, Bstr& path) override;
    void Part(const char* name, const List& list) override;
    void Document(const char* name, StoredDocument& document) override;

private:
    enum class State { Absent, InTag, InContent };

    /// Into an element below another one.
    PartWriter(PartWriter& above, const char* name);

    void Attribute(const char* name, const XmlValue& value);
    /// Behind ours those that were read with the element.
    void EndAttributes();
    void PutAttribute(std::string_view name, std::string_view text);
    void Transfer(const char* name, LONG& value, const LONG* initial) override;
    void Transfer(const char* name, bool& value, const bool* initial) override;
    void Transfer(const char* name, double& value, const double* initial) override;
    template <class T>
    void Write(const char* name, T value, const T* initial);

    XmlBuffer& m_target;
    PartWriter* m_above = nullptr;
    std::string_view m_name;
    const Leftovers* m_rest;
    IZXEContentPaths* m_paths;
    State m_state = State::Absent;
    /// The attributes that are ours, where there are others.
    std::vector<std::string_view> m_written;
};

} // namespace kv
