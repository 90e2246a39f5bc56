#pragma once
// The media files that the objects of a project name.

#include "KVProjectData/tree/Visitor.h"
#include "platform/automation/Bstr.h"
#include "platform/com/ComPtr.h"

#include <functional>
#include <vector>

namespace kv {

/// A property of an object that holds the path of a media file.
struct MediaProperty {
    ComPtr<IUnknown> object;
    HRESULT (*get)(IUnknown& object, BSTR* path) = nullptr;
    std::function<HRESULT(IUnknown& object, BSTR path)> put;
    /// As it stood.
    Bstr path;
    /// A production shows the file, and not the object: the path stays.
    bool isShown = false;
    /// The file that it leads to; whoever copies the files finds out.
    std::u16string full;

    /// Neither does anything where the property is another one by now.
    void Replace(const Bstr& path, const Bstr& by) const;
};

/// Gathers those that name any, in the order of the tree: the source of a title, the background of a menu, the source
/// of a data file, the source of an overlay and then its mask. Files are copied afterwards, outside of all sections.
class CArchiveHelper final : public CVisitor {
public:
    HRESULT VisitNode(CProjectNode& node, ULONG flags) override;

    std::vector<MediaProperty> properties;

private:
    template <class Interface, auto Getter, auto Setter>
    void Add(CProjectNode& node, bool isShown = false);
    template <class Interface, auto Getter>
    void Add(CProjectNode& node, std::function<HRESULT(IUnknown&, BSTR)> put, bool isShown);
};

} // namespace kv
