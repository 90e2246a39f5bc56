#include "KVProjectData/tree/ElementArchives.h"

#include "KVProjectData/tree/AttributeTexts.h"
#include "KVProjectData/tree/ProjectNode.h"
#include "platform/system/Trace.h"

#include <algorithm>

namespace kv {
namespace {

/// Room for the attributes of most nodes.
constexpr std::size_t kUsualCount = 16;
constexpr std::size_t kUsualText = 256;

/// Most nodes list and most documents hold attributes in the order of their names.
template <class Item>
void SortByName(std::vector<Item>& items)
{
    // Most names differ in their first letter already. None is empty.
    const auto byName = [](const Item& left, const Item& right) {
        const auto a = static_cast<unsigned char>(left.name.front());
        const auto b = static_cast<unsigned char>(right.name.front());
        return a == b ? left.name < right.name : a < b;
    };
    if (!std::is_sorted(items.begin(), items.end(), byName)) std::sort(items.begin(), items.end(), byName);
}

} // namespace

AttributeWriter::AttributeWriter(ULONG flags) : AttributeArchive(Purpose::Write, flags & kSaveNative)
{
    m_items.reserve(kUsualCount);
    m_utf8.reserve(kUsualText);
}

void AttributeWriter::ID(CProjectNode& node)
{
    Number("ID", static_cast<ULONG>(node.ID()));
}

bool AttributeWriter::operator()(std::string_view name, Bstr& field)
{
    const std::size_t begin = m_utf16.size();
    m_utf16 += field.View();
    Add(name, true, begin, m_utf16.size());
    return false;
}

bool AttributeWriter::Named(std::string_view name, ULONG& number, const ValueNames& names)
{
    const std::size_t begin = m_utf8.size();
    names.AppendText(number, m_utf8);
    Add(name, false, begin, m_utf8.size());
    return false;
}

bool AttributeWriter::operator()(std::string_view name, Hex field)
{
    const std::size_t begin = m_utf8.size();
    AppendHex(field.value, field.digits, m_utf8);
    Add(name, false, begin, m_utf8.size());
    return false;
}

template <class T>
bool AttributeWriter::Number(std::string_view name, T value)
{
    const std::size_t begin = m_utf8.size();
    AppendNumber(value, m_utf8);
    Add(name, false, begin, m_utf8.size());
    return false;
}

// The compiler calls these from where it finds out what archive runs a list.
template bool AttributeWriter::Number(std::string_view name, LONG value);
template bool AttributeWriter::Number(std::string_view name, ULONG value);
template bool AttributeWriter::Number(std::string_view name, float value);
template bool AttributeWriter::Number(std::string_view name, double value);

void AttributeWriter::Add(std::string_view name, bool isUtf16, std::size_t begin, std::size_t end)
{
    m_items.push_back({name, isUtf16, begin, end});
}

void AttributeWriter::Sort()
{
    SortByName(m_items);
}

void AttributeWriter::TraceFailure() const
{
    Trace("Failed on attribute: " + std::string(m_items[m_next - 1].name) + '\n');
}

void AttributeWriter::Clear()
{
    m_items.clear();
    m_utf8.clear();
    m_utf16.clear();
    m_next = 0;
}

bool AttributeWriter::Next(XMLAttribute& attribute)
{
    if (m_next == m_items.size()) return false;
    const Item& item = m_items[m_next++];
    attribute.name = item.name;
    if (item.isUtf16) {
        attribute.value = std::u16string_view(m_utf16).substr(item.begin, item.end - item.begin);
    } else {
        attribute.value = std::string_view(m_utf8).substr(item.begin, item.end - item.begin);
    }
    return true;
}

AttributeReader::AttributeReader(const LoadedElement& element) : AttributeArchive(Purpose::Read), m_element(element)
{
    m_items.reserve(kUsualCount);
    element.View().ReadAttributes(*this);
    SortByName(m_items);
}

void AttributeReader::ReportRest() const
{
    if (m_taken == m_items.size()) return;
    const auto declares = [](std::string_view name) { return name == "xmlns" || name.starts_with("xmlns:"); };
    for (const Item& item : m_items) {
        if (!item.taken && !declares(item.name))
            m_element.Report().PassOver(m_element.View(), item.name, "the attribute is not known");
    }
}

const AttributeReader::Item* AttributeReader::Find(std::string_view name)
{
    if (m_next == m_items.size() || m_items[m_next].name != name) {
        const auto found = std::ranges::lower_bound(m_items, name, {}, &Item::name);
        if (found == m_items.end() || found->name != name) return nullptr;
        m_next = static_cast<std::size_t>(found - m_items.begin());
    }
    Item& item = m_items[m_next++];
    if (!std::exchange(item.taken, true)) ++m_taken;
    return &item;
}

template <class Field, class Parse>
bool AttributeReader::Read(std::string_view name, Field& field, Parse&& parse)
{
    const Item* item = Find(name);
    if (!item) return false;
    try {
        field = parse(item->text);
        return true;
    } catch (const Error& error) {
        Refuse(error.Result());
        return false;
    }
}

void AttributeReader::ID(CProjectNode& node)
{
    LONG id = 0;
    if (Read("ID", id, ParseID) && id != 0) node.SetID(id);
}

bool AttributeReader::operator()(std::string_view name, Bstr& field)
{
    return Read(name, field, [](std::string_view text) { return Bstr(ToUtf16(text)); });
}

bool AttributeReader::operator()(std::string_view name, BYTE& field)
{
    return Read(name, field, ParseByte);
}

bool AttributeReader::operator()(std::string_view name, LONG& field)
{
    return Read(name, field, ParseLong);
}

bool AttributeReader::operator()(std::string_view name, ULONG& field)
{
    return Read(name, field, ParseULong);
}

bool AttributeReader::operator()(std::string_view name, float& field)
{
    return Read(name, field, ParseFloat);
}

bool AttributeReader::operator()(std::string_view name, double& field)
{
    return Read(name, field, ParseDouble);
}

bool AttributeReader::operator()(std::string_view name, bool& field)
{
    return Read(name, field, ParseBool);
}

bool AttributeReader::operator()(std::string_view name, Hex field)
{
    return Read(name, field.value, [](std::string_view text) {
        if (text.empty()) throw Error(DISP_E_TYPEMISMATCH);
        return ParseHex(text);
    });
}

bool AttributeReader::Named(std::string_view name, ULONG& number, const ValueNames&)
{
    const Item* item = Find(name);
    if (!item) return false;
    const std::optional<ULONG> leading = ParseLeading(item->text);
    if (!leading) Tell(*item, "is read as 0");
    number = leading.value_or(0);
    return true;
}

void AttributeReader::Refuse(HRESULT result)
{
    if (result == E_OUTOFMEMORY) throw Error(result);
    Tell(m_items[m_next - 1], "cannot be read");
}

void AttributeReader::Tell(const Item& item, std::string_view fault) const
{
    m_element.Report().PassOver(m_element.View(), item.name,
                                "the value " + LoadReport::Quote(item.text) + ' ' + std::string(fault));
}

} // namespace kv
