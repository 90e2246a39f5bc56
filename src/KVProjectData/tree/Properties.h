#pragma once
// Plain properties of a dual interface, each in one line of its class.
//
//     KV_PROPERTY(ULONG, Tag, m_tag, Undo, Fires(2))
//
// declares and defines `get_Tag` and `put_Tag` over the field `m_tag`: the interface's type, the name, the field, and
// what a change does besides: `Undo` keeps the node's state for undo before it, `Fires` tells the property ID after it.
// The accessors call the class's `Get` and `Put`, those of CProjectNode unless the class has its own. A field of type
// bool takes any value but 0 as true; a Bstr is copied both ways.

#include <type_traits>

/// The getter alone, of a property without a setter or with one that has a rule of its own.
#define KV_GETTER(Type, Name, field)                                                                                   \
    HRESULT get_##Name(std::add_pointer_t<Type> pVal) override                                                         \
    {                                                                                                                  \
        return Get(pVal, field);                                                                                       \
    }

#define KV_PROPERTY(Type, Name, field, ...)                                                                            \
    KV_GETTER(Type, Name, field)                                                                                       \
    HRESULT put_##Name(Type newVal) override                                                                           \
    {                                                                                                                  \
        return Put(field, newVal __VA_OPT__(, ) __VA_ARGS__);                                                          \
    }
