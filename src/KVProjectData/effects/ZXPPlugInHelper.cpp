#include "KVProjectData/effects/ZXPPlugInHelper.h"

namespace kv {

HRESULT CZXPPlugInHelper::Load(const XmlElement& pluginData)
{
    return Guarded([&] { return Attach(pluginData.Copy()); });
}

HRESULT CZXPPlugInHelper::Attach(const XmlElement& pluginData)
{
    return Guarded([&] {
        m_workingCopy = {};
        if (!pluginData) return E_INVALIDARG;
        m_transform.Load(pluginData);
        m_cropSource.Load(pluginData);
        Read(pluginData);
        m_workingCopy = pluginData;
        return S_OK;
    });
}

HRESULT CZXPPlugInHelper::Save(XmlElement& pluginData)
{
    pluginData = {};
    return Guarded([&] {
        if (!m_workingCopy) return E_FAIL;
        m_transformIsOut ? m_transform.Save(m_workingCopy) : m_transform.Keep(m_workingCopy);
        m_cropSource.Save(m_workingCopy);
        pluginData = m_workingCopy;
        return S_OK;
    });
}

} // namespace kv
