#pragma once
// What an operation reads of an effect's "plugin_data", and edits in it.

#include "KVProjectData/effects/ZXPCropSourceImpl.h"
#include "KVProjectData/effects/ZXPTransformImpl.h"

namespace kv {

/// A transform and a crop over one element "plugin_data". Lives on the stack of its user, for one operation.
///
///     CZXPPlugInHelper helper;
///     helper.Load(pluginData);
///     helper.Transform().SetKeyValue(…);
///     helper.Save(edited);
class CZXPPlugInHelper {
public:
    CZXPPlugInHelper() = default;
    CZXPPlugInHelper(const CZXPPlugInHelper&) = delete;
    CZXPPlugInHelper& operator=(const CZXPPlugInHelper&) = delete;
    virtual ~CZXPPlugInHelper() = default;

    /// Reads the element, and keeps a deep copy as the working copy. E_INVALIDARG for an empty one; results of
    /// IZXPTransform::Load. On failure nothing is loaded.
    HRESULT Load(const XmlElement& pluginData);

    /// The same, but edits will go into the element itself.
    HRESULT Attach(const XmlElement& pluginData);

    /// Brings the working copy up to date and hands it out. E_FAIL, and empty, when nothing is loaded. The keys of a
    /// transform that nobody asked for stay as the document has them.
    HRESULT Save(XmlElement& pluginData);

    /// Who asks for it may edit it, now or later.
    CZXPTransformImpl& Transform()
    {
        m_transformIsOut = true;
        return m_transform;
    }
    CZXPCropSourceImpl& CropSource() { return m_cropSource; }

protected:
    /// Empty when nothing is loaded.
    const XmlElement& WorkingCopy() const { return m_workingCopy; }

private:
    /// Takes over what a derived helper knows of the element. Throws Error.
    virtual void Read(const XmlElement& /*pluginData*/) {}

    CZXPTransformImpl m_transform;
    bool m_transformIsOut = false;
    CZXPCropSourceImpl m_cropSource;
    XmlElement m_workingCopy;
};

} // namespace kv
