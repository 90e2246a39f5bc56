// The two modes of a menu, and the way from one to the other, by the host and by undo.

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/menus/Menu.h"
#include "SbdUtils/EngineCalls.h"

#include <map>

namespace kv {
namespace {

/// Calls `visit` with each element of a list, and of the lists of its buttons, inside the sections of the element and
/// of what it stands in.
template <class Visit>
void ForEachElement(CProjectNode& list, Visit&& visit)
{
    constexpr LONG kElementList = 3;
    const SectionLock listLock(list.Section());
    for (LONG i = 0; i < list.ChildCount(); ++i) {
        CProjectNode& element = *list.GetChild(i);
        const SectionLock lock(element.Section());
        visit(element);
        CProjectNode* inner = element.Type() == typeButton ? element.GetChild(kElementList) : nullptr;
        if (inner) ForEachElement(*inner, visit);
    }
}

/// What the elements of a menu keep themselves while they have no effects.
class ElementsImage {
public:
    void Take(CProjectNode& elements)
    {
        m_kept.clear();
        ForEachElement(elements, [&](CProjectNode& element) {
            m_kept.insert_or_assign(&element, Kept{element.Identity(), element.GetRecord(), element.KeptXml()});
        });
    }

    /// Of those that still stand there; once.
    void Restore(CProjectNode& elements)
    {
        ForEachElement(elements, [&](CProjectNode& element) {
            const auto kept = m_kept.find(&element);
            if (kept == m_kept.end()) return;
            element.ExchangeRecord(kept->second.values);
            element.KeepXml(kept->second.xml);
        });
        m_kept.clear();
    }

private:
    struct Kept {
        ComPtr<IUnknown> object;
        RecordedValues values;
        XmlElement xml;
    };
    std::map<CProjectNode*, Kept> m_kept;
};

} // namespace

/// The mode that a menu is not in: what is let go with it, or comes back by undo.
class CKVMenu::OtherMode final : public KeptMode {
public:
    explicit OtherMode(CKVMenu& menu) : m_menu(menu) {}

    HRESULT Exchange() override { return m_menu.ExchangeMode(*this); }

    /// False until a switch succeeded.
    bool isFilled = false;
    bool native = false;
    /// That of the mode.
    ProductionUse production;
    /// Of the native mode.
    ElementsImage elements;

private:
    CKVMenu& m_menu;
};

/// The mode that a menu was in, with the production that showed it.
class CKVMenu::ShownMode final : public ModeImage {
public:
    explicit ShownMode(CKVMenu& menu) : m_menu(menu), m_native(menu.m_native), m_production(menu.ModeProduction()) {}

