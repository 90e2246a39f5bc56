#pragma once
// A host for tests: it reaches the library as any other does, through registry, class objects and interfaces.

#include "KVProjectData/KVProjectData.h"
#include "platform/automation/SafeArray.h"
#include "platform/com/Activation.h"
#include "platform/com/Object.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace kv::test {

/// Registers the server libraries of this build in a registry in memory, once for the process.
void RegisterServers();

template <class T>
ComPtr<T> Create(REFCLSID clsid)
{
    RegisterServers();
    ComPtr<T> object;
    EXPECT_EQ(S_OK, CreateInstance(clsid, object));
    return object;
}

inline ComPtr<IKVProjectData> NewProject()
{
    return Create<IKVProjectData>(CLSID_KVProjectData);
}

/// One event as a sink received it.
struct ReceivedEvent {
    DISPID id = 0;
    /// Numbers in the order of the parameters; the IDs of a change list.
    std::vector<LONG> arguments;
    std::u16string text;

    friend bool operator==(const ReceivedEvent&, const ReceivedEvent&) = default;
};

void PrintTo(const ReceivedEvent& event, std::ostream* out);

inline ReceivedEvent Event(DISPID id, std::vector<LONG> arguments = {}, std::u16string text = {})
{
    return {id, std::move(arguments), std::move(text)};
}

/// Keeps what arrives; a test may hook into the delivery.
class RecordingSink : public Object<_IKVProjectDataEvents> {
public:
    using Hook = std::function<HRESULT(const ReceivedEvent&)>;

    explicit RecordingSink(Hook hook = {}) : m_hook(std::move(hook)) {}

    HRESULT GetTypeInfoCount(ULONG* count) override;
    HRESULT GetTypeInfo(ULONG, LCID, ITypeInfo** info) override;
    HRESULT GetIDsOfNames(REFIID, OLECHAR**, ULONG, LCID, DISPID*) override;
    HRESULT Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags, DISPPARAMS* params, VARIANT* result,
                   EXCEPINFO* exception, ULONG* badArgument) override;

    /// Everything received so far, oldest first, and forgets it.
    std::vector<ReceivedEvent> Take();

    /// Waits until an event with this ID arrived; false after the time.
    bool WaitFor(DISPID id, std::chrono::milliseconds time = std::chrono::seconds(20));
    /// Waits until this very event arrived.
    bool WaitFor(const ReceivedEvent& awaited, std::chrono::milliseconds time = std::chrono::seconds(20));

private:
    Hook m_hook;
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<ReceivedEvent> m_events;
};

/// A connection of a sink to a project, ended with this object.
class Connection {
public:
    Connection(IKVProjectData& project, RecordingSink& sink);
    ~Connection();

    IConnectionPoint& Point() const { return *m_point.Get(); }

private:
    ComPtr<IConnectionPoint> m_point;
    DWORD m_cookie = 0;
};

/// Waits until everything that was posted before has been delivered, and takes it.
std::vector<ReceivedEvent> Delivered(IKVProjectData& project, RecordingSink& sink);

inline Bstr Str(std::u16string_view text)
{
    return Bstr(text);
}

/// The value of a string property; "<null>" for a null string.
template <class Object>
std::u16string Text(Object& object, HRESULT (std::remove_reference_t<Object>::*getter)(BSTR*))
{
    Bstr value;
    EXPECT_EQ(S_OK, (object.*getter)(value.Put()));
    return value ? std::u16string(value.View()) : u"<null>";
}

/// The value of any other property.
template <class Object, class Value>
Value ValueOf(Object& object, HRESULT (Object::*getter)(Value*))
{
    Value value{};
    EXPECT_EQ(S_OK, (object.*getter)(&value));
    return value;
}

ComPtr<IXMLDOMDocument> ParseXml(std::u16string_view xml);
/// The document element of a new, empty project document with the project saved below.
ComPtr<IXMLDOMDocument> SaveToDocument(IKVProjectData& project);
/// The markup without its indentation.
std::u16string XmlOf(IXMLDOMNode& node);
/// The text of an attribute found by XPath from the document; "<none>" without it.
std::u16string AttributeText(IXMLDOMDocument& document, std::u16string_view elementPath, std::u16string_view name);

} // namespace kv::test
