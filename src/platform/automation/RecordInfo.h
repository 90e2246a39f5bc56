#pragma once
// Records in variants and arrays: what their fields are called, and how they are copied and freed.

#include "platform/automation/SafeArray.h"
#include "platform/com/Export.h"

struct ITypeInfo;

/// What is known of one type of record. Records that are created lie in task memory.
struct IRecordInfo : IUnknown {
    static constexpr GUID IID = "0000002f-0000-0000-c000-000000000046"_guid;
    using Base = IUnknown;

    /// Frees what the fields own, and leaves zeros.
    virtual HRESULT RecordClear(void* record) = 0;
    /// Replaces the fields of `target` by copies of their own; on failure it stays as it was.
    virtual HRESULT RecordCopy(const void* source, void* target) = 0;
    virtual HRESULT GetName(BSTR* name) = 0;
    virtual HRESULT GetSize(ULONG* size) = 0;
    /// A copy of the field's value: DISP_E_UNKNOWNNAME where there is none of that name, without regard to case.
    virtual HRESULT GetField(const void* record, const OLECHAR* field, VARIANT* value) = 0;
    /// Converts the value to the field's type.
    virtual HRESULT PutField(void* record, const OLECHAR* field, const VARIANT* value) = 0;
    /// `count` is the room, then how many were written; how many there are where `names` is null.
    virtual HRESULT GetFieldNames(ULONG* count, BSTR* names) = 0;
    virtual BOOL IsMatchingType(IRecordInfo* other) = 0;
    /// A zeroed record, null on lack of memory.
    virtual void* RecordCreate() = 0;
    virtual void* RecordCreateCopy(const void* source) = 0;
    /// Frees the record with what its fields own. Null is allowed.
    virtual HRESULT RecordDestroy(void* record) = 0;
};

/// TYPE_E_ELEMENTNOTFOUND for a type that is no record of a type library.
KV_EXPORT HRESULT GetRecordInfoFromTypeInfo(ITypeInfo* info, IRecordInfo** record);

namespace kv {

struct RecordDescription;

/// `record` outlives the object, which keeps its library loaded.
KV_EXPORT ComPtr<IRecordInfo> MakeRecordInfo(const RecordDescription& record);

/// A zeroed record, or an array of records for any `count` but 1.
KV_EXPORT Variant NewRecords(const RecordDescription& record, ULONG count);

/// Makes a value of `count` records in task memory, which it takes over. None where `records` is null and `count` 1.
KV_EXPORT Variant TakeRecords(const RecordDescription& record, void* records, ULONG count);

/// Where the records of an argument lie: null for VT_EMPTY and VT_NULL. DISP_E_TYPEMISMATCH for what holds others, or
/// fewer than `count`.
KV_EXPORT HRESULT FindRecords(const RecordDescription& record, const VARIANT& argument, ULONG count, void** records);

} // namespace kv
