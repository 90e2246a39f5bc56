#pragma once
// Type libraries as a host reads them: what a server library's interfaces, enumerations and records look like.

#include "platform/automation/IDispatch.h"
#include "platform/com/Export.h"

struct ITypeLib;

using HREFTYPE = DWORD;

enum TYPEKIND : LONG {
    TKIND_ENUM = 0,
    TKIND_RECORD = 1,
    TKIND_INTERFACE = 3,
    TKIND_DISPATCH = 4,
    TKIND_COCLASS = 5,
};

/// The values are those of the DISPATCH_ flags.
enum INVOKEKIND : LONG {
    INVOKE_FUNC = 1,
    INVOKE_PROPERTYGET = 2,
    INVOKE_PROPERTYPUT = 4,
};

inline constexpr WORD PARAMFLAG_FIN = 0x1;
inline constexpr WORD PARAMFLAG_FOUT = 0x2;
inline constexpr WORD PARAMFLAG_FRETVAL = 0x8;
inline constexpr WORD PARAMFLAG_FOPT = 0x10;

inline constexpr WORD TYPEFLAG_FCANCREATE = 0x2;
inline constexpr WORD TYPEFLAG_FDUAL = 0x40;
inline constexpr WORD TYPEFLAG_FDISPATCHABLE = 0x1000;

inline constexpr LONG IMPLTYPEFLAG_FDEFAULT = 0x1;
inline constexpr LONG IMPLTYPEFLAG_FSOURCE = 0x2;

/// VT_PTR leads on to `lptdesc`; VT_USERDEFINED names a type of the library, or an interface that it merely refers
/// to, by `hreftype`.
struct TYPEDESC {
    union {
        TYPEDESC* lptdesc;
        HREFTYPE hreftype;
    };
    VARTYPE vt;
};

struct ELEMDESC {
    TYPEDESC tdesc;
    /// PARAMFLAG bits.
    WORD wParamFlags;
};

struct FUNCDESC {
    DISPID memid;
    INVOKEKIND invkind;
    SHORT cParams;
    SHORT cParamsOpt;
    /// Bytes from the start of the interface's table.
    SHORT oVft;
    ELEMDESC* lprgelemdescParam;
    ELEMDESC elemdescFunc;
};

struct VARDESC {
    DISPID memid;
    /// The value of an enumerator; null for the field of a record.
    VARIANT* lpvarValue;
    ELEMDESC elemdescVar;
};

struct TYPEATTR {
    GUID guid;
    LCID lcid;
    TYPEKIND typekind;
    WORD cFuncs;
    WORD cVars;
    WORD cImplTypes;
    WORD wTypeFlags;
    WORD wMajorVerNum;
    WORD wMinorVerNum;
};

struct TLIBATTR {
    GUID guid;
    LCID lcid;
    WORD wMajorVerNum;
    WORD wMinorVerNum;
};

/// One type. Records that a Get… hands out are given back by the matching Release…. Indices out of range are
/// TYPE_E_ELEMENTNOTFOUND.
struct ITypeInfo : IUnknown {
    static constexpr GUID IID = "00020401-0000-0000-c000-000000000046"_guid;
    using Base = IUnknown;

