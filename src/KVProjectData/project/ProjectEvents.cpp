#include "KVProjectData/project/ProjectEvents.h"

#include "platform/automation/ErrorInfo.h"

#include <algorithm>

namespace kv {
namespace {

VARIANT Long(LONGLONG value)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_I4;
    variant.lVal = static_cast<LONG>(value);
    return variant;
}

/// Text that stays the caller's.
VARIANT LentText(LONGLONG text)
{
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = reinterpret_cast<BSTR>(text);
    return variant;
}

/// Events of the project as a whole change no object.
bool NamesNoObject(DISPID event)
{
    switch (event) {
    case EVENT_TVStandardChanged:
    case EVENT_ProjectDirectoryChanged:
    case EVENT_VolumePropChanged:
    case EVENT_MajorProjectChange:
    case EVENT_MessageBroadcast:
        return true;
    default:
        return false;
    }
}

/// The number of parameters that an event has, by the events' member table; -1 for what is no event.
int ParameterCount(DISPID event)
{
    const InterfaceDescription& events = kInterfaceDescription<_IKVProjectDataEvents>;
    const auto at =
        std::ranges::lower_bound(events.byId, event, {}, [&](std::uint16_t row) { return events.members[row].id; });
    if (at == events.byId.end() || events.members[*at].id != event) return -1;
    return events.members[*at].parameterCount;
}

} // namespace

void ProjectEvents::Tick()
{
    if (!m_heartbeat) return;
    Fire(EVENT_EmptyQueue, {});
    ChangeSet::Report report = m_changes.Take();
    if (report.count == 0) return;
    VARIANT list;
    VariantInit(&list);
    list.vt = VT_I4 | VT_BYREF;
    list.plVal = report.ids.data();
    std::array<VARIANT, 2> lastFirst{list, Long(report.count)};
    Fire(EVENT_ProjectChangeList, lastFirst);
}

HRESULT ProjectEvents::Tell(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c)
{
    if (!NamesNoObject(event)) m_changes.Insert(static_cast<LONG>(a));
    if (event == EVENT_EmptyQueue || event == EVENT_ProjectChangeList) return S_OK;
    if (event == EVENT_ProjectDirectoryChanged) {
        VARIANT text = LentText(c);
        return Fire(event, {&text, 1});
    }
    const int count = ParameterCount(event);
    if (count < 0) return S_OK;
    std::array<VARIANT, 3> lastFirst{Long(c), Long(b), Long(a)};
    return Fire(event, std::span(lastFirst).last(static_cast<std::size_t>(count)));
}

HRESULT ProjectEvents::Fire(DISPID event, std::span<VARIANT> lastFirst)
{
    DISPPARAMS params{lastFirst.data(), nullptr, static_cast<ULONG>(lastFirst.size()), 0};
    return m_sinks.ForEachSink([&](IUnknown& sink) {
        EXCEPINFO exception{};
        const HRESULT result = static_cast<_IKVProjectDataEvents&>(sink).Invoke(
            event, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr, &exception, nullptr);
        if (SUCCEEDED(result)) {
            FreeExceptionInfo(exception);
            return S_OK;
        }
        SetThreadErrorInfo(exception);
        return result;
    });
}

} // namespace kv
