#pragma once
// Parts of a production on the way out of a document.

#include "engine/storyboard/PartArchive.h"

#include <vector>

namespace kv {

class PartReader final : public PartArchive {
public:
    /// `paths` may be null; both have to outlive the reader.
    PartReader(const XmlView& place, IZXEContentPaths* paths) : m_place(place), m_paths(paths) {}

    /// Elements of that name are read by others.
    void PassOver(const char* name) { m_parts.push_back(name); }
    /// What nobody has asked for, without an element that was taken.
    Leftovers TakeRest(const XmlView& taken = {});

    bool IsReading() const override { return true; }
    void Path(const char* name, Bstr& path) override;
    void Part(const char* name, const List& list) override;
    void Document(const char* name, StoredDocument& document) override;

private:
    std::optional<std::string_view> Attribute(const char* name);
    /// The only element of that name; empty without one.
    XmlView Child(const char* name);
    void KeepRest(const char* part, Leftovers rest);
    void Transfer(const char* name, LONG& value, const LONG* initial) override;
    void Transfer(const char* name, bool& value, const bool* initial) override;
    void Transfer(const char* name, double& value, const double* initial) override;

    XmlView m_place;
    IZXEContentPaths* m_paths;
    /// What was asked for.
    std::vector<std::string_view> m_attributes;
    std::vector<std::string_view> m_parts;
    std::vector<Leftovers> m_rest;
};

} // namespace kv
