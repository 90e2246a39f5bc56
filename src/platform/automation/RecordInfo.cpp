#include "platform/automation/RecordInfo.h"

#include "platform/automation/TypeInfoObject.h"
#include "platform/automation/ValueType.h"
#include "platform/com/TaskMemory.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <cstring>

namespace kv {
namespace {

/// The type of the VARIANT in which a field's value travels.
VARTYPE FieldType(const FieldDescription& field)
{
    if (field.type.vt != VT_USERDEFINED) return field.type.vt;
    return field.type.pointers ? VT_UNKNOWN : VT_I4;
}

/// Puts a value of the field's type, which the field takes over, in the place of the old one.
void Exchange(const FieldDescription& field, void* record, Variant value)
{
    const VARTYPE type = FieldType(field);
    void* place = field.place(record);
    if (type == VT_VARIANT) {
        std::swap(*static_cast<VARIANT*>(place), static_cast<VARIANT&>(value));
        return;
    }
    const ULONGLONG taken = value.vt == VT_EMPTY ? 0 : value.ullVal;
    value.vt = type;
    value.ullVal = 0;
    std::memcpy(&value.ullVal, place, ValueSize(type));
    std::memcpy(place, &taken, ValueSize(type));
}

/// A copy of the field's value.
HRESULT Read(const FieldDescription& field, const void* record, VARIANT& value)
{
    VARIANT place{};
    place.vt = static_cast<VARTYPE>(FieldType(field) | VT_BYREF);
    place.byref = field.place(const_cast<void*>(record));
    return VariantCopyInd(&value, &place);
}

class RecordInfo final : public Object<IRecordInfo> {
public:
    explicit RecordInfo(const RecordDescription& record) : m_module(&record), m_record(record) {}

    HRESULT RecordClear(void* record) override
    {
        if (!record) return E_POINTER;
        for (const FieldDescription& field : m_record.fields)
            Exchange(field, record, Variant());
        return S_OK;
    }

    HRESULT RecordCopy(const void* source, void* target) override
    {
        if (!source || !target) return E_POINTER;
        return Guarded([&] {
            std::vector<Variant> values(m_record.fields.size());
            for (std::size_t i = 0; i < values.size(); ++i)
                ThrowIfFailed(Read(m_record.fields[i], source, values[i]));
            for (std::size_t i = 0; i < values.size(); ++i)
                Exchange(m_record.fields[i], target, std::move(values[i]));
            return S_OK;
        });
    }

    HRESULT GetName(BSTR* name) override
    {
        if (!name) return E_POINTER;
        *name = nullptr;
        return Guarded([&] {
            *name = Bstr(ToUtf16(m_record.name)).Detach();
            return S_OK;
        });
    }

    HRESULT GetSize(ULONG* size) override
    {
        if (!size) return E_POINTER;
        *size = m_record.size;
        return S_OK;
    }

    HRESULT GetField(const void* record, const OLECHAR* field, VARIANT* value) override
    {
        if (!record || !field || !value) return E_POINTER;
        const FieldDescription* found = Find(field);
        return found ? Read(*found, record, *value) : DISP_E_UNKNOWNNAME;
    }

    HRESULT PutField(void* record, const OLECHAR* field, const VARIANT* value) override
    {
        if (!record || !field || !value) return E_POINTER;
        const FieldDescription* found = Find(field);
        if (!found) return DISP_E_UNKNOWNNAME;
        Variant converted;
        const VARTYPE type = FieldType(*found);
        const HRESULT result =
            type == VT_VARIANT ? VariantCopyInd(&converted, value) : VariantChangeType(&converted, value, 0, type);
        if (SUCCEEDED(result)) Exchange(*found, record, std::move(converted));
        return result;
    }

    HRESULT GetFieldNames(ULONG* count, BSTR* names) override
    {
        if (!count) return E_POINTER;
        const auto all = static_cast<ULONG>(m_record.fields.size());
        const ULONG room = std::exchange(*count, names ? 0 : all);
        if (!names) return S_OK;
        std::fill_n(names, room, nullptr);
        return Guarded([&] {
            for (; *count < room && *count < all; ++*count)
                names[*count] = Bstr(ToUtf16(m_record.fields[*count].name)).Detach();
            return S_OK;
        });
    }

    BOOL IsMatchingType(IRecordInfo* other) override
    {
        const auto* same = dynamic_cast<RecordInfo*>(other);
        return same && same->m_record.name == m_record.name && same->m_record.size == m_record.size;
    }

