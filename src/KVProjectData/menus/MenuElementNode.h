#pragma once
// The members of IKVMenuElement, once for all kinds of elements.

#include "KVProjectData/IKVMenu.h"
#include "KVProjectData/IKVMenuElementList.h"
#include "KVProjectData/menus/MenuElementImpl.h"
#include "KVProjectData/menus/MenuNode.h"
#include "KVProjectData/tree/LineageLock.h"
#include "KVProjectData/tree/NodeReference.h"
#include "KVProjectData/tree/UndoContext.h"
#include "SbdUtils/EngineCalls.h"

#include <cmath>

namespace kv {

constexpr std::string_view ElementSource(NodeType type)
{
    return type == typeButton ? "KVMenuButton" : type == typeOverlay ? "KVMenuOverlay" : "KVMenuText";
}

template <class... Numbers>
bool AreFinite(Numbers... numbers)
{
    return (std::isfinite(numbers) && ...);
}

/// A node of a kind of element. `Impl` is what it shows, a CMenuElementImpl; `Base` makes it an object with an
/// interface that extends IKVMenuElement.
template <NodeType kType, class Impl, class Base>
class MenuElementNode : public CProjectNode, public Impl, public Base {
public:
    using Impl::AttachEffect;

    HRESULT get_ID(LONG* pVal) override { return Tell(pVal, "pID", ID()); }
    HRESULT get_Tag(ULONG* pVal) override { return Tell(pVal, "pdwTag", this->m_tag); }
    HRESULT put_Tag(ULONG newVal) override { return Put(this->m_tag, newVal, Undo, Fires(2)); }
    HRESULT get_Flags(ULONG* pVal) override { return Tell(pVal, "pdwFlags", this->m_flags); }
    HRESULT put_Flags(ULONG newVal) override { return Put(this->m_flags, newVal, Undo, Fires(3)); }
    HRESULT get_IsDirty(VARIANT_BOOL* pVal) override { return Tell(pVal, "pbIsDirty", this->m_dirty); }
    HRESULT put_IsDirty(VARIANT_BOOL newVal) override
    {
        return Put(this->m_dirty, newVal == VARIANT_TRUE, Undo, Fires(11));
    }
    HRESULT get_TemplateID(LONG* pVal) override { return Tell(pVal, "pID", this->m_templateID); }
    HRESULT put_TemplateID(LONG newVal) override { return Put(this->m_templateID, newVal, Undo, Fires(10)); }
    HRESULT get_ZOrder(LONG* pVal) override { return Tell(pVal, "pzOrder", this->m_zOrder); }
    HRESULT put_ZOrder(LONG newVal) override
    {
        return Change([&] { return this->setZOrder(newVal); });
    }

    HRESULT get_Rotation(float* pVal) override
    {
        return Ask([&] { return pVal ? this->getRotation(*pVal) : kCalls.NullArgument("pAngleDeg"); });
    }
    HRESULT put_Rotation(float newVal) override
    {
        return Change([&] { return AreFinite(newVal) ? this->setRotation(newVal) : E_INVALIDARG; });
    }

    HRESULT GetPosition(float* pX, float* pY) override
    {
        return AskPair(pX, "pX", pY, "pY", [this](float& x, float& y) {
            FloatPoint position{};
            const HRESULT result = this->getPosition(position);
            x = position.x;
            y = position.y;
            return result;
        });
    }
    HRESULT SetPosition(float x, float y) override
    {
        return Change([&] {
            if (!AreFinite(x, y)) return E_INVALIDARG;
            this->MovedByHand();
            return this->setPosition({x, y});
        });
    }

    HRESULT GetBoundingBox(FloatPoint* ptsList) override
    {
        return Ask([&] {
            if (!ptsList) return kCalls.NullArgument("pVertexList");
            Corners corners;
            const HRESULT result = this->getBoundingBox(corners);
            if (SUCCEEDED(result)) std::ranges::copy(corners, ptsList);
            return result;
        });
    }
    HRESULT GetExtent(FloatRect* pRect) override
    {
        return Ask([&] { return pRect ? this->getExtent(*pRect) : kCalls.NullArgument("pRect"); });
    }
    HRESULT GetWidthHeight(float* width, float* height) override
    {
        return AskPair(width, "w", height, "h", [this](float& w, float& h) { return this->getWidthHeight(w, h); });
    }
    HRESULT SetWidthHeight(float x, float y) override
    {
        return Change([&] {
            if (!AreFinite(x, y) || x < 0 || y < 0) return E_INVALIDARG;
            this->MovedByHand();
            return this->setWidthHeight(x, y);
        });
    }
    HRESULT SetTimeOffsets(double startSecs, double endSecs) override
    {
        return Change([&] {
            if (!AreFinite(startSecs, endSecs)) return E_INVALIDARG;
            RecordState(this->HasEffect());
            return this->setTimeOffsets(startSecs, endSecs);
        });
    }

    HRESULT GetParentList(IKVMenuElementList** pp) override
    {
        return Above(pp, S_FALSE, [this] { return Parent(); });
    }
    HRESULT GetMenu(IKVMenu** pp) override
    {
        return Above(pp, E_POINTER, [this] { return MenuOf(*this); });
    }

