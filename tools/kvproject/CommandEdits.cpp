#include "CommandEdits.h"

#include "Failure.h"
#include "KVProjectData/KVProjectData.h"
#include "KVProjectData/ResultCodes.h"
#include "Text.h"
#include "platform/com/Activation.h"
#include "platform/com/TaskMemory.h"
#include "platform/system/Case.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <vector>

namespace kvproject {
namespace {

using kv::ComPtr;

struct Record {
    DiscCommand command = PlayTitleFromChapter;
    std::array<LONG, 2> parameters{};
    ComPtr<IXMLDOMNode> xml;
};

/// The commands of an object, to be changed and put back.
class Records {
public:
    explicit Records(IUnknown* owner) : m_list(kv::Query<IKVCommandList>(owner))
    {
        if (!m_list) throw Failure("the object has no commands");
        LONG count = 0;
        DiscCommandParams* array = nullptr;
        Require(m_list->GetCommandList(&count, &array), "cannot read the commands");
        const kv::UniqueTaskMem<DiscCommandParams> owned(array);
        for (LONG i = 0; i < count; ++i) {
            rows.push_back(
                {array[i].cmd, {array[i].lParam1, array[i].lParam2}, ComPtr<IXMLDOMNode>::Attach(array[i].pXMLData)});
        }
    }

    Record& At(LONG position) { return rows[Index(position, rows.size())]; }

    /// Before the one at the position; 0 is behind the last.
    void Insert(LONG position, Record record)
    {
        const std::size_t index = position == 0 ? rows.size() : Index(position, rows.size() + 1);
        rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(index), std::move(record));
    }

    Record Take(LONG position)
    {
        Record record = std::move(At(position));
        rows.erase(rows.begin() + position - 1);
        return record;
    }

    void Write()
    {
        std::vector<DiscCommandParams> array;
        for (const Record& row : rows)
            array.push_back({row.command, row.parameters[0], row.parameters[1], row.xml.Get()});
        Require(m_list->SetCommandList(static_cast<LONG>(array.size()), array.data()), "cannot set the commands");
    }

    std::vector<Record> rows;

private:
    static std::size_t Index(LONG position, std::size_t end)
    {
        if (position < 1 || static_cast<std::size_t>(position) > end) {
            throw Failure("commands[" + std::to_string(position) + "]: " + Describe(KV_E_BAD_POSITION));
        }
        return static_cast<std::size_t>(position) - 1;
    }

    const ComPtr<IKVCommandList> m_list;
};

std::optional<LONG> ParseNumber(std::string_view text)
{
    LONG number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

DiscCommand ParseName(std::string_view text)
{
    std::string names;
    for (const auto& [name, value] : kv::kEnumDescription<DiscCommand>.values) {
        if (kv::SameText(name, text)) return static_cast<DiscCommand>(value);
        names += (names.empty() ? "" : ", ") + std::string(name);
    }
    if (const auto number = ParseNumber(text)) return static_cast<DiscCommand>(*number);
    throw Failure("'" + std::string(text) + "' is no command: there are " + names);
}

/// The ID of what stands at the position that `text` ends with; empty for any other text.
template <class Item>
std::optional<LONG> IdAt(IKVProjectData& project, HRESULT (IKVProjectData::*get)(LONG, Item**), std::string_view list,
                         std::string_view text)
{
    if (!kv::StartsWithText(text, list) || !text.ends_with(']')) return std::nullopt;
    const auto position = ParseNumber(text.substr(list.size(), text.size() - list.size() - 1));
    ComPtr<Item> item;
    LONG id = 0;
    if (!position) return std::nullopt;
    Require((project.*get)(*position, item.Put()), text);
    Require(item->get_ID(&id), text);
    return id;
}

LONG ParseParameter(IKVProjectData& project, std::string_view text)
{
    if (const auto number = ParseNumber(text)) return *number;
    if (const auto id = IdAt(project, &IKVProjectData::GetTitle, "titles[", text)) return *id;
    if (const auto id = IdAt(project, &IKVProjectData::GetMenu, "menus[", text)) return *id;
    throw Failure("'" + std::string(text) + "' is no parameter: it is to be a number, titles[N] or menus[N]");
}

Record ParseCommand(IKVProjectData& project, std::string_view text)
{
    std::vector<std::string_view> words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end > 0) words.push_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    Record record;
    if (words.empty()) throw Failure("which command?");
    record.command = ParseName(words.front());
    if (words.size() > record.parameters.size() + 1) throw Failure("a command has two parameters");
    for (std::size_t i = 1; i < words.size(); ++i)
        record.parameters[i - 1] = ParseParameter(project, words[i]);
    return record;
}

/// Null for no text.
ComPtr<IXMLDOMNode> ParseXml(std::string_view text)
{
    if (text.empty()) return nullptr;
    ComPtr<IXMLDOMDocument> document;
    ComPtr<IXMLDOMElement> root;
    VARIANT_BOOL parsed = VARIANT_FALSE;
    Require(kv::CreateInstance(CLSID_DOMDocument, document), "cannot create a document");
    document->loadXML(kv::Bstr(kv::ToUtf16(text)).Get(), &parsed);
    if (!parsed || FAILED(document->get_documentElement(root.Put()))) throw Failure("the value is no XML element");
    return root;
}

} // namespace

void SetCommand(IKVProjectData& project, IUnknown* owner, LONG position, std::string_view text)
{
    Records commands(owner);
    Record record = ParseCommand(project, text);
    if (position == static_cast<LONG>(commands.rows.size()) + 1) {
        commands.Insert(0, std::move(record));
    } else {
        commands.At(position) = std::move(record);
    }
    commands.Write();
}

void SetCommandMember(IKVProjectData& project, IUnknown* owner, LONG position, std::string_view member,
                      std::string_view value)
{
    Records commands(owner);
    Record& record = commands.At(position);
    if (kv::SameText(member, "Command")) {
        record.command = ParseName(value);
    } else if (kv::SameText(member, "Param1")) {
        record.parameters[0] = ParseParameter(project, value);
    } else if (kv::SameText(member, "Param2")) {
        record.parameters[1] = ParseParameter(project, value);
    } else if (kv::SameText(member, "XML")) {
        record.xml = ParseXml(value);
    } else {
        throw Failure("'" + std::string(member) + "': " + Describe(DISP_E_UNKNOWNNAME));
    }
    commands.Write();
}

void InsertCommand(IKVProjectData& project, IUnknown* owner, LONG position, std::string_view text)
{
    Records commands(owner);
    commands.Insert(position, ParseCommand(project, text));
    commands.Write();
}

void RemoveCommand(IUnknown* owner, LONG position)
{
    Records commands(owner);
    commands.Take(position);
    commands.Write();
}

void MoveCommand(IUnknown* owner, LONG position, LONG to)
{
    Records commands(owner);
    commands.At(to);
    commands.Insert(to, commands.Take(position));
    commands.Write();
}

void CopyCommand(IUnknown* owner, LONG position, IUnknown* target, LONG to)
{
    Record record = Records(owner).At(position);
    Records commands(target);
    commands.Insert(to, std::move(record));
    commands.Write();
}

} // namespace kvproject