    bool Enter() const override { return m_menu.EnterMode(m_native, m_production); }
    void Bind() const override
    {
        if (!m_native && m_production) ForEachElement(m_menu.Elements(), AttachNowOrLater);
    }

private:
    CKVMenu& m_menu;
    const bool m_native;
    const ProductionUse m_production;
};

HRESULT CKVMenu::SetNative(VARIANT_BOOL bNative)
{
    return Edit([&](EditScope&) {
        EngineCalls::Begin();
        if (bNative != VARIANT_TRUE && bNative != VARIANT_FALSE) return E_INVALIDARG;
        const bool native = bNative == VARIANT_TRUE;
        if (native == m_native) return S_FALSE;
        RecordState(true);
        const auto left = std::make_shared<OtherMode>(*this);
        RecordMode(left);
        return native ? TurnNative(*left) : TurnToProduction(*left);
    });
}

HRESULT CKVMenu::TurnNative(OtherMode& left)
{
    ThrowIfFailed(m_productions.MakeBackground());
    const auto background = m_productions.Background();
    const auto menu = m_productions.Menu();
    const HRESULT turned = Guarded([&] {
        Playing playing{m_background, m_audio, m_duration};
        if (menu) {
            // They keep what their effects told from here on.
            ForEachElement(Elements(), [](CProjectNode& element) { element.RecordState(true); });
            {
                const RecordingOff off;
                ThrowIfFailed(Elements().RemoveEffects());
            }
            if (m_bkgndID == 0) playing = PlayingOf(menu.Get());
        }
        if (m_bkgndID == 0) Play(background.Get(), playing);
        const AspectRatio aspect = menu ? m_productions.AspectFromMenu(EncodingParams()) : AspectRatio_None;
        ThrowIfFailed(m_productions.ExchangeMenu(left.production));
        // Last, since nothing can fail any more but the lack of memory.
        if (aspect != AspectRatio_None) {
            const HRESULT told = EncodingParams().put_AspectRatio(aspect);
            if (FAILED(told)) {
                m_productions.ExchangeMenu(left.production);
                throw Error(told);
            }
        }
        m_background = std::move(playing.background);
        m_audio = std::move(playing.audio);
        m_duration = playing.duration;
        return S_OK;
    });
    if (FAILED(turned)) {
        // The menu goes on as it was.
        ProductionUse none;
        m_productions.ExchangeBackground(none);
        none.reset();
        if (menu) Elements().InsertEffects(menu.Get());
        return turned;
    }
    left.isFilled = true;
    m_native = true;
    return S_OK;
}

HRESULT CKVMenu::TurnToProduction(OtherMode& left)
{
    ThrowIfFailed(m_productions.MakeMenu());
    const auto menu = m_productions.Menu();
    const HRESULT turned = Guarded([&] {
        left.elements.Take(Elements());
        // Buttons get their anchors.
        ForEachElement(Elements(), [](CProjectNode& element) {
            if (element.Type() == typeButton) element.RecordState(false);
        });
        {
            const RecordingOff off;
            ThrowIfFailed(Elements().InsertEffects(menu.Get()));
        }
        if (m_bkgndID == 0) Play(menu.Get(), {m_background, m_audio, m_duration});
        ThrowIfFailed(m_productions.AspectToMenu(EncodingParams()));
        return S_OK;
    });
    if (FAILED(turned)) {
        // The menu stays as it was.
        Elements().RemoveEffects();
        ProductionUse none;
        m_productions.ExchangeMenu(none);
        return turned;
    }
    m_productions.ExchangeBackground(left.production);
    left.native = true;
    left.isFilled = true;
    m_native = false;
    return S_OK;
}

HRESULT CKVMenu::ExchangeMode(OtherMode& other)
{
    return Read([&] {
        if (!other.isFilled || other.native == m_native) return S_FALSE;
        const RecordingOff off;
        ProductionUse left;
        if (other.native) {
            // The effects stay in the production, which undo and redo change by its own blocks: at this time they tell
            // neither what the elements were nor what they are to be.
            Elements().DetachEffects();
            const HRESULT exchanged = m_productions.ExchangeMenu(left);
            if (FAILED(exchanged)) {
                Elements().AttachEffects(m_productions.Menu().Get());
                return exchanged;
            }
            m_productions.ExchangeBackground(other.production);
            other.elements.Restore(Elements());
        } else {
            left = other.production;
            const HRESULT exchanged = m_productions.ExchangeMenu(left);
            if (FAILED(exchanged)) return exchanged;
            other.production.reset();
            m_productions.ExchangeBackground(left);
            other.elements.Take(Elements());
            // Those whose effects the storyboard has not brought back yet are bound when it has.
            ForEachElement(Elements(), [](CProjectNode& element) { element.AttachEffect(); });
        }
        other.production = std::move(left);
        other.native = m_native;
        m_native = !m_native;
        return S_OK;
    });
}

std::shared_ptr<const ModeImage> CKVMenu::PresentMode()
{
    return std::make_shared<ShownMode>(*this);
}

bool CKVMenu::EnterMode(bool native, ProductionUse production)
{
    if (native == m_native && production == ModeProduction()) return false;
    EngineCalls::Begin();
    const RecordingOff off;
    // The effects stay in the production that is left.
    Elements().DetachEffects();
    ProductionUse background;
    if (native) std::swap(background, production);
    const HRESULT exchanged = m_productions.ExchangeMenu(production);
    if (FAILED(exchanged)) {
        if (const auto menu = m_productions.Menu()) Elements().AttachEffects(menu.Get());
        throw Error(exchanged);
    }
    m_productions.ExchangeBackground(background);
    m_native = native;
    return true;
}

} // namespace kv
