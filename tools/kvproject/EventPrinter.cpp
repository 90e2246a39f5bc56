#include "EventPrinter.h"

#include "Failure.h"
#include "KVProjectData/KVProjectData.h"
#include "Text.h"
#include "platform/com/Object.h"

#include <algorithm>
#include <sstream>

namespace kvproject {
namespace {

/// Sent to oneself, to know that everything before it has arrived.
constexpr LONG kFence = 0x6b76;

const kv::MemberDescription* FindEvent(DISPID id)
{
    const auto& members = kv::kInterfaceDescription<_IKVProjectDataEvents>.members;
    const auto found = std::ranges::find(members, id, &kv::MemberDescription::id);
    return found == members.end() ? nullptr : &*found;
}

/// The interface that the propID of an event is a DISPID of; null where events have none.
const kv::InterfaceDescription* PropertyOwner(DISPID event)
{
    switch (event) {
    case EVENT_VolumePropChanged:
        return &kv::kInterfaceDescription<IKVProjectData>;
    case EVENT_TitlePropChanged:
        return &kv::kInterfaceDescription<IKVTitle>;
    case EVENT_DataFilePropChanged:
        return &kv::kInterfaceDescription<IKVDataFile>;
    case EVENT_MenuPropChanged:
        return &kv::kInterfaceDescription<IKVMenu>;
    case EVENT_ButtonChanged:
        return &kv::kInterfaceDescription<IKVMenuButton>;
    case EVENT_OverlayChanged:
        return &kv::kInterfaceDescription<IKVMenuOverlay>;
    case EVENT_TextChanged:
        return &kv::kInterfaceDescription<IKVMenuText>;
    case EVENT_TitleEncodingParamChanged:
    case EVENT_MenuEncodingParamChanged:
        return &kv::kInterfaceDescription<IKVEncodingParams>;
    default:
        return nullptr;
    }
}

/// What an argument that is a number stands for; empty for a number alone.
std::string_view NameOf(DISPID event, std::string_view parameter, LONG value)
{
    if (event == EVENT_TVStandardChanged) {
        const auto& names = kv::kEnumDescription<TVStandard>.values;
        const auto found = std::ranges::find(names, value, &kv::EnumeratorDescription::value);
        return found == names.end() ? std::string_view() : found->name;
    }
    const kv::InterfaceDescription* owner = parameter == "propID" ? PropertyOwner(event) : nullptr;
    for (; owner; owner = owner->inherited) {
        const auto found = std::ranges::find(owner->members, value, &kv::MemberDescription::id);
        if (found != owner->members.end()) return found->name;
    }
    return {};
}

std::string Line(const kv::MemberDescription& event, const DISPPARAMS& params)
{
    std::ostringstream line;
    line << "event " << event.name << '(';
    LONG count = 0;
    for (ULONG i = 0; i < params.cArgs && i < event.parameterCount; ++i) {
        const VARIANT& argument = params.rgvarg[params.cArgs - 1 - i];
        line << (i ? ", " : "") << event.parameters[i].name << '=';
        if (argument.vt == VT_BSTR) {
            const std::string text = Shown(kv::ToUtf8(kv::View(argument.bstrVal)));
            line << (text.starts_with('"') ? text : '"' + text + '"');
        } else if (argument.vt == (VT_I4 | VT_BYREF)) {
            line << '[';
            for (LONG k = 0; k < count; ++k)
                line << (k ? " " : "") << argument.plVal[k];
            line << ']';
        } else {
            count = argument.lVal;
            line << argument.lVal;
            const std::string_view name = NameOf(event.id, event.parameters[i].name, argument.lVal);
            if (!name.empty()) line << " (" << name << ')';
        }
    }
    line << ')';
    return line.str();
}

} // namespace

class EventSink final : public kv::Object<_IKVProjectDataEvents> {
public:
    explicit EventSink(std::ostream* out) : m_out(out) {}

    HRESULT GetTypeInfoCount(ULONG* count) override
    {
        if (!count) return E_POINTER;
        *count = 0;
        return S_OK;
    }

    HRESULT GetTypeInfo(ULONG, LCID, ITypeInfo** info) override
    {
        if (!info) return E_POINTER;
        *info = nullptr;
        return DISP_E_BADINDEX;
    }

    HRESULT GetIDsOfNames(REFIID, OLECHAR**, ULONG, LCID, DISPID*) override { return DISP_E_UNKNOWNNAME; }

    HRESULT Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*, EXCEPINFO*, ULONG*) override
    {
        // Whoever adds a title holds the gate until the title has its source.
        if (member == EVENT_TitleAdded) {
            const std::lock_guard gate(m_gate);
        }
        if (member == EVENT_MessageBroadcast && params->cArgs == 3 && params->rgvarg[2].lVal == kFence) {
            const std::lock_guard lock(m_mutex);
            ++m_fences;
            m_fenceArrived.notify_all();
            return S_OK;
        }
        const kv::MemberDescription* event = FindEvent(member);
        const std::lock_guard printing(m_printing);
        if (m_out && event) *m_out << Line(*event, *params) << std::endl;
        return S_OK;
    }

    /// Events that are still on their way are not printed.
    void Close()
    {
        const std::lock_guard printing(m_printing);
        m_out = nullptr;
    }

    std::mutex& Gate() { return m_gate; }

    void PassFence(IKVProjectData& project)
    {
        std::unique_lock lock(m_mutex);
        const int expected = m_fences + 1;
        Require(project.BroadcastMessage(kFence, 0, 0), "cannot wait for the events");
        m_fenceArrived.wait(lock, [&] { return m_fences >= expected; });
    }

private:
    std::mutex m_printing;
    std::ostream* m_out;
    std::mutex m_gate;
    std::mutex m_mutex;
    std::condition_variable m_fenceArrived;
    int m_fences = 0;
};

EventPrinter::EventPrinter(IKVProjectData& project, std::ostream* out)
    : m_project(project), m_sink(kv::Make<EventSink>(out))
{
    const auto container = kv::Query<IConnectionPointContainer>(&project);
    if (!container) throw Failure("the project tells no events");
    Require(container->FindConnectionPoint(_IKVProjectDataEvents::IID, m_point.Put()), "the project tells no events");
    Require(m_point->Advise(m_sink->Controlling(), &m_cookie), "cannot connect to the events");
}

EventPrinter::~EventPrinter()
{
    m_point->Unadvise(m_cookie);
    m_sink->Close();
}

kv::ComPtr<IKVTitle> EventPrinter::AddTitle(const kv::Bstr& source, LONG position)
{
    const std::lock_guard gate(m_sink->Gate());
    kv::ComPtr<IKVTitle> title;
    Require(m_project.AddTitle(position, title.Put()), "cannot add a title");
    Require(title->put_Source(source.Get()), "cannot set the title's source");
    return title;
}

std::unique_lock<std::mutex> EventPrinter::HoldTitles()
{
    return std::unique_lock(m_sink->Gate());
}

void EventPrinter::WaitForAll()
{
    m_sink->PassFence(m_project);
    // What the first events caused was posted behind the first fence.
    m_sink->PassFence(m_project);
}

} // namespace kvproject
