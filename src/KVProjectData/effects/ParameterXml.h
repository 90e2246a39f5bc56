#pragma once
// The values of parameter documents: typed elements that are found, and replaced, by name.

#include "KVProjectData/Engine/Parameters.h"
#include "platform/xml/Element.h"

namespace kv {

/// The element behind a node. Throws Error(E_POINTER) for null, Error(E_INVALIDARG) for what is no element.
inline XmlElement ElementOf(IUnknown* node)
{
    XmlElement element(node);
    if (!element) throw Error(node ? E_INVALIDARG : E_POINTER);
    return element;
}

/// Reads a value, which stays as it is when there is none. False then. Throws Error(DISP_E_TYPEMISMATCH) for a text
/// that is no such value: who went on with the default would save it over what stands there.
template <class T>
bool ReadParameter(const XmlView& parent, std::string_view name, T& value)
{
    const XmlView element = parent.Child(name);
    if (!element) return false;
    auto read = element.Value<T>();
    if (!read) throw Error(DISP_E_TYPEMISMATCH);
    value = std::move(*read);
    return true;
}

inline void ReadParameter(const XmlView& parent, std::string_view name, ZXPVector& value)
{
    const XmlView vector = parent.Child(name);
    ReadParameter(vector, "x", value.x);
    ReadParameter(vector, "y", value.y);
    ReadParameter(vector, "z", value.z);
}

inline void ReadParameter(const XmlView& parent, std::string_view name, FloatRect& value)
{
    const XmlView rect = parent.Child(name);
    ReadParameter(rect, "left", value.fLeft);
    ReadParameter(rect, "top", value.fTop);
    ReadParameter(rect, "right", value.fRight);
    ReadParameter(rect, "bottom", value.fBottom);
}

template <class T>
void WriteParameter(XmlElement& parent, const XmlKey& key, const T& value)
{
    parent.Replace(key, value);
}

inline void WriteParameter(XmlElement& parent, const XmlKey& key, const ZXPVector& value)
{
    XmlElement vector = parent.Replace(key);
    vector.Add("x", value.x);
    vector.Add("y", value.y);
    vector.Add("z", value.z);
}

inline void WriteParameter(XmlElement& parent, const XmlKey& key, const FloatRect& value)
{
    XmlElement rect = parent.Replace(key);
    rect.Add("left", value.fLeft);
    rect.Add("top", value.fTop);
    rect.Add("right", value.fRight);
    rect.Add("bottom", value.fBottom);
}

} // namespace kv