    virtual HRESULT GetTypeAttr(TYPEATTR** attributes) = 0;
    virtual HRESULT GetFuncDesc(ULONG index, FUNCDESC** description) = 0;
    virtual HRESULT GetVarDesc(ULONG index, VARDESC** description) = 0;
    /// The name of a member, then those of its parameters. The caller frees the strings.
    virtual HRESULT GetNames(DISPID member, BSTR* names, ULONG room, ULONG* count) = 0;
    /// The interface that an interface extends; of a class, its default interface and its event interface.
    virtual HRESULT GetRefTypeOfImplType(ULONG index, HREFTYPE* type) = 0;
    virtual HRESULT GetImplTypeFlags(ULONG index, LONG* flags) = 0;
    virtual HRESULT GetIDsOfNames(OLECHAR** names, ULONG count, DISPID* ids) = 0;
    /// Calls a member of an object late bound, through this interface of the object.
    virtual HRESULT Invoke(void* instance, DISPID member, WORD flags, DISPPARAMS* params, VARIANT* result,
                           EXCEPINFO* exception, ULONG* badArgument) = 0;
    /// The name of a member, or of the type for DISPID_UNKNOWN. Both out-pointers may be null.
    virtual HRESULT GetDocumentation(DISPID member, BSTR* name, BSTR* help) = 0;
    /// A reference is good for the type that gave it. Of an interface that the library merely refers to, name and
    /// identity are known.
    virtual HRESULT GetRefTypeInfo(HREFTYPE type, ITypeInfo** info) = 0;
    /// TYPE_E_ELEMENTNOTFOUND for a type that is in no library, or in another one.
    virtual HRESULT GetContainingTypeLib(ITypeLib** library, ULONG* index) = 0;
    virtual void ReleaseTypeAttr(TYPEATTR* attributes) = 0;
    virtual void ReleaseFuncDesc(FUNCDESC* description) = 0;
    virtual void ReleaseVarDesc(VARDESC* description) = 0;
};

struct ITypeLib : IUnknown {
    static constexpr GUID IID = "00020402-0000-0000-c000-000000000046"_guid;
    using Base = IUnknown;

    virtual ULONG GetTypeInfoCount() = 0;
    virtual HRESULT GetTypeInfo(ULONG index, ITypeInfo** info) = 0;
    virtual HRESULT GetTypeInfoType(ULONG index, TYPEKIND* kind) = 0;
    virtual HRESULT GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** info) = 0;
    virtual HRESULT GetLibAttr(TLIBATTR** attributes) = 0;
    /// Of a type, or of the library for -1. Both out-pointers may be null.
    virtual HRESULT GetDocumentation(LONG index, BSTR* name, BSTR* help) = 0;
    /// Whether a type, a member, an enumerator or a field is called so, without regard to case.
    virtual HRESULT IsName(const OLECHAR* name, BOOL* is) = 0;
    /// The types that are called so (their member is then DISPID_UNKNOWN) or that have a member of that name. `count`
    /// is the room in both arrays, then how many were found. The hash is not needed.
    virtual HRESULT FindName(const OLECHAR* name, ULONG hash, ITypeInfo** infos, DISPID* members, USHORT* count) = 0;
    virtual void ReleaseTLibAttr(TLIBATTR* attributes) = 0;
};

/// Objects that tell which class they are of.
struct IProvideClassInfo : IUnknown {
    static constexpr GUID IID = "b196b283-bab4-101a-b69c-00aa00341d07"_guid;
    using Base = IUnknown;

    virtual HRESULT GetClassInfo(ITypeInfo** info) = 0;
};

/// Reads the type library of a server library, which stays loaded while the type library or a type of it is in use.
/// TYPE_E_CANTLOADLIBRARY when there is none.
KV_EXPORT HRESULT LoadTypeLib(const OLECHAR* path, ITypeLib** library);

/// Finds a registered type library. TYPE_E_LIBNOTREGISTERED when there is none of that version.
KV_EXPORT HRESULT LoadRegTypeLib(REFGUID libid, WORD major, WORD minor, LCID locale, ITypeLib** library);

/// Writes "TypeLib\{…}" and the interfaces under the classes root. The …ForUser twins write for the current user.
KV_EXPORT HRESULT RegisterTypeLib(ITypeLib* library, const OLECHAR* path);
KV_EXPORT HRESULT RegisterTypeLibForUser(ITypeLib* library, const OLECHAR* path);
/// S_OK also when it was not registered.
KV_EXPORT HRESULT UnRegisterTypeLib(ITypeLib* library);
KV_EXPORT HRESULT UnRegisterTypeLibForUser(ITypeLib* library);
