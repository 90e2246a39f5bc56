#pragma once
// Parts of a production on the way into a document.

#include "engine/storyboard/PartArchive.h"

namespace kv {

class PartWriter final : public PartArchive {
public:
    /// Into an element. `paths` may be null; all have to outlive the writer.
    PartWriter(XmlElement element, const Leftovers& rest, IZXEContentPaths* paths)
        : m_rest(&rest), m_paths(paths), m_element(std::move(element))
    {
    }

    /// Writes what was read with the element, last.
    void WriteRest();

    bool IsReading() const override { return false; }
    void Path(const char* name, Bstr& path) override;
    void Part(const char* name, const List& list) override;
    void Document(const char* name, StoredDocument& document) override;

private:
    /// Into an element below another one, made when there is something to write.
    PartWriter(PartWriter& above, const char* name);

    XmlElement& Here();
    void Transfer(const char* name, LONG& value, const LONG* initial) override;
    void Transfer(const char* name, bool& value, const bool* initial) override;
    void Transfer(const char* name, double& value, const double* initial) override;
    template <class T>
    void Write(const char* name, T value, const T* initial);

    PartWriter* m_above = nullptr;
    const char* m_name = nullptr;
    const Leftovers* m_rest;
    IZXEContentPaths* m_paths;
    XmlElement m_element;
};

} // namespace kv
