#include "platform/com/BuiltInClasses.h"

#include "platform/com/ServerModule.h"
#include "platform/undo/UndoManager.h"
#include "platform/xml/Dom.h"
#include "platform/xml/DomDocument.h"

namespace kv {
namespace {

class BuiltInClassObject final : public Object<IClassFactory> {
public:
    using Creator = HRESULT (*)(IUnknown* outer, REFIID iid, void** out);

    explicit BuiltInClassObject(Creator create) : m_create(create) {}

    HRESULT CreateInstance(IUnknown* outer, REFIID iid, void** out) override { return m_create(outer, iid, out); }
    HRESULT LockServer(BOOL) override { return S_OK; }

private:
    Creator m_create;
};

} // namespace

HRESULT GetBuiltInClassObject(REFCLSID clsid, REFIID iid, void** out)
{
    return Guarded([&]() -> HRESULT {
        if (clsid == CLSID_DOMDocument) return Make<BuiltInClassObject>(&CreateDomDocument)->QueryInterface(iid, out);
        if (clsid == CLSID_OleUndoManager) {
            return Make<BuiltInClassObject>(&CreateObject<UndoManager>)->QueryInterface(iid, out);
        }
        return REGDB_E_CLASSNOTREG;
    });
}

} // namespace kv
