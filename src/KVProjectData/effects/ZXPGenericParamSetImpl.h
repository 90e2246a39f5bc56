#pragma once
// The typed, named parameters of an effect.

#include "KVProjectData/Engine/Parameters.h"
#include "KVProjectData/effects/StackObject.h"
#include "platform/xml/Element.h"

#include <unordered_map>

namespace kv {

struct Parameter {
    Variant value;
    Variant min;
    Variant max;
    Variant def;
    std::string name;
    std::string desc;
    ULONG usage = 0;
    ULONG id = 0;
};

class CZXPGenericParamSetImpl final : public StackObject<IZXPGenericParamSet> {
public:
    HRESULT get_Count(ULONG* pulCount) override;
    HRESULT GetValue(ULONG ulParamID, VARIANT* pValue) override;
    HRESULT GetType(ULONG ulParamID, VARTYPE* pType) override;
    HRESULT GetName(ULONG ulParamID, BSTR* pbstrName) override;
    HRESULT GetDesc(ULONG ulParamID, BSTR* pbstrDesc) override;
    HRESULT GetRange(ULONG ulParamID, VARIANT* pMin, VARIANT* pMax) override;
    HRESULT GetUsage(ULONG ulParamID, ULONG* pulUsage) override;
    HRESULT GetDefault(ULONG ulParamID, VARIANT* pValue) override;

    /// Appends a parameter. Throws Error(E_INVALIDARG) for an ID that is there.
    void Add(Parameter parameter);
    bool Has(ULONG id) const { return m_places.contains(id); }
    /// Throw Error(E_INVALIDARG) for an ID that is none.
    const Variant& Value(ULONG id) const { return Find(id).value; }
    void SetValue(ULONG id, Variant value);

    /// Takes the parameters from "plugin_data": those with IDs that are there are brought up to date, the others
    /// appended. Throws Error, and nothing has changed: DISP_E_TYPEMISMATCH for a value that does not read as its type,
    /// E_INVALIDARG for a parameter without ID.
    void Load(const XmlElement& pluginData);
    /// Puts a new element "ParameterSet" in the place of the one that is there. Throws Error.
    void Save(XmlElement& pluginData) const;

private:
    /// Hands out something of a parameter.
    template <class T, class Get>
    HRESULT Give(ULONG id, T* out, Get&& get) const;
    const Parameter& Find(ULONG id) const;

    std::vector<Parameter> m_parameters;
    /// Where in the list an ID stands.
    std::unordered_map<ULONG, std::size_t> m_places;
};

} // namespace kv
