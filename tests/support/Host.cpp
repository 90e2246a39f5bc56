#include "support/Host.h"

#include "platform/system/Registry.h"

#include <algorithm>
#include <ostream>

namespace kv::test {

void RegisterServers()
{
    static const bool registered = [] {
        Registry::UseMemory();
        return SUCCEEDED(RegisterServer(KV_TEST_LIBRARY)) && SUCCEEDED(RegisterServer(KV_TEST_ENGINE));
    }();
    ASSERT_TRUE(registered);
}

void PrintTo(const ReceivedEvent& event, std::ostream* out)
{
    *out << "event 0x" << std::hex << event.id << std::dec << "(";
    for (LONG argument : event.arguments)
        *out << argument << ' ';
    *out << ToUtf8(event.text) << ")";
}

HRESULT RecordingSink::GetTypeInfoCount(ULONG* count)
{
    *count = 0;
    return S_OK;
}

HRESULT RecordingSink::GetTypeInfo(ULONG, LCID, ITypeInfo** info)
{
    *info = nullptr;
    return DISP_E_BADINDEX;
}

HRESULT RecordingSink::GetIDsOfNames(REFIID, OLECHAR**, ULONG, LCID, DISPID*)
{
    return DISP_E_UNKNOWNNAME;
}

HRESULT RecordingSink::Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* params, VARIANT*,
                              EXCEPINFO* exception, ULONG*)
{
    EXPECT_EQ(IID_NULL, reserved);
    EXPECT_EQ(LOCALE_USER_DEFAULT, locale);
    EXPECT_EQ(DISPATCH_METHOD, flags);
    ReceivedEvent event{member, {}, {}};
    for (ULONG i = params->cArgs; i-- > 0;) {
        const VARIANT& argument = params->rgvarg[i];
        if (argument.vt == VT_BSTR) {
            event.text = View(argument.bstrVal);
        } else if (argument.vt == (VT_I4 | VT_BYREF)) {
            const LONG count = std::exchange(event.arguments, {}).at(0);
            event.arguments.assign(argument.plVal, argument.plVal + count);
        } else {
            EXPECT_EQ(VT_I4, argument.vt);
            event.arguments.push_back(argument.lVal);
        }
    }
    const HRESULT result = m_hook ? m_hook(event) : S_OK;
    if (FAILED(result)) exception->scode = result;
    const std::lock_guard lock(m_mutex);
    m_events.push_back(std::move(event));
    m_arrived.notify_all();
    return result;
}

std::vector<ReceivedEvent> RecordingSink::Take()
{
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_events, {});
}

bool RecordingSink::WaitFor(DISPID id, std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    return m_arrived.wait_for(lock, time, [&] {
        return std::ranges::any_of(m_events, [id](const ReceivedEvent& event) { return event.id == id; });
    });
}

bool RecordingSink::WaitFor(const ReceivedEvent& awaited, std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    return m_arrived.wait_for(lock, time, [&] { return std::ranges::find(m_events, awaited) != m_events.end(); });
}

Connection::Connection(IKVProjectData& project, RecordingSink& sink)
{
    const auto container = Query<IConnectionPointContainer>(&project);
    if (SUCCEEDED(container->FindConnectionPoint(_IKVProjectDataEvents::IID, m_point.Put())))
        m_point->Advise(sink.Controlling(), &m_cookie);
}

Connection::~Connection()
{
    if (m_cookie) m_point->Unadvise(m_cookie);
}

std::vector<ReceivedEvent> Delivered(IKVProjectData& project, RecordingSink& sink)
{
    const ReceivedEvent fence = Event(EVENT_MessageBroadcast, {0x7e5c, 0, 0});
    EXPECT_EQ(S_OK, project.BroadcastMessage(fence.arguments[0], fence.arguments[1], fence.arguments[2]));
    EXPECT_TRUE(sink.WaitFor(fence));
    std::vector<ReceivedEvent> events = sink.Take();
    std::erase(events, fence);
    std::erase_if(events, [](const ReceivedEvent& event) {
        return event.id == EVENT_EmptyQueue || event.id == EVENT_ProjectChangeList;
    });
    return events;
}

ComPtr<IXMLDOMDocument> ParseXml(std::u16string_view xml)
{
    const auto document = Create<IXMLDOMDocument>(CLSID_DOMDocument);
    VARIANT_BOOL parsed = VARIANT_FALSE;
    EXPECT_EQ(S_OK, document->loadXML(Bstr(xml).Get(), &parsed));
    EXPECT_TRUE(parsed);
    return document;
}

ComPtr<IXMLDOMDocument> SaveToDocument(IKVProjectData& project)
{
    const auto document = ParseXml(u"<Root/>");
    ComPtr<IXMLDOMElement> root;
    EXPECT_EQ(S_OK, document->get_documentElement(root.Put()));
    EXPECT_EQ(S_OK, project.SaveXML(root.Get()));
    return document;
}

std::u16string XmlOf(IXMLDOMNode& node)
{
    Bstr xml;
    EXPECT_EQ(S_OK, node.get_xml(xml.Put()));
    std::u16string text(xml.View());
    for (auto line = text.find(u'\n'); line != text.npos; line = text.find(u'\n', line))
        text.erase(line, text.find_first_not_of(u"\n ", line) - line);
    return text;
}

std::u16string AttributeText(IXMLDOMDocument& document, std::u16string_view elementPath, std::u16string_view name)
{
    ComPtr<IXMLDOMNode> node;
    document.selectSingleNode(Bstr(elementPath).Get(), node.Put());
    const auto element = Query<IXMLDOMElement>(node);
    if (!element) return u"<no element>";
    Variant value;
    element->getAttribute(Bstr(name).Get(), value.Put());
    return value.vt == VT_BSTR ? std::u16string(View(value.bstrVal)) : u"<none>";
}

} // namespace kv::test
