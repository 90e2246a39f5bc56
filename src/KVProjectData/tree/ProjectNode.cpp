#include "KVProjectData/tree/ProjectNode.h"

#include "KVProjectData/ResultCodes.h"
#include "KVProjectData/tree/ElementArchives.h"
#include "KVProjectData/tree/ObjectID.h"
#include "KVProjectData/tree/RecordArchive.h"
#include "KVProjectData/tree/UndoContext.h"
#include "platform/com/ComPtr.h"
#include "platform/xml/Element.h"

#include <algorithm>

namespace kv {
namespace {

/// The DOM node behind an argument; empty when it is none. Other failures of the query are raised.
ComPtr<IXMLDOMNode> DomNode(IUnknown* object)
{
    ComPtr<IXMLDOMNode> node;
    if (!object) return node;
    const HRESULT result = object->QueryInterface(IXMLDOMNode::IID, node.PutVoid());
    if (result == E_NOINTERFACE) return nullptr;
    ThrowIfFailed(result);
    return node;
}

std::atomic<ULONGLONG> g_treeState{1};

/// To be told inside the sections that the change was made in, when it is done.
void TreeChanged()
{
    g_treeState.fetch_add(1, std::memory_order_release);
}

/// The same for a node that came to another parent, or to none.
void ParentChanged(NodeType type)
{
    TreeChanged();
    if (type == typeMenu) StoryboardsMoved();
}

} // namespace

ULONGLONG CProjectNode::TreeState()
{
    return g_treeState.load(std::memory_order_acquire);
}

CriticalSection& ParentLinks()
{
    static CriticalSection links;
    return links;
}

CProjectNode::~CProjectNode()
{
    if (CProjectNode* parent = Parent()) {
        std::erase(parent->m_children, this);
        ParentChanged(m_type);
    }
    for (CProjectNode* child : m_children)
        child->SetParent(nullptr);
}

HRESULT CProjectNode::LoadXML(IUnknown* node)
{
    const XmlElement element(DomNode(node).Get());
    if (!element) return E_NOTIMPL;
    LoadReport report;
    return LoadElement({element, element.View(), report});
}

HRESULT CProjectNode::SaveXML(IUnknown* node, ULONG flags)
{
    const ComPtr<IXMLDOMNode> element = DomNode(node);
    return element ? SaveElement(element.Get(), flags) : E_NOTIMPL;
}

HRESULT CProjectNode::FireEvent(DISPID event, LONGLONG a, LONGLONG b, LONGLONG c)
{
    const SectionLock links(ParentLinks());
    CProjectNode& root = Root();
    return &root == this ? KV_E_NO_PARENT : root.FireEvent(event, a, b, c);
}

void CProjectNode::SetModified(bool major)
{
    const SectionLock links(ParentLinks());
    CProjectNode& root = Root();
    if (&root != this) root.SetModified(major);
}

std::u16string CProjectNode::FullPathOf(std::u16string_view path)
{
    const SectionLock links(ParentLinks());
    CProjectNode& root = Root();
    return &root == this ? std::u16string(path) : root.FullPathOf(path);
}

std::string_view CProjectNode::GetName(ULONG) const
{
    return {};
}

HRESULT CProjectNode::AttachEffect()
{
    return S_OK;
}

HRESULT CProjectNode::DetachEffect()
{
    return S_OK;
}

XmlElement CProjectNode::KeptXml()
{
    return {};
}

void CProjectNode::KeepXml(const XmlElement&) {}

std::shared_ptr<const ModeImage> CProjectNode::PresentMode()
{
    return nullptr;
}

void CProjectNode::FirePropertyChanged(DISPID) {}

HRESULT CProjectNode::LoadElement(const LoadedElement& element)
{
    AttributeReader reader(element);
    const SectionLock lock(m_section);
    Attributes(reader);
    reader.ReportRest();
    return S_OK;
}

CProjectNode* CProjectNode::CreateItem(NodeType)
{
    return nullptr;
}

bool CProjectNode::OwnsContent(const XmlView&) const
{
    return false;
}

XmlElement CProjectNode::OwnContent() const
{
    return {};
}

HRESULT CProjectNode::SaveElement(IXMLDOMNode* element, ULONG flags)
{
    const auto target = Query<IXMLElementAttributes>(element);
    if (!target) return E_NOINTERFACE;
    AttributeWriter writer(flags);
    Attributes(writer);
    const HRESULT result = writer.WriteTo(*target.Get());
    if (FAILED(result)) return result;
    if (const XmlElement content = OwnContent()) XmlElement(element).Insert(content);
    return result;
}

RecordedValues CProjectNode::GetRecord()
{
    RecordArchive counter;
    Attributes(counter);
    RecordedValues record = counter.NewRecord();
    RecordArchive filler(record, RecordArchive::Task::Fill);
    Attributes(filler);
    return record;
}

void CProjectNode::ExchangeRecord(RecordedValues& record)
{
    RecordArchive exchanger(record, RecordArchive::Task::Exchange);
    Attributes(exchanger);
}

CProjectNode* CProjectNode::GetChild(LONG index) const
{
    return index >= 0 && index < ChildCount() ? m_children[static_cast<std::size_t>(index)] : nullptr;
}

bool CProjectNode::AddChild(CProjectNode* child, bool assignID)
{
    return InsertChild(child, ChildCount(), assignID);
}

bool CProjectNode::InsertChild(CProjectNode* child, LONG index, bool assignID)
{
    constexpr std::size_t kUsualChildren = 4;
    if (!child || index < 0 || index > ChildCount()) return false;
    if (m_children.capacity() == 0) m_children.reserve(kUsualChildren);
    if (assignID) {
        for (CProjectNode* part : child->m_children)
            part->AssignID();
        child->AssignID();
    }
    m_children.insert(m_children.begin() + index, child);
    child->SetParent(this);
    return true;
}

CProjectNode* CProjectNode::RemoveChildAt(LONG index)
{
    CProjectNode* child = GetChild(index);
    if (child) {
        m_children.erase(m_children.begin() + index);
        child->SetParent(nullptr);
    }
    return child;
}

void CProjectNode::SetParent(CProjectNode* parent)
{
    // What is on its way up still finds the parent that it started for.
    const SectionLock lock(m_section);
    const SectionLock links(ParentLinks());
    m_parent.store(parent, std::memory_order_release);
    ParentChanged(m_type);
}

HRESULT CProjectNode::MoveChild(LONG from, LONG to, CProjectNode** moved)
{
    if (from != to) {
        if (!GetChild(from) || !GetChild(to)) return KV_E_BAD_POSITION;
        const auto first = m_children.begin();
        if (from < to) {
            std::rotate(first + from, first + from + 1, first + to + 1);
        } else {
            std::rotate(first + to, first + from, first + from + 1);
        }
        TreeChanged();
    }
    if (moved) *moved = GetChild(to);
    return S_OK;
}

CProjectNode* CProjectNode::FindChildByID(LONG id, LONG* index) const
{
    const auto found = std::ranges::find(m_children, id, &CProjectNode::ID);
    if (found == m_children.end()) return nullptr;
    if (index) *index = static_cast<LONG>(found - m_children.begin());
    return *found;
}

CProjectNode* CProjectNode::FindChildByTypeAndName(NodeType type, std::string_view name) const
{
    for (CProjectNode* child : m_children) {
        if (child->m_type != type) continue;
        const std::string_view childName = child->GetName(0);
        if (name.empty() || childName.empty() || name == childName) return child;
    }
    return nullptr;
}

LONG CProjectNode::IndexOf(const CProjectNode& child, LONG hint) const
{
    if (GetChild(hint) == &child) return hint;
    const auto found = std::ranges::find(m_children, &child);
    return found == m_children.end() ? -1 : static_cast<LONG>(found - m_children.begin());
}

LONG CProjectNode::IndexInParent() const
{
    LONG index = -1;
    if (const CProjectNode* parent = Parent()) parent->FindChildByID(ID(), &index);
    return index;
}

bool CProjectNode::RemoveFromParent()
{
    CProjectNode* parent = Parent();
    return parent && parent->RemoveChildAt(IndexInParent()) != nullptr;
}

void CProjectNode::SetID(LONG id)
{
    if (m_ID.exchange(id) != id) TreeChanged();
    PassOverID(id);
}

void CProjectNode::AssignID()
{
    if (m_ID != 0) return;
    m_ID = TakeNextID();
    TreeChanged();
}

void CProjectNode::Lock(bool recursive)
{
    const SectionLock lock(m_section);
    if (recursive) {
        for (CProjectNode* child : m_children)
            child->Lock(true);
    }
    ++m_lockCount;
}

LONG CProjectNode::Unlock(bool recursive)
{
    const SectionLock lock(m_section);
    if (m_lockCount > 0) --m_lockCount;
    if (recursive) {
        for (CProjectNode* child : m_children)
            child->Unlock(true);
    }
    return m_lockCount;
}

HRESULT CProjectNode::CheckLocked() const
{
    return m_lockCount > 0 ? KV_E_LOCKED : S_OK;
}

template <class Keep>
bool CProjectNode::Record(bool major, std::atomic<ULONG>& mark, Keep&& keep)
{
    SetModified(major);
    UndoContext& context = SharedUndoContext();
    // A major change is one also of a node whose state is kept already.
    if (!major && mark == context.stepNumber) return false;
    return KeepInStep(major, [&](StateRecorder& step) {
        if (mark == context.stepNumber) return false;
        const bool kept = keep(step);
        mark = context.stepNumber.load();
        return kept;
    });
}

bool CProjectNode::RecordState(bool major)
{
    return Record(major, m_recordedIn, [this](StateRecorder& step) { return step.KeepState(*this); });
}

bool CProjectNode::RecordCommandListState(CKVCommandList& commandList)
{
    return Record(false, m_recordedIn, [&](StateRecorder& step) { return step.KeepCommands(commandList); });
}

bool CProjectNode::RecordMode(std::shared_ptr<KeptMode> mode)
{
    SetModified(true);
    return KeepInStep(true, [&](StateRecorder& step) { return step.KeepMode(*this, std::move(mode)); });
}

bool CProjectNode::RecordButtonStyle()
{
    SetModified(true);
    return KeepInStep(true, [this](StateRecorder& step) { return step.KeepButtonStyle(*this); });
}

bool CProjectNode::RecordTextEffect(bool major, std::atomic<ULONG>& mark, const XmlElement& document)
{
    return Record(major, mark, [&](StateRecorder& step) { return step.KeepTextEffect(*this, document); });
}

CProjectNode& CProjectNode::Root()
{
    CProjectNode* root = this;
    while (CProjectNode* parent = root->Parent())
        root = parent;
    return *root;
}

} // namespace kv
