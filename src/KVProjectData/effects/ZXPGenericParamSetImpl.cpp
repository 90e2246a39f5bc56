#include "KVProjectData/effects/ZXPGenericParamSetImpl.h"

#include "KVProjectData/effects/ParameterXml.h"

namespace kv {
namespace {

ULONG ReadID(const XmlView& element)
{
    ULONG id = 0;
    if (!ReadParameter(element, "ParamID", id)) throw Error(E_INVALIDARG);
    return id;
}

void Read(const XmlView& element, Parameter& parameter)
{
    ReadParameter(element, "Value", parameter.value);
    ReadParameter(element, "ValueMin", parameter.min);
    ReadParameter(element, "ValueMax", parameter.max);
    ReadParameter(element, "ValueDef", parameter.def);
    ReadParameter(element, "Usage", parameter.usage);
    ReadParameter(element, "Name", parameter.name);
    ReadParameter(element, "Desc", parameter.desc);
}

void Write(XmlElement element, const Parameter& parameter)
{
    element.Add("Value", parameter.value);
    element.Add("ValueMin", parameter.min);
    element.Add("ValueMax", parameter.max);
    element.Add("ValueDef", parameter.def);
    element.Add("ParamID", parameter.id);
    element.Add("Usage", parameter.usage);
    element.AddText("Name", parameter.name);
    element.AddText("Desc", parameter.desc);
}

VARIANT CopyOf(const Variant& value)
{
    return Variant(value).Detach();
}

BSTR CopyOf(const std::string& text)
{
    return Bstr(ToUtf16(text)).Detach();
}

} // namespace

template <class T, class Get>
HRESULT CZXPGenericParamSetImpl::Give(ULONG id, T* out, Get&& get) const
{
    if (!out) return E_POINTER;
    *out = {};
    return Guarded([&] {
        *out = get(Find(id));
        return S_OK;
    });
}

HRESULT CZXPGenericParamSetImpl::get_Count(ULONG* pulCount)
{
    return HandOut(static_cast<ULONG>(m_parameters.size()), pulCount);
}

HRESULT CZXPGenericParamSetImpl::GetValue(ULONG ulParamID, VARIANT* pValue)
{
    return Give(ulParamID, pValue, [](const Parameter& parameter) { return CopyOf(parameter.value); });
}

HRESULT CZXPGenericParamSetImpl::GetType(ULONG ulParamID, VARTYPE* pType)
{
    return Give(ulParamID, pType, [](const Parameter& parameter) { return parameter.value.vt; });
}

HRESULT CZXPGenericParamSetImpl::GetName(ULONG ulParamID, BSTR* pbstrName)
{
    return Give(ulParamID, pbstrName, [](const Parameter& parameter) { return CopyOf(parameter.name); });
}

HRESULT CZXPGenericParamSetImpl::GetDesc(ULONG ulParamID, BSTR* pbstrDesc)
{
    return Give(ulParamID, pbstrDesc, [](const Parameter& parameter) { return CopyOf(parameter.desc); });
}

HRESULT CZXPGenericParamSetImpl::GetRange(ULONG ulParamID, VARIANT* pMin, VARIANT* pMax)
{
    if (!pMin || !pMax) return E_POINTER;
    *pMax = {};
    HRESULT result = Give(ulParamID, pMin, [](const Parameter& parameter) { return CopyOf(parameter.min); });
    if (FAILED(result)) return result;
    result = Give(ulParamID, pMax, [](const Parameter& parameter) { return CopyOf(parameter.max); });
    if (FAILED(result)) VariantClear(pMin);
    return result;
}

HRESULT CZXPGenericParamSetImpl::GetUsage(ULONG ulParamID, ULONG* pulUsage)
{
    return Give(ulParamID, pulUsage, [](const Parameter& parameter) { return parameter.usage; });
}

HRESULT CZXPGenericParamSetImpl::GetDefault(ULONG ulParamID, VARIANT* pValue)
{
    return Give(ulParamID, pValue, [](const Parameter& parameter) { return CopyOf(parameter.def); });
}

const Parameter& CZXPGenericParamSetImpl::Find(ULONG id) const
{
    const auto place = m_places.find(id);
    if (place == m_places.end()) throw Error(E_INVALIDARG);
    return m_parameters[place->second];
}

void CZXPGenericParamSetImpl::Add(Parameter parameter)
{
    const ULONG id = parameter.id;
    if (Has(id)) throw Error(E_INVALIDARG);
    m_parameters.push_back(std::move(parameter));
    m_places.emplace(id, m_parameters.size() - 1);
}

void CZXPGenericParamSetImpl::SetValue(ULONG id, Variant value)
{
    const std::size_t place = static_cast<std::size_t>(&Find(id) - m_parameters.data());
    m_parameters[place].value = std::move(value);
}

void CZXPGenericParamSetImpl::Load(const XmlElement& pluginData)
{
    auto parameters = m_parameters;
    auto places = m_places;
    const XmlView set = pluginData.View("ParameterSet");
    for (XmlView element = set.Child("Parameter"); element; element = element.Next("Parameter")) {
        const ULONG id = ReadID(element);
        const auto [place, isNew] = places.emplace(id, parameters.size());
        if (isNew) parameters.emplace_back().id = id;
        Read(element, parameters[place->second]);
    }
    m_parameters = std::move(parameters);
    m_places = std::move(places);
}

void CZXPGenericParamSetImpl::Save(XmlElement& pluginData) const
{
    XmlElement set = pluginData.Replace("ParameterSet");
    for (const Parameter& parameter : m_parameters)
        Write(set.Add("Parameter"), parameter);
}

} // namespace kv