    HRESULT set_ID(LONG lId) override
    {
        return Ask([&]() -> HRESULT {
            // The ID is undone with what the effect bears of it.
            if (this->HasEffect()) RecordState(true);
            CMenuElementImpl* const button = this->Holder();
            const bool isAnchor = button && button->AnchorID() == ID();
            if (isAnchor) button->Node().RecordState(button->HasEffect());
            const HRESULT renamed = this->RenameEffect(lId);
            if (FAILED(renamed)) return renamed;
            SetID(lId);
            if (isAnchor) button->ReturnAnchor(lId);
            return S_OK;
        });
    }
    HRESULT get_EffectID(LONG* pVal) override
    {
        return Ask([&] { return pVal ? this->getEffectID(*pVal) : E_POINTER; });
    }

    // The node

    /// Finds the effect in the menu's production, for an element that came back by undo. E_POINTER without a
    /// production.
    HRESULT AttachEffect() override
    {
        return Ask([&] {
            CMenuNode* menu = MenuOf(*this);
            const ComPtr<IUnknown> production = menu ? menu->MenuProduction() : nullptr;
            if (!production) return kCalls.NullArgument("spUnkMenuSbd.p");
            // What the production has not brought back yet, or is still to take away, is looked at when it has.
            SharedUndoContext().attachNodes.Add(*this);
            this->LeaveGoneEffect(production.Get());
            if (this->IsBound()) return S_OK;
            CMenuElementImpl* const button = kType == typeButton ? this : this->Holder();
            const LONG anchor = button ? button->AnchorID() : 0;
            this->AttachEffect(production.Get(), kHighlightTag);
            if (button) button->ReturnAnchor(anchor);
            return S_OK;
        });
    }
    HRESULT DetachEffect() override
    {
        const LineageLock lock(*this);
        CMenuElementImpl* button = this->Holder();
        // A button that lets go of all its elements knows where it stands already.
        if (button && !button->HasEffect()) button = nullptr;
        if (button) button->SelectAnchor(false);
        const HRESULT result = Impl::DetachEffect();
        if (button) button->SelectAnchor(true);
        return result;
    }

    IUnknown* Identity() override { return this->Controlling(); }

protected:
    static constexpr EngineCalls kCalls{ElementSource(kType)};

    template <class... Arguments>
    explicit MenuElementNode(Arguments&&... arguments)
        : CProjectNode(kType), Impl(static_cast<CProjectNode&>(*this)), Base(std::forward<Arguments>(arguments)...)
    {
    }

    /// Gives another element of the class all that documents tell of this one, but its ID. The class takes care of what
    /// undo records keep beside that.
    void CopyFieldsTo(MenuElementNode& copy)
    {
        if (this->HasEffect()) ThrowIfFailed(this->syncEffect(true));
        RecordedValues record = GetRecord();
        const LONG id = copy.ID();
        const bool dirty = copy.m_dirty;
        copy.ExchangeRecord(record);
        copy.SetID(id);
        copy.m_dirty = dirty;
    }

    void FirePropertyChanged(DISPID propId) override { this->onPropertyChanged(propId); }

    /// Runs an operation that may reach for the effect and for what is above.
    template <class Body>
    HRESULT Ask(Body&& body)
    {
        return Guarded([&]() -> HRESULT {
            const LineageLock lock(*this);
            EngineCalls::Begin();
            return body();
        });
    }

    /// The same for a change; refused while the element is locked.
    template <class Body>
    HRESULT Change(Body&& body)
    {
        return Ask([&]() -> HRESULT {
            const HRESULT locked = CheckLocked();
            return FAILED(locked) ? locked : body();
        });
    }

    /// The getter of a property that is stored; null is reported by a name.
    template <class Out, class Value>
    HRESULT Tell(Out* out, std::string_view name, const Value& value)
    {
        return Read([&] {
            EngineCalls::Begin();
            return out ? CProjectNode::Get(out, value) : kCalls.NullArgument(name);
        });
    }

    template <class Out, class Body>
    HRESULT AskPair(Out* first, std::string_view firstName, Out* second, std::string_view secondName, Body&& body)
    {
        return Ask([&] {
            if (!first) return kCalls.NullArgument(firstName);
            if (!second) return kCalls.NullArgument(secondName);
            return body(*first, *second);
        });
    }

private:
    /// Hands out an interface of what is above; `none` where there is nothing, or it is ending.
    template <class Interface, class Find>
    HRESULT Above(Interface** out, HRESULT none, Find&& find)
    {
        // Dropped outside of the sections, since it may be the last reference.
        ComPtr<IUnknown> held;
        return Ask([&] {
            if (!out) return E_POINTER;
            *out = nullptr;
            CProjectNode* node = find();
            if (node) held = NodeReference(*node).Hold();
            return held ? held->QueryInterface(Interface::IID, reinterpret_cast<void**>(out)) : none;
        });
    }
};

} // namespace kv
