#pragma once
// What a project holds, as tests ask for it.

#include "platform/com/TaskMemory.h"
#include "support/Host.h"

namespace kv::test {

inline ComPtr<IKVTitle> AddTitle(IKVProjectData& project, LONG position = 0)
{
    ComPtr<IKVTitle> title;
    EXPECT_EQ(S_OK, project.AddTitle(position, title.Put()));
    return title;
}

inline ComPtr<IKVDataFile> AddDataFile(IKVProjectData& project, LONG position = 0)
{
    ComPtr<IKVDataFile> file;
    EXPECT_EQ(S_OK, project.AddDataFile(position, file.Put()));
    return file;
}

/// Null where there is none.
inline ComPtr<IKVTitle> TitleAt(IKVProjectData& project, LONG position)
{
    ComPtr<IKVTitle> title;
    project.GetTitle(position, title.Put());
    return title;
}

template <class T>
LONG IdOf(const ComPtr<T>& object)
{
    return ValueOf(*object.Get(), &T::get_ID);
}

/// The IDs of the titles in order.
inline std::vector<LONG> TitleIds(IKVProjectData& project)
{
    std::vector<LONG> ids;
    for (LONG i = 1; const auto title = TitleAt(project, i); ++i)
        ids.push_back(IdOf(title));
    return ids;
}

inline bool IsDirty(IKVProjectData& project)
{
    return ValueOf(project, &IKVProjectData::get_IsDirty) == VARIANT_TRUE;
}

/// "code parameter parameter" of each command, and its XML behind a blank.
inline std::vector<std::u16string> CommandsOf(IUnknown* owner)
{
    LONG count = -1;
    DiscCommandParams* records = nullptr;
    EXPECT_EQ(S_OK, Query<IKVCommandList>(owner)->GetCommandList(&count, &records));
    const UniqueTaskMem<DiscCommandParams> owned(records);
    std::vector<std::u16string> texts;
    for (LONG i = 0; i < count; ++i) {
        const auto xml = ComPtr<IXMLDOMNode>::Attach(records[i].pXMLData);
        const std::string numbers = std::to_string(records[i].cmd) + ' ' + std::to_string(records[i].lParam1) + ' ' +
                                    std::to_string(records[i].lParam2);
        texts.push_back(ToUtf16(numbers) + (xml ? u' ' + XmlOf(*xml) : u""));
    }
    return texts;
}

/// The element of a document of its own.
inline ComPtr<IXMLDOMElement> ParseElement(std::u16string_view xml)
{
    ComPtr<IXMLDOMElement> element;
    EXPECT_EQ(S_OK, ParseXml(xml)->get_documentElement(element.Put()));
    return element;
}

} // namespace kv::test