    void* RecordCreate() override
    {
        void* record = CoTaskMemAlloc(m_record.size);
        if (record) std::memset(record, 0, m_record.size);
        return record;
    }

    void* RecordCreateCopy(const void* source) override
    {
        void* record = RecordCreate();
        if (record && SUCCEEDED(RecordCopy(source, record))) return record;
        CoTaskMemFree(record);
        return nullptr;
    }

    HRESULT RecordDestroy(void* record) override
    {
        if (record) RecordClear(record);
        CoTaskMemFree(record);
        return S_OK;
    }

private:
    const FieldDescription* Find(std::u16string_view name) const
    {
        const auto named = [name](const FieldDescription& field) { return SameText(field.name, name); };
        const auto found = std::ranges::find_if(m_record.fields, named);
        return found == m_record.fields.end() ? nullptr : &*found;
    }

    const ModulePin m_module;
    const RecordDescription& m_record;
};

Variant RecordValue(ComPtr<IRecordInfo> info, void* record)
{
    Variant value;
    value.vt = VT_RECORD;
    value.pvRecord = record;
    value.pRecInfo = info.Detach();
    return value;
}

Variant ArrayValue(IRecordInfo* info, ULONG count)
{
    Variant value;
    value.parray = SafeArrayCreateVectorEx(VT_RECORD, 0, count, info);
    if (!value.parray) throw std::bad_alloc();
    value.vt = VT_ARRAY | VT_RECORD;
    return value;
}

} // namespace

ComPtr<IRecordInfo> MakeRecordInfo(const RecordDescription& record)
{
    return Make<RecordInfo>(record);
}

Variant NewRecords(const RecordDescription& record, ULONG count)
{
    const ComPtr<IRecordInfo> info = MakeRecordInfo(record);
    if (count != 1) return ArrayValue(info.Get(), count);
    void* made = info->RecordCreate();
    if (!made) throw std::bad_alloc();
    return RecordValue(info, made);
}

Variant TakeRecords(const RecordDescription& record, void* records, ULONG count)
{
    UniqueTaskMem<void> owned(records);
    const ComPtr<IRecordInfo> info = MakeRecordInfo(record);
    if (count == 1) return records ? RecordValue(info, owned.release()) : Variant();
    Variant value = ArrayValue(info.Get(), records ? count : 0);
    if (records) std::memcpy(value.parray->pvData, records, std::size_t{count} * record.size);
    return value;
}

HRESULT FindRecords(const RecordDescription& record, const VARIANT& argument, ULONG count, void** records)
{
    *records = nullptr;
    const bool variable = argument.vt == (VT_VARIANT | VT_BYREF);
    if (variable && !argument.pvarVal) return E_INVALIDARG;
    const VARIANT& value = variable ? *argument.pvarVal : argument;
    const auto holds = [&](IRecordInfo* info) { return info && MakeRecordInfo(record)->IsMatchingType(info); };
    switch (value.vt) {
    case VT_EMPTY:
    case VT_NULL:
        return S_OK;
    case VT_RECORD | VT_BYREF:
        if (value.pRecInfo && !holds(value.pRecInfo)) return DISP_E_TYPEMISMATCH;
        *records = value.pvRecord;
        return S_OK;
    case VT_RECORD:
        if (!holds(value.pRecInfo) || count > 1) return DISP_E_TYPEMISMATCH;
        *records = value.pvRecord;
        return S_OK;
    case VT_ARRAY | VT_RECORD:
    case VT_ARRAY | VT_RECORD | VT_BYREF: {
        const bool isPlace = (value.vt & VT_BYREF) != 0;
        if (isPlace && !value.byref) return E_INVALIDARG;
        const SAFEARRAY* array = isPlace ? *static_cast<SAFEARRAY**>(value.byref) : value.parray;
        if (!array || !holds(array->pRecInfo)) return DISP_E_TYPEMISMATCH;
        if (array->rgsabound[0].cElements < count) return DISP_E_TYPEMISMATCH;
        *records = array->pvData;
        return S_OK;
    }
    default:
        return DISP_E_TYPEMISMATCH;
    }
}

} // namespace kv

HRESULT GetRecordInfoFromTypeInfo(ITypeInfo* info, IRecordInfo** record)
{
    if (!record) return E_POINTER;
    *record = nullptr;
    return kv::Guarded([&] {
        const auto* type = dynamic_cast<kv::TypeInfo*>(info);
        const kv::RecordDescription* description = type ? type->Record() : nullptr;
        return description ? kv::MakeRecordInfo(*description).CopyTo(record) : TYPE_E_ELEMENTNOTFOUND;
    });
}
